// Decodes BMP and TGA files with stb_image, which is compiled only here.
#include "picture/Decoders.h"

#include <algorithm>

namespace {

// The bytes of a file as a stream for the decoder. The decoder reads missing bytes as zeros, so the end
// is detected here.
struct PictureSource {
    std::span<const uint8_t> Bytes;
    size_t At = 0;
    bool RanOut = false;
};

} // namespace

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_BMP
#define STBI_ONLY_TGA
#define STBI_NO_STDIO
#define STBI_MAX_DIMENSIONS static_cast<int>(LargestPictureSide)
#include <stb_image.h>

namespace {

// The bytes that the decoder requests to fill its own buffer; only then it may get fewer.
constexpr int DecoderBufferSize = sizeof(stbi__context::buffer_start);

int ReadSource(void* user, char* data, int size) {
    PictureSource& source = *static_cast<PictureSource*>(user);
    const size_t count = std::min(static_cast<size_t>(size), source.Bytes.size() - source.At);
    std::copy_n(source.Bytes.begin() + static_cast<ptrdiff_t>(source.At), count, data);
    source.At += count;
    source.RanOut |= count == 0 || (static_cast<int>(count) < size && size != DecoderBufferSize);
    return static_cast<int>(count);
}

// A negative count moves back.
void SkipSource(void* user, int count) {
    PictureSource& source = *static_cast<PictureSource*>(user);
    const auto end = static_cast<int64_t>(source.Bytes.size());
    source.At =
        static_cast<size_t>(std::clamp(static_cast<int64_t>(source.At) + count, int64_t{0}, end));
}

int IsSourceAtEnd(void* user) {
    const PictureSource& source = *static_cast<const PictureSource*>(user);
    return source.At == source.Bytes.size() ? 1 : 0;
}

constexpr stbi_io_callbacks SourceCallbacks = {ReadSource, SkipSource, IsSourceAtEnd};

} // namespace

std::optional<PictureFault> DecodeBmpOrTga(std::span<const uint8_t> bytes, uint32_t channels,
                                           DecodedPicture& picture) {
    int width = 0;
    int height = 0;
    int fileChannels = 0;
    if (stbi_info_from_memory(bytes.data(), static_cast<int>(bytes.size()), &width, &height,
                              &fileChannels) == 0 ||
        width <= 0 || height <= 0) {
        return PictureFault{PictureFaultKind::UnknownFile, {}};
    }
    if (!HasAllowedSize(static_cast<uint64_t>(width), static_cast<uint64_t>(height))) {
        return PictureFault{PictureFaultKind::TooManyPixels, {}};
    }
    PictureSource source = {bytes, 0, false};
    picture.Pixels.reset(stbi_load_from_callbacks(&SourceCallbacks, &source, &width, &height,
                                                  &fileChannels, static_cast<int>(channels)));
    if (source.RanOut || picture.Pixels == nullptr) {
        return PictureFault{PictureFaultKind::Undecodable,
                            source.RanOut ? PrematureEnd : stbi_failure_reason()};
    }
    picture.Width = static_cast<uint32_t>(width);
    picture.Height = static_cast<uint32_t>(height);
    picture.Channels = channels != 0 ? channels : static_cast<uint32_t>(fileChannels);
    return std::nullopt;
}
