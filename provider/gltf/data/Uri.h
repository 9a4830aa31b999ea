// The two forms of URI that models use: a percent-encoded file name, and embedded data.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Replaces %XX by its byte; everything else is unchanged.
std::string DecodePercent(std::string_view text);

bool IsDataUri(std::string_view uri);

// The bytes of a data URI in Base64. Returns false if the text isn't one or is broken.
bool DecodeDataUri(std::string_view uri, std::vector<uint8_t>& bytes);
