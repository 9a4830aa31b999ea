// Reads and writes whole files, and splits the paths of files to read.
//
// Slash and backslash separate. A colon separates only after a drive: one letter, A to Z in either case,
// at the start of a path. The operations that open files use the same rule. Any other colon belongs to a
// name: POSIX allows "12:30.json", and on Windows it marks a stream of the file before it, in the same
// directory. The paths of output files have rules of their own in src/run/Paths.h.
#pragma once

#include "platform/LargeArray.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Replaces bytes with the contents of a file. Returns false if the file can't be opened or read to its
// end, is a directory, a pipe or a device, which may never end, or has more than the most bytes; bytes
// are then unusable. Reads at most one mebibyte more. A file that can be large is read into a
// LargeArray.
bool ReadWholeFile(const std::u16string& path, std::vector<uint8_t>& bytes, size_t mostBytes = SIZE_MAX);
bool ReadWholeFile(const std::u16string& path, LargeArray<uint8_t>& bytes, size_t mostBytes = SIZE_MAX);

// Creates or replaces a file. Returns 0, or the error number (errno) if the file can't be opened or not
// all bytes are written: EIO if the system sets none.
int WriteWholeFile(const std::u16string& path, std::span<const uint8_t> bytes);

// Whether a path begins with a drive.
bool HasDrive(std::u16string_view path);

// LastComponent returns the part after the last separator, DirectoryPart the rest, including the
// separator. Either may be empty. The second and then the first, joined, are the path.
std::u16string LastComponent(std::u16string_view path);
std::u16string DirectoryPart(std::u16string_view path);

// Whether a name leads to a server or a device on Windows: it begins with two separators, or with one
// and a question mark.
bool NamesServerOrDevice(std::u16string_view name);

// Returns the path of a file that another file names: the name itself if it begins with a separator or a
// drive, else the name in the directory, which is empty or ends with a separator. Returns an empty path,
// which no file has, for the name of a server or a device: opening it would tell a stranger's server who
// the user is.
std::u16string PathIn(std::u16string_view directory, std::u16string_view name);
