// Paths, directories and log lines.
#include "run/Paths.h"
#include "platform/Text.h"
#include "run/Log.h"
#include "support/Files.h"

#include <gtest/gtest.h>

TEST(Paths, NormalizePathAndDirectoryOf) {
    const struct {
        const char16_t* Path;
        const char16_t* Normal;
        const char16_t* Directory;
    } cases[] = {
        {u"C:\\a\\b.skp", u"C:\\a\\b.skp", u"C:\\a\\"},
        {u".\\a\\b.skp", u"a\\b.skp", u"a\\"},
        {u".\\.\\b.skp", u".\\b.skp", u".\\"},
        {u"./b.skp", u"./b.skp", u"./\\"},
        {u"a\\b.skp", u"a\\b.skp", u"a\\"},
        {u"b.skp", u"b.skp", u""},
        {u".\\b.skp", u"b.skp", u""},
        {u"C:\\a\\", u"C:\\a\\", u"C:\\a\\"},
        {u"C:\\a", u"C:\\a", u"C:\\"},
        {u"C:b.skp", u"C:b.skp", u"C:\\"},
        {u"a/b\\c/d.bin", u"a/b\\c/d.bin", u"a/b\\c/\\"},
        {u"", u"", u""},
        {nullptr, u"", u""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.Path == nullptr ? "null" : Utf8FromUtf16(c.Path));
        EXPECT_EQ(NormalizePath(c.Path), c.Normal);
        EXPECT_EQ(DirectoryOf(c.Path), c.Directory);
    }
}

TEST(Paths, SplitPathTakesTheLastDotOfTheLastComponent) {
    const PathParts parts = SplitPath(u"D:dir.old\\a.b.c");
    EXPECT_EQ(parts.Drive, u"D:");
    EXPECT_EQ(parts.Directory, u"dir.old\\");
    EXPECT_EQ(parts.BaseName, u"a.b");
    EXPECT_EQ(parts.Extension, u".c");
    EXPECT_EQ(SplitPath(u"dir.old/name").BaseName, u"name");
    EXPECT_EQ(SplitPath(u".cache").BaseName, u"");
    EXPECT_EQ(FileNameOf(u"C:\\x\\a.png"), u"a.png");
}

TEST(Paths, MakeDirectoriesCreatesAllLevels) {
    const TempFolder folder;
    const std::filesystem::path& base = folder.Path;
    const std::u16string start = base.u16string();
    for (const char16_t* tail : {u"\\a\\b\\", u"/out/deep/\\", u"\\old.dir\\x//", u"\\a\\..\\c"}) {
        MakeDirectories((start + tail).c_str());
    }
    for (const char* made : {"a/b", "out/deep", "old.dir/x", "c"}) {
        EXPECT_TRUE(std::filesystem::is_directory(base / made)) << made;
    }
    // A last component that is all extension has no base name: that directory isn't created.
    MakeDirectories((start + u"\\.cache\\").c_str());
    EXPECT_FALSE(std::filesystem::exists(base / ".cache"));
    // Separators alone and paths above the limit don't crash.
    for (const std::u16string& path : {std::u16string(1000, u'/'), start + std::u16string(300, u'x'),
                                       std::u16string(u"C:\\"), std::u16string()}) {
        MakeDirectories(path.c_str());
    }
    MakeDirectories(nullptr);
}

TEST(Log, FormatReplacesItsOwnConversionsOnly) {
    EXPECT_EQ(Format(u"Error %s (rc=%d)", {u"100%s%d", -13}), u"Error 100%s%d (rc=-13)");
    EXPECT_EQ(Format(u"100%", {}), u"100%");
}
