// Reads picture files: PNG, JPEG, BMP and TGA. Which of them it takes is up to the caller.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>

// Bytes of the largest file that can be read.
constexpr size_t LargestPictureFile = INT32_MAX;

// Pixels per side, and in all, of the largest picture: keeps a small file from asking for gigabytes.
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
    UnknownFile,   // No file of these kinds, or one whose headers aren't sound.
    TooManyPixels, // See HasAllowedSize.
    Undecodable,   // What follows the headers is broken or incomplete.
};

// Decodes up to LargestPictureFile bytes into the given number of channels, 0 for those of the file.
// Gives nothing and fills picture, or the fault.
std::optional<PictureFault> DecodePicture(std::span<const uint8_t> bytes, uint32_t channels,
                                          DecodedPicture& picture);
