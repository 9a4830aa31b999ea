// Writes PNG files.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

// Encodes pixels of 1 to 4 channels, laid out as in DecodedPicture, as a PNG file. Expects sides above 0
// and width * height * channels bytes. Returns an empty vector if that fails, and
// the reason, which completes the sentence "the picture ...".
std::vector<uint8_t> EncodePng(std::span<const uint8_t> pixels, uint32_t width, uint32_t height,
                               uint32_t channels, std::string& reason);
