// Files and folders for tests.
#include "support/Files.h"

#include "platform/Platform.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <random>

namespace fs = std::filesystem;

TempFolder::TempFolder() {
    std::random_device random;
    do {
        Path = fs::temp_directory_path() / ("orvane-" + std::to_string(random()));
    } while (!fs::create_directories(Path));
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    fs::remove_all(Path, ignored);
}

std::string ReadBytes(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteBytes(const fs::path& path, const std::string& bytes) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

std::vector<std::string> FilesBelow(const fs::path& folder) {
    std::vector<std::string> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder))
        if (!entry.is_directory())
            files.push_back(Utf8FromUtf16(entry.path().lexically_relative(folder).generic_u16string()));
    std::sort(files.begin(), files.end());
    return files;
}

std::u16string PathText(const fs::path& path) {
    std::u16string text = path.generic_u16string();
    std::replace(text.begin(), text.end(), u'/', u'\\');
    return text;
}

std::string LogBytes(const std::string& output) {
    std::string bytes = "\xFF\xFE";
    for (const char16_t unit : Utf16FromUtf8(output)) {
        bytes.push_back(char(unit & 0xFF));
        bytes.push_back(char(unit >> 8));
    }
    return bytes;
}
