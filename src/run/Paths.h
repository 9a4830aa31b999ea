// Path operations on UTF-16 text, and the directories above the files of a run.
//
// The backslash is the separator of the program; a forward slash separates too but doesn't close a
// directory. Nothing here cuts a path: one beyond the limit is left out by the call that would use it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// The most UTF-16 units, or UTF-8 bytes where a path goes to the library, that a path may have, closing
// NUL included: the system's own limit.
constexpr size_t PathLimit = 260;

// A path taken apart; joined in this order the parts give the path again.
struct PathParts {
    std::u16string_view Drive;     // the first two units if the second is a colon
    std::u16string_view Directory; // up to and including the last separator of either kind
    std::u16string_view BaseName;  // the last component without its extension
    std::u16string_view Extension; // from the last dot of the last component, dot included
};

// The parts are views into the given text.
PathParts SplitPath(std::u16string_view path);

// Base name and extension of a path: its last component.
std::u16string FileNameOf(std::u16string_view path);

// The path without one leading ".\"; empty for null.
std::u16string NormalizePath(const char16_t* path);

// Drive and directory of a path, closed by a backslash unless empty; empty for null. C:\a\b.skp gives
// C:\a\, b.skp gives nothing, a/b.skp gives a/\.
std::u16string DirectoryOf(const char16_t* path);

// Creates a directory and those above it, from the top down. Null, empty and over-long paths do nothing.
// A failure is not told: it shows when a file in the directory can't be opened.
void MakeDirectories(const char16_t* path);
