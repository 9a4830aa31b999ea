// What differs between systems: files, directories, code pages and standard output.
//
// Paths come as UTF-16 in the form that the user gave them. On POSIX a backslash is a separator as well
// as a slash, a leading drive letter is dropped, and names are UTF-8. On Windows paths go to the system
// as they are.
#pragma once

#include "platform/Text.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

// File attributes as FileAttributes gives them: all bits set for a path that can't be examined.
constexpr uint32_t InvalidAttributes = 0xFFFFFFFF;
constexpr uint32_t DirectoryAttribute = 0x10;
constexpr uint32_t DeviceAttribute = 0x40;

// Opens a file without any translation of bytes: for writing, new or emptied, or for reading.
// Gives null on failure. The caller closes the stream.
std::FILE* OpenForWriting(const std::u16string& path);
std::FILE* OpenForReading(const std::u16string& path);

// DirectoryAttribute for a directory, DeviceAttribute for a device, a pipe or a socket, neither for a
// file, or InvalidAttributes.
uint32_t FileAttributes(const std::u16string& path);

// Whether two paths name one file: their resolved names are equal, or both exist with more than one hard
// link each and agree in device and file number. Throws only when memory runs out.
//
// A resolved name is absolute, with links followed and "." and ".." removed. Parts that don't exist yet
// stay as they are spelled. A link whose target doesn't exist counts as the target on POSIX, as a file
// of its own on Windows. Windows ignores case. A path that can't be resolved, because of permissions or
// of links in a circle, counts by its spelling, made absolute.
//
// Not noticed, because the file number alone would show it: a file of one link that is reached through
// two mounts, and on POSIX names that differ in case on a file system that ignores case.
bool NameOneFile(const std::u16string& a, const std::u16string& b);

// Creates one directory; a path with closing separators is accepted. Gives false on failure, also where
// something stands there already.
bool CreateOneDirectory(const std::u16string& path);

// UTF-16 to the system's ANSI code page: Windows-1252 on POSIX, with one "?" for each UTF-16 unit that
// the page lacks.
std::string AnsiFromUtf16(std::u16string_view text);

// Prints text to standard output at once: UTF-8 on POSIX whatever the locale. Gives 0, or the errno of
// what kept part of the text from going out.
int PrintToStandardOutput(std::u16string_view text);

// The same of bytes, which go out as they stand where standard output translates nothing.
int PrintBytes(std::string_view bytes);

// The errno that a failed call has left, or EIO if it has left none: for calls before which errno was
// set to 0.
int FailureReason();
