// Whole files in and out, and the parts of the paths of files that are read.
//
// Slash and backslash separate. A colon separates only behind a drive, which is one letter, A to Z in
// either case, at the start of a path: the operations that open files take a drive by the same rule. Any
// other colon belongs to a name: POSIX allows "12:30.json", and Windows reads it as a stream of the file
// before it, in the same directory. The names of the files that a conversion writes have rules of their
// own in tool/Paths.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// What ReadWholeFile accepts.
struct ReadLimits {
    size_t LargestSize = SIZE_MAX; // bytes
    bool AllowDevices = false;     // pipes and devices too, which may never end
};

// Replaces bytes by what a file holds. Gives false when the file can't be opened or read to its end, is
// a directory, or lies outside of the limits; bytes are then of no use. At most LargestSize and a
// mebibyte are read.
bool ReadWholeFile(const std::u16string& path, std::vector<uint8_t>& bytes, ReadLimits limits = {});

// Creates or replaces a file. Gives 0, or, when it can't be opened or not all bytes have gone out, the
// error number (errno): EIO where the system states none.
int WriteWholeFile(const std::u16string& path, std::span<const uint8_t> bytes);

// Whether a path begins with a drive.
bool HasDrive(std::u16string_view path);

// What stands behind the last separator, and what stands before it, that included. Either may be empty;
// the second and then the first give the path again.
std::u16string LastComponent(std::u16string_view path);
std::u16string DirectoryPart(std::u16string_view path);

// The path of a file that is named in another one: the name itself if it begins with a separator or a
// drive, else in a directory, which is empty or ends in its separator.
std::u16string PathIn(std::u16string_view directory, std::u16string_view name);
