// Helpers for the tests of the provider: their own files, and files below the test directory.
#pragma once

#include "platform/Files.h"
#include "platform/Platform.h"
#include "platform/Text.h"
#include "provider/OpenModel.h"
#include "support/Files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// The directory of the running test, with its closing separator. Created at the first call, below a
// directory of the process, because tests of several builds run at the same time.
inline std::u16string ProviderTestDirectory() {
    static const TempFolder Folder;
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string(test->test_suite_name()) + "." + test->name();
    std::ranges::replace(name, '/', '.');
    const std::u16string directory = (Folder.Path / name).u16string();
    CreateOneDirectory(directory);
    return directory + u"/";
}

// The directory of these tests' own files, with its closing separator.
inline const std::u16string ProviderTestsDirectory = Utf16FromUtf8(ORVANE_PROVIDER_TESTS_DIR) + u"/";

// One of these tests' own files.
inline std::string ReadTestText(std::u16string_view name) {
    std::vector<uint8_t> bytes;
    EXPECT_TRUE(ReadWholeFile(ProviderTestsDirectory + std::u16string(name), bytes));
    return {bytes.begin(), bytes.end()};
}

// Writes a file into the test's directory; returns its path.
inline std::u16string WriteTestFile(std::u16string_view name, const std::vector<uint8_t>& bytes) {
    std::u16string path = ProviderTestDirectory() + std::u16string(name);
    EXPECT_EQ(WriteWholeFile(path, bytes), 0);
    return path;
}

inline std::u16string WriteTestText(std::u16string_view name, std::string_view text) {
    return WriteTestFile(name, std::vector<uint8_t>(text.begin(), text.end()));
}
