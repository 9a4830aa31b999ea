// Decodes pictures with stb_image, which is compiled only here.
#include "picture/PictureReader.h"

#include "picture/JpegCheck.h"

#include <algorithm>
#include <cassert>

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
#define STBI_ONLY_PNG
#define STBI_ONLY_JPEG
#define STBI_ONLY_BMP
#define STBI_ONLY_TGA
#define STBI_NO_STDIO
#define STBI_MAX_DIMENSIONS static_cast<int>(LargestPictureSide)
// A JPEG can use tables that it doesn't define. The decoder then reads uninitialised memory, at worst
// past its end. Zeros are harmless there, and yield the same picture each time.
#define STBI_MALLOC(size) std::calloc(1, size)
#define STBI_REALLOC(block, size) std::realloc(block, size)
#define STBI_FREE(block) std::free(block)
#define STBI_MISSING_BITS(context) (static_cast<PictureSource*>((context)->io_user_data)->RanOut = true)
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

using Pixels = decltype(DecodedPicture::Pixels);

// Returns null if the bytes can't be decoded or end too early.
Pixels Decode(std::span<const uint8_t> bytes, int& width, int& height, int& fileChannels, int channels) {
    PictureSource source = {bytes, 0, false};
    Pixels pixels(
        stbi_load_from_callbacks(&SourceCallbacks, &source, &width, &height, &fileChannels, channels),
        std::free);
    if (source.RanOut) {
        pixels.reset();
    }
    return pixels;
}

} // namespace

bool HasAllowedSize(uint64_t width, uint64_t height) {
    return width <= LargestPictureSide && height <= LargestPictureSide &&
           width * height <= LargestPicturePixels;
}

std::optional<PictureFault> DecodePicture(std::span<const uint8_t> bytes, uint32_t channels,
                                          DecodedPicture& picture) {
    assert(bytes.size() <= LargestPictureFile && channels <= 4);
    int width = 0;
    int height = 0;
    int fileChannels = 0;
    if (!HasSoundHuffmanTables(bytes) ||
        stbi_info_from_memory(bytes.data(), static_cast<int>(bytes.size()), &width, &height,
                              &fileChannels) == 0 ||
        width <= 0 || height <= 0) {
        return PictureFault::UnknownFile;
    }
    if (!HasAllowedSize(static_cast<uint64_t>(width), static_cast<uint64_t>(height))) {
        return PictureFault::TooManyPixels;
    }
    picture.Pixels = Decode(bytes, width, height, fileChannels, static_cast<int>(channels));
    if (picture.Pixels == nullptr) {
        return PictureFault::Undecodable;
    }
    picture.Width = static_cast<uint32_t>(width);
    picture.Height = static_cast<uint32_t>(height);
    picture.Channels = channels != 0 ? channels : static_cast<uint32_t>(fileChannels);
    return std::nullopt;
}
