// PNG files: writes them, and checks whether one can be passed on as it is.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

// Pixels of 1 to 4 channels, as in DecodedPicture, as a PNG file; both sides are above 0, and
// width * height * channels bytes are given. Empty if memory runs out.
std::vector<uint8_t> EncodePng(std::span<const uint8_t> pixels, uint32_t width, uint32_t height,
                               uint32_t channels);

// Chunks with correct checksums up to an IEND that ends the file. The decoder is more forgiving, but
// what is passed on as it stands has to suit stricter readers.
bool IsSoundPng(std::span<const uint8_t> bytes);
