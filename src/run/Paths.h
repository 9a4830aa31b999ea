// Path operations on UTF-16 text, and creation of the directories of output files.
//
// Backslash and slash separate, but only a backslash closes a directory. Nothing here truncates a path:
// the call that would use a path beyond PathLimit skips it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// The most UTF-16 units of a path, or UTF-8 bytes of a path for the library, closing NUL included: the
// limit of Windows.
constexpr size_t PathLimit = 260;

// The parts of a path. Joined in this order they are the path again.
struct PathParts {
    std::u16string_view Drive;     // the first two units if the second is a colon
    std::u16string_view Directory; // up to and including the last separator of either kind
    std::u16string_view BaseName;  // the last component without its extension
    std::u16string_view Extension; // from the last dot of the last component, dot included
};

// The parts are views into the given path.
PathParts SplitPath(std::u16string_view path);

// Returns the last component of a path: base name and extension.
std::u16string FileNameOf(std::u16string_view path);

// Returns the path without one leading ".\"; empty for null.
std::u16string NormalizePath(const char16_t* path);

// Returns drive and directory of a path, closed by a backslash unless empty; empty for null. C:\a\b.skp
// becomes C:\a\, b.skp becomes empty, a/b.skp becomes a/\.
std::u16string DirectoryOf(const char16_t* path);

// Creates a directory and its parents, from the top down. Does nothing for a null, empty or over-long
// path. Failures are not reported: opening a file in the directory then fails.
void MakeDirectories(const char16_t* path);
