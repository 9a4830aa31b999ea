// Whole files, read and written at once.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

// Gives false when the file can't be opened or read to its end, or isn't an ordinary one.
bool ReadWholeFile(const std::u16string& path, std::vector<uint8_t>& bytes);

// Creates or replaces the file. Gives false when it can't be opened or not all bytes went out.
bool WriteWholeFile(const std::u16string& path, std::span<const uint8_t> bytes);

bool IsAbsolutePath(const std::u16string& path);

// The directory of a path with its closing separator; empty for a bare name.
std::u16string DirectoryOfPath(const std::u16string& path);
