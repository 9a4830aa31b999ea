// A decoded picture, what can be wrong with a picture file, and the limits on sizes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

// The most pixels per side and in total, so that a small file can't request gigabytes.
#ifdef FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION
constexpr uint32_t LargestPictureSide = 512;
#else
constexpr uint32_t LargestPictureSide = 32768;
#endif
constexpr uint64_t LargestPicturePixels = uint64_t{1} << 27;

bool HasAllowedSize(uint64_t width, uint64_t height);

// The channels of pictures with colours and alpha.
constexpr uint32_t RgbaChannels = 4;

struct DecodedPicture {
    uint32_t Width = 0; // pixels, above 0
    uint32_t Height = 0;
    uint32_t Channels = 0; // 1 gray; 2 gray, alpha; 3 red, green, blue; 4 red, green, blue, alpha
    // One byte per channel, rows from the top, without gaps.
    std::unique_ptr<uint8_t, void (*)(void*)> Pixels = {nullptr, std::free};
};

enum class PictureFaultKind {
    UnknownFile,   // not a file of these formats, or its headers are invalid
    TooManyPixels, // see HasAllowedSize
    Undecodable,   // the data after the headers is broken or incomplete
};

struct PictureFault {
    PictureFaultKind Kind = PictureFaultKind::UnknownFile;
    std::string Reason; // in the words of the decoding library; may be empty
};

// Sets the size and allocates the pixels, uninitialised. Expects sides above 0. Returns nothing, or the
// fault: the size isn't allowed, or memory ran out.
std::optional<PictureFault> StartPicture(uint32_t width, uint32_t height, uint32_t channels,
                                         DecodedPicture& picture);

// Drops channels of a picture with four: 3 keeps red, green and blue; 2 keeps red, as gray, and alpha;
// 1 keeps red as gray.
void ReduceChannels(uint32_t channels, DecodedPicture& picture);
