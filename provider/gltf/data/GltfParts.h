// The two parts of a glTF file.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

// A file that isn't binary is Json as a whole.
struct GltfParts {
    std::string_view Json;
    std::span<const uint8_t> Binary;
};

// Splits a binary file. Returns false, with the reason in error, if the file is truncated or malformed.
bool SplitGlb(std::span<const uint8_t> bytes, GltfParts& parts, std::string& error);
