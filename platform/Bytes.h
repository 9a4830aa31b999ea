// Bytes of files as numbers and as text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

// Returns the little-endian number in the four bytes from index at on, which must exist.
constexpr uint32_t LittleEndian(std::span<const uint8_t> bytes, size_t at) {
    return uint32_t{bytes[at]} | uint32_t{bytes[at + 1]} << 8 | uint32_t{bytes[at + 2]} << 16 |
           uint32_t{bytes[at + 3]} << 24;
}

// Both return a view, valid as long as the given bytes.
inline std::string_view TextOfBytes(std::span<const uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

inline std::span<const uint8_t> BytesOfText(std::string_view text) {
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}
