// Writes PNG files, and checks whether a PNG file can be copied unchanged.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

// Encodes pixels of 1 to 4 channels, laid out as in DecodedPicture, as a PNG file. Expects sides above 0
// and width * height * channels bytes. Returns an empty vector if memory runs out.
std::vector<uint8_t> EncodePng(std::span<const uint8_t> pixels, uint32_t width, uint32_t height,
                               uint32_t channels);

// Whether a PNG file has chunks with correct checksums, the last of them IEND. The decoder accepts more,
// but a file that is copied unchanged must suit stricter readers.
bool IsSoundPng(std::span<const uint8_t> bytes);
