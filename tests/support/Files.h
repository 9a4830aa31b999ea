// Files and folders for tests.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

// A new, empty folder; the destructor removes it with its contents.
struct TempFolder {
    std::filesystem::path Path;

    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
};

// The bytes of a file; fails the test and returns none if it can't be read.
std::string ReadBytes(const std::filesystem::path& path);

// Writes a file and creates its folders.
void WriteBytes(const std::filesystem::path& path, const std::string& bytes);

// All files below a folder: sorted relative paths with slashes, in UTF-8.
std::vector<std::string> FilesBelow(const std::filesystem::path& folder);

// A path with backslashes, as on the command line.
std::u16string PathText(const std::filesystem::path& path);

// The bytes of the log that goes with a standard output.
std::string LogBytes(const std::string& output);
