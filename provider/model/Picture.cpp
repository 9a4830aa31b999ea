// Pictures of textures and images, through stb_image and stb_image_write, which are compiled here and
// nowhere else.
#include "provider/model/Picture.h"

#include "picture/JpegCheck.h"

#include <algorithm>
#include <cassert>
#include <climits>
#include <cstdlib>
#include <memory>
#include <span>
#include <string_view>

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG
#define STBI_ONLY_JPEG
#define STBI_ONLY_BMP
#define STBI_ONLY_TGA
#define STBI_NO_STDIO
#define STBI_MAX_DIMENSIONS static_cast<int>(LargestPictureSide)
// A JPEG can use tables that it doesn't define, and the decoder then reads what memory happens to hold,
// past its end at the worst. Zeros do no harm there, and give the same picture each time.
#define STBI_MALLOC(size) std::calloc(1, size)
#define STBI_REALLOC(block, size) std::realloc(block, size)
#define STBI_FREE(block) std::free(block)
#include <stb_image.h>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#include <stb_image_write.h>

namespace {

constexpr std::string_view PngMagic = "\x89PNG\r\n\x1A\n";
// Length, type and checksum of a PNG chunk, 4 bytes each.
constexpr size_t ChunkOverhead = 12;

// Bytes of a file on their way into the decoder, which takes zeros for what is missing: that it ran out
// has to be seen here.
struct PictureSource {
    std::span<const uint8_t> Bytes;
    size_t At = 0;
    bool RanOut = false;
};

// How much the decoder asks for when it fills its own buffer; only then may it get less.
constexpr int DecoderBufferSize = sizeof(stbi__context::buffer_start);

int ReadSource(void* user, char* data, int size) {
    PictureSource& source = *static_cast<PictureSource*>(user);
    const size_t count = std::min(static_cast<size_t>(size), source.Bytes.size() - source.At);
    std::copy_n(source.Bytes.begin() + static_cast<ptrdiff_t>(source.At), count, data);
    source.At += count;
    source.RanOut |= count == 0 || (static_cast<int>(count) < size && size != DecoderBufferSize);
    return static_cast<int>(count);
}

// A negative count goes back.
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

using Pixels = std::unique_ptr<stbi_uc, void (*)(void*)>;

// Null when the bytes can't be decoded or end too early.
Pixels Decode(std::span<const uint8_t> bytes, int& width, int& height, int& channels) {
    PictureSource source = {bytes, 0, false};
    Pixels pixels(stbi_load_from_callbacks(&SourceCallbacks, &source, &width, &height, &channels, 0),
                  stbi_image_free);
    if (source.RanOut) {
        pixels.reset();
    }
    return pixels;
}

uint32_t BigEndian(std::span<const uint8_t> bytes) {
    return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

// Chunks with correct checksums up to an IEND that ends the file. The decoder is more forgiving, but
// what is passed on as it stands has to suit stricter readers.
bool IsSoundPng(std::vector<uint8_t>& bytes) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (!text.starts_with(PngMagic)) {
        return false;
    }
    size_t at = PngMagic.size();
    while (bytes.size() - at >= ChunkOverhead) {
        const uint32_t length = BigEndian(std::span(bytes).subspan(at, 4));
        if (length > bytes.size() - at - ChunkOverhead) {
            return false;
        }
        const uint32_t checksum = BigEndian(std::span(bytes).subspan(at + 8 + length, 4));
        if (stbiw__crc32(bytes.data() + at + 4, static_cast<int>(length + 4)) != checksum) {
            return false;
        }
        const bool isEnd = text.substr(at + 4, 4) == "IEND";
        at += ChunkOverhead + length;
        if (isEnd) {
            return at == bytes.size();
        }
    }
    return false;
}

bool HasAllowedSize(uint64_t width, uint64_t height) {
    return width <= LargestPictureSide && height <= LargestPictureSide &&
           width * height <= LargestPicturePixels;
}

bool WritePng(const stbi_uc* pixels, int width, int height, int channels, std::vector<uint8_t>& png) {
    const int stride = width * channels;
    assert(stride > 0);
    int size = 0;
    const std::unique_ptr<uint8_t, void (*)(void*)> encoded(
        stbi_write_png_to_mem(pixels, stride, width, height, channels, &size), std::free);
    if (encoded == nullptr) {
        return false;
    }
    png.assign(encoded.get(), encoded.get() + size);
    return true;
}

} // namespace

const char* LoadPicture(std::vector<uint8_t> bytes, ModelPicture& picture) {
    int width = 0;
    int height = 0;
    int channels = 0;
    if (bytes.size() > INT_MAX) {
        return "is too large";
    }
    if (!HasSoundHuffmanTables(bytes) ||
        stbi_info_from_memory(bytes.data(), static_cast<int>(bytes.size()), &width, &height,
                              &channels) == 0 ||
        width <= 0 || height <= 0) {
        return "is not a PNG, JPEG, BMP or TGA file that can be decoded";
    }
    if (!HasAllowedSize(static_cast<uint64_t>(width), static_cast<uint64_t>(height))) {
        return "has too many pixels";
    }
    if (Decode(bytes, width, height, channels) == nullptr) {
        return "can't be decoded";
    }
    picture.SoundPng = IsSoundPng(bytes);
    picture.Bytes = std::move(bytes);
    picture.Width = static_cast<uint32_t>(width);
    picture.Height = static_cast<uint32_t>(height);
    return nullptr;
}

bool EncodePng(const ModelPicture& picture, std::vector<uint8_t>& png) {
    if (picture.SoundPng) {
        png = picture.Bytes;
        return true;
    }
    int width = 0;
    int height = 0;
    int channels = 0;
    const Pixels pixels = Decode(picture.Bytes, width, height, channels);
    return pixels != nullptr && WritePng(pixels.get(), width, height, channels, png);
}

bool MakePicture(uint32_t width, uint32_t height, std::span<const uint8_t> texels,
                 ModelPicture& picture) {
    constexpr int channels = 4;
    if (width == 0 || height == 0 || !HasAllowedSize(width, height) ||
        texels.size() != size_t{width} * height * channels) {
        return false;
    }
    picture.Width = width;
    picture.Height = height;
    picture.SoundPng = true;
    return WritePng(texels.data(), static_cast<int>(width), static_cast<int>(height), channels,
                    picture.Bytes);
}
