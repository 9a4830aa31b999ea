// Decodes JPEG files with libjpeg-turbo, by its exact integer transform: every system gives the same
// pixels.
//
// The library reports an error by a call that must not return, so that call jumps back to the operation
// that called the library. Those operations hold nothing that needs a destructor.
#include "picture/Decoders.h"

#include <csetjmp>
#include <cstdio>

#include <jerror.h>
#include <jpeglib.h>

// The most scans of a file. Each can cost a pass over the whole picture, however few bytes it has. A
// progressive file usually has ten; one scan per coefficient of a colour are 64.
constexpr int MostScans = 100;

namespace {

struct JpegDecoding {
    jpeg_decompress_struct Library = {};
    jpeg_error_mgr Errors = {};
    jpeg_progress_mgr Progress = {};
    std::jmp_buf Failed = {};
    char Reason[JMSG_LENGTH_MAX] = {};
};

[[noreturn]] void Fail(j_common_ptr library) {
    auto& decoding = *static_cast<JpegDecoding*>(library->client_data);
    library->err->format_message(library, decoding.Reason);
    std::longjmp(decoding.Failed, 1);
}

void IgnoreWarning(j_common_ptr /*library*/, int /*level*/) {
}

// The library would add an end of the picture and only warn.
boolean FailAtEnd(j_decompress_ptr library) {
    library->err->msg_code = JERR_INPUT_EOF;
    Fail(reinterpret_cast<j_common_ptr>(library));
}

void LimitScans(j_common_ptr library) {
    if (reinterpret_cast<j_decompress_ptr>(library)->input_scan_number > MostScans) {
        auto& decoding = *static_cast<JpegDecoding*>(library->client_data);
        std::snprintf(decoding.Reason, sizeof decoding.Reason, "more than %d scans", MostScans);
        std::longjmp(decoding.Failed, 1);
    }
}

// False, with a reason, if the library reports an error; the same for ReadRows.
bool ReadHeader(std::span<const uint8_t> bytes, JpegDecoding& decoding) {
    if (setjmp(decoding.Failed) != 0) {
        return false;
    }
    jpeg_decompress_struct& library = decoding.Library;
    library.client_data = &decoding;
    library.err = jpeg_std_error(&decoding.Errors);
    decoding.Errors.error_exit = Fail;
    decoding.Errors.emit_message = IgnoreWarning;
    decoding.Progress.progress_monitor = LimitScans;
    jpeg_create_decompress(&library);
    library.progress = &decoding.Progress;
    jpeg_mem_src(&library, bytes.data(), static_cast<unsigned long>(bytes.size()));
    library.src->fill_input_buffer = FailAtEnd;
    jpeg_read_header(&library, TRUE);
    return true;
}

// The rows fill pixels without gaps. Reads the file to its end.
bool ReadRows(J_COLOR_SPACE colors, uint8_t* pixels, JpegDecoding& decoding) {
    if (setjmp(decoding.Failed) != 0) {
        return false;
    }
    jpeg_decompress_struct& library = decoding.Library;
    library.out_color_space = colors;
    library.dct_method = JDCT_ISLOW;
    // Invents detail for progressive files that leave some out.
    library.do_block_smoothing = FALSE;
    jpeg_start_decompress(&library);
    const size_t stride = size_t{library.output_width} * static_cast<size_t>(library.output_components);
    while (library.output_scanline < library.output_height) {
        JSAMPROW row = pixels + library.output_scanline * stride;
        jpeg_read_scanlines(&library, &row, 1);
    }
    jpeg_finish_decompress(&library);
    return true;
}

// Turns inks into light. Files with Adobe's marker store light already: 255 is no ink.
void RgbaFromCmyk(bool storesLight, DecodedPicture& picture) {
    constexpr uint32_t most = 255;
    uint8_t* pixel = picture.Pixels.get();
    const uint8_t* const end = pixel + size_t{picture.Width} * picture.Height * RgbaChannels;
    for (; pixel < end; pixel += RgbaChannels) {
        const uint32_t black = storesLight ? pixel[3] : most - pixel[3];
        for (size_t i = 0; i < 3; ++i) {
            const uint32_t color = storesLight ? pixel[i] : most - pixel[i];
            pixel[i] = static_cast<uint8_t>((color * black + most / 2) / most);
        }
        pixel[3] = most;
    }
}

std::optional<PictureFault> DecodeAfterHeader(uint32_t channels, JpegDecoding& decoding,
                                              DecodedPicture& picture) {
    const jpeg_decompress_struct& library = decoding.Library;
    const bool isCmyk = library.num_components == RgbaChannels;
    const uint32_t ownChannels = library.num_components == 1 ? 1 : 3;
    const uint32_t wanted = channels != 0 ? channels : ownChannels;
    const uint32_t decoded = isCmyk ? RgbaChannels : wanted;
    if (auto fault = StartPicture(library.image_width, library.image_height, decoded, picture)) {
        return fault;
    }
    const J_COLOR_SPACE colors = isCmyk                   ? JCS_CMYK
                                 : wanted == 1            ? JCS_GRAYSCALE
                                 : wanted == RgbaChannels ? JCS_EXT_RGBA
                                                          : JCS_RGB;
    if (!ReadRows(colors, picture.Pixels.get(), decoding)) {
        return PictureFault{PictureFaultKind::Undecodable, decoding.Reason};
    }
    if (isCmyk) {
        RgbaFromCmyk(library.saw_Adobe_marker != FALSE, picture);
        if (wanted != RgbaChannels) {
            ReduceChannels(wanted, picture);
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<PictureFault> DecodeJpeg(std::span<const uint8_t> bytes, uint32_t channels,
                                       DecodedPicture& picture) {
    JpegDecoding decoding;
    std::optional<PictureFault> fault;
    const bool hasHeader = ReadHeader(bytes, decoding);
    const uint32_t width = decoding.Library.image_width;
    const uint32_t height = decoding.Library.image_height;
    const bool hasSize = width > 0 && height > 0;
    if (hasSize && !HasAllowedSize(width, height)) {
        // The library has a limit of its own, so its header may have failed.
        fault = PictureFault{PictureFaultKind::TooManyPixels, {}};
    } else if (!hasHeader) {
        fault = PictureFault{hasSize ? PictureFaultKind::Undecodable : PictureFaultKind::UnknownFile,
                             decoding.Reason};
    } else {
        fault = DecodeAfterHeader(channels, decoding, picture);
    }
    jpeg_destroy_decompress(&decoding.Library);
    return fault;
}
