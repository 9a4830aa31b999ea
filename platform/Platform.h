// System-dependent operations: files, directories, code pages, standard output and mapped memory.
//
// Paths are UTF-16, as the user wrote them. On POSIX both slash and backslash separate, a leading drive
// is dropped, and names are UTF-8. On Windows paths are passed to the system unchanged, except that
// those beyond its limit of 260 units are made absolute.
#pragma once

#include "platform/Text.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

// The alignment of mappings. The largest page that systems commonly give to programs. [Units:
// bytes]
constexpr size_t LargePage = size_t{1} << 21;

// Memory straight from the system, for platform/LargeArray.h only. Sizes are multiples of the system's
// pages. The system is asked for large pages where it has them; new memory is zero.
//
// MapMemory returns null if there is no memory. reserved becomes the size of the addresses taken, which
// the other operations need.
std::byte* MapMemory(size_t size, size_t& reserved);
// Grows a mapping from former to size bytes. The bytes move to new addresses without being copied or, on
// systems that cannot do that, the first used ones are copied. Returns false, with the mapping
// unchanged, if there is no memory.
bool GrowMapping(std::byte*& bytes, size_t& reserved, size_t former, size_t size, size_t used);
// Returns the memory behind the first size bytes to the system.
void ShrinkMapping(std::byte* bytes, size_t& reserved, size_t former, size_t size);
void UnmapMemory(std::byte* bytes, size_t reserved);

// The size of an open file in bytes; 0 if it has none, as a pipe.
uint64_t SizeOfStream(std::FILE* stream);

// Results of FileAttributes. All bits are set for a path that can't be examined.
constexpr uint32_t InvalidAttributes = 0xFFFFFFFF;
constexpr uint32_t DirectoryAttribute = 0x10;
constexpr uint32_t DeviceAttribute = 0x40;

// Opens a binary stream: to write a new or truncated file, or to read. Returns null on failure. The
// caller closes the stream.
std::FILE* OpenForWriting(const std::u16string& path);
std::FILE* OpenForReading(const std::u16string& path);

// Returns DirectoryAttribute for a directory, DeviceAttribute for a device, pipe or socket, neither bit
// for a file, or InvalidAttributes.
uint32_t FileAttributes(const std::u16string& path);

// Bytes of a file; 0 if it can't be examined.
uint64_t SizeOfFile(const std::u16string& path);

// Whether two paths name the same file: their resolved names are equal, or both exist, have more than
// one hard link each, and agree in device and file number. Throws only if memory runs out.
//
// A resolved name is absolute, with links followed and "." and ".." removed. Parts that don't exist yet
// stay as written. A link whose target doesn't exist counts as the target on POSIX, as a file of its own
// on Windows. Windows ignores case. A path that can't be resolved, because of permissions or circular
// links, is only made absolute.
//
// Not detected, because only the file number shows it: a file with one link that is reached through two
// mounts, and on POSIX names that differ in case on a file system that ignores case.
bool NameOneFile(const std::u16string& a, const std::u16string& b);

// Creates one directory. The path may end with separators. Returns false on failure, also if something
// of this name exists.
bool CreateOneDirectory(const std::u16string& path);

// Converts UTF-16 to the system's ANSI code page: Windows-1252 on POSIX, with one "?" for each UTF-16
// unit that the page lacks.
std::string AnsiFromUtf16(std::u16string_view text);

// Prints and flushes text: UTF-16 on a Windows console, else UTF-8, whatever the locale. Returns 0, or
// the errno if part of the text is not written.
int PrintToStandardOutput(std::u16string_view text);

// The same for bytes, unchanged if standard output is in binary mode.
int PrintBytes(std::string_view bytes);

// Whether standard error is a terminal or a console.
bool ErrorOutputIsTerminal();

// Returns errno after a failed call, or EIO if the call didn't set it. Expects that errno was 0 before
// the call.
int FailureReason();
