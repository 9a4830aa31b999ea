// Decodes picture files: PNG, JPEG, BMP and TGA. Callers that accept fewer formats check first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>

// The largest file, in bytes.
constexpr size_t LargestPictureFile = INT32_MAX;

// The most pixels per side and in total, so that a small file can't request gigabytes.
#ifdef FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION
constexpr uint32_t LargestPictureSide = 512;
#else
constexpr uint32_t LargestPictureSide = 32768;
#endif
constexpr uint64_t LargestPicturePixels = uint64_t{1} << 27;

bool HasAllowedSize(uint64_t width, uint64_t height);

struct DecodedPicture {
    uint32_t Width = 0; // pixels, above 0
    uint32_t Height = 0;
    uint32_t Channels = 0; // 1 gray; 2 gray, alpha; 3 red, green, blue; 4 red, green, blue, alpha
    // One byte per channel, rows from the top, without gaps.
    std::unique_ptr<uint8_t, void (*)(void*)> Pixels = {nullptr, std::free};
};

enum class PictureFault {
    UnknownFile,   // not a file of these formats, or its headers are invalid
    TooManyPixels, // see HasAllowedSize
    Undecodable,   // the data after the headers is broken or incomplete
};

// Decodes at most LargestPictureFile bytes to the given number of channels, 0 for that of the file.
// Fills picture and returns nothing, or returns the fault.
std::optional<PictureFault> DecodePicture(std::span<const uint8_t> bytes, uint32_t channels,
                                          DecodedPicture& picture);
