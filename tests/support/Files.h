// Files and folders for tests.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

// A new, empty folder, removed with all that it holds at the end.
struct TempFolder {
    std::filesystem::path Path;

    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
};

// The bytes of a file; a failed test and no bytes if it can't be read.
std::string ReadBytes(const std::filesystem::path& path);

// Writes a file, and the folders that it needs.
void WriteBytes(const std::filesystem::path& path, const std::string& bytes);

// All files below a folder, as sorted paths from there with slashes, in UTF-8.
std::vector<std::string> FilesBelow(const std::filesystem::path& folder);

// A path as the command line has it: with backslashes.
std::u16string PathText(const std::filesystem::path& path);
