// The two forms of URI that models use: a file name with percent signs, and data within the text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Replaces %XX by the byte that it stands for; anything else stays.
std::string DecodePercent(std::string_view text);

bool IsDataUri(std::string_view uri);

// The bytes of a data URI in Base64. Gives false when the text is none or is broken.
bool DecodeDataUri(std::string_view uri, std::vector<uint8_t>& bytes);
