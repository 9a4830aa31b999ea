// Whole files in and out.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Nothing if the file can't be read or has more bytes than the limit.
std::optional<std::vector<uint8_t>> ReadWholeFile(const std::u16string& path, size_t limit);

// Replaces the file; gives 0, or the error number if not all bytes have gone out.
int WriteWholeFile(const std::u16string& path, std::string_view bytes);

// What stands behind the last separator, and what stands before it, that included. Slash, backslash and
// the colon behind a drive's letter at the beginning separate.
std::u16string LastComponent(const std::u16string& path);
std::u16string DirectoryPart(const std::u16string& path);
