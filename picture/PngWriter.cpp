// Writes PNG files with stb_image_write, which is compiled only here.
#include "picture/PngWriter.h"

#include <cassert>
#include <cstdlib>
#include <memory>
#include <string_view>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#include <stb_image_write.h>

namespace {

constexpr std::string_view PngMagic = "\x89PNG\r\n\x1A\n";
// Length, type and checksum of a PNG chunk, 4 bytes each.
constexpr size_t ChunkOverhead = 12;

uint32_t BigEndian(std::span<const uint8_t> bytes) {
    return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

uint32_t Checksum(std::span<const uint8_t> bytes) {
    // The library only reads, although its parameter isn't const.
    return stbiw__crc32(const_cast<uint8_t*>(bytes.data()), static_cast<int>(bytes.size()));
}

} // namespace

std::vector<uint8_t> EncodePng(std::span<const uint8_t> pixels, uint32_t width, uint32_t height,
                               uint32_t channels) {
    assert(width > 0 && height > 0 && channels > 0 && channels <= 4);
    assert(pixels.size() == size_t{width} * height * channels);
    int size = 0;
    const std::unique_ptr<uint8_t, void (*)(void*)> png(
        stbi_write_png_to_mem(pixels.data(), static_cast<int>(width * channels), static_cast<int>(width),
                              static_cast<int>(height), static_cast<int>(channels), &size),
        std::free);
    return png != nullptr ? std::vector<uint8_t>(png.get(), png.get() + size) : std::vector<uint8_t>();
}

bool IsSoundPng(std::span<const uint8_t> bytes) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (!text.starts_with(PngMagic)) {
        return false;
    }
    size_t at = PngMagic.size();
    while (bytes.size() - at >= ChunkOverhead) {
        const uint32_t length = BigEndian(bytes.subspan(at, 4));
        if (length > bytes.size() - at - ChunkOverhead) {
            return false;
        }
        const auto typeAndData = bytes.subspan(at + 4, size_t{length} + 4);
        if (Checksum(typeAndData) != BigEndian(bytes.subspan(at + 8 + length, 4))) {
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
