// What a model file is, told by its first bytes.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

// The file name ending, with its dot, of the format that the content shows; empty if it shows none of
// those that can be told apart for sure. glTF and model documents are not among them.
std::string_view EndingOfContent(std::span<const uint8_t> bytes);
