// Splits paths and creates directories. The same on every system.
#include "run/Paths.h"

#include "platform/Platform.h"

#include <algorithm>

namespace {

constexpr char16_t Backslash = u'\\';

bool IsSeparator(char16_t unit) {
    return unit == Backslash || unit == u'/';
}

} // namespace

PathParts SplitPath(std::u16string_view path) {
    // Each drive has its own current directory, and C:b is the file b in it: a drive and a name without
    // a directory between them.
    const size_t driveLength = path.size() >= 2 && path[1] == u':' ? 2 : 0;
    const size_t lastSeparator = path.find_last_of(u"\\/");
    const size_t nameStart =
        lastSeparator == path.npos || lastSeparator < driveLength ? driveLength : lastSeparator + 1;
    const std::u16string_view name = path.substr(nameStart);
    const size_t baseLength = std::min(name.rfind(u'.'), name.size());
    return {.Drive = path.substr(0, driveLength),
            .Directory = path.substr(driveLength, nameStart - driveLength),
            .BaseName = name.substr(0, baseLength),
            .Extension = name.substr(baseLength)};
}

std::u16string FileNameOf(std::u16string_view path) {
    const PathParts parts = SplitPath(path);
    return std::u16string(parts.BaseName).append(parts.Extension);
}

std::u16string NormalizePath(const char16_t* path) {
    if (path == nullptr) {
        return {};
    }
    std::u16string_view rest = path;
    if (rest.starts_with(u".\\")) {
        rest.remove_prefix(2);
    }
    return std::u16string(rest);
}

std::u16string DirectoryOf(const char16_t* path) {
    const std::u16string normal = NormalizePath(path);
    const PathParts parts = SplitPath(normal);
    std::u16string directory = std::u16string(parts.Drive).append(parts.Directory);
    if (!directory.empty() && directory.back() != Backslash) {
        directory.push_back(Backslash);
    }
    return directory;
}

void MakeDirectories(const char16_t* path) {
    const std::u16string directory = path == nullptr ? std::u16string() : path;
    if (directory.empty() || directory.size() >= PathLimit) {
        return;
    }
    // Without closing separators a path is longer than its parent, so the recursion ends.
    std::u16string_view trimmed = directory;
    while (!trimmed.empty() && IsSeparator(trimmed.back())) {
        trimmed.remove_suffix(1);
    }
    const PathParts parts = SplitPath(trimmed);
    if (!parts.Directory.empty()) {
        MakeDirectories(std::u16string(parts.Drive).append(parts.Directory).c_str());
    }
    // A name whose only dot comes first, such as .cache, is split as an extension without a base name.
    // It counts as a file name, and no directory is created.
    if (parts.BaseName.empty()) {
        return;
    }
    const uint32_t attributes = FileAttributes(directory);
    if (attributes != InvalidAttributes && (attributes & DirectoryAttribute) != 0) {
        return;
    }
    CreateOneDirectory(directory);
}
