// Paths, directories and log lines.
#include "run/Paths.h"
#include "run/Log.h"
#include "support/Files.h"

#include <gtest/gtest.h>

// The forms that runs of the program don't have on every system.
TEST(Paths, DirectoriesOfPathsWithDrives) {
    EXPECT_EQ(DirectoryOf(u"C:\\a\\b.skp"), u"C:\\a\\");
    EXPECT_EQ(DirectoryOf(u"C:\\a"), u"C:\\");
    EXPECT_EQ(DirectoryOf(u"C:b.skp"), u"C:\\");
    EXPECT_EQ(SplitPath(u"D:dir.old\\a.b.c").Directory, u"dir.old\\");
    EXPECT_EQ(DirectoryOf(nullptr), u"");
}

TEST(Paths, MakeDirectoriesSurvivesOddPaths) {
    const TempFolder folder;
    const std::u16string start = folder.Path.u16string();
    // A last component that is all extension has no base name: that directory isn't created.
    MakeDirectories((start + u"\\.cache\\").c_str());
    EXPECT_FALSE(std::filesystem::exists(folder.Path / ".cache"));
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
