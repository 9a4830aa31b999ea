// Which files are read, and where the names in other files lead.
#include "platform/Files.h"
#include "platform/Text.h"

#include <gtest/gtest.h>

TEST(Files, ReadNoDevices) {
    // The names of the other system are files that don't exist.
    for (const char16_t* name :
         {u"NUL", u"COM1", u"AUX.png", u"CONIN$", u"folder/CON", u"/dev/null", u"."}) {
        std::vector<uint8_t> bytes;
        EXPECT_FALSE(ReadWholeFile(name, bytes)) << Utf8FromUtf16(name);
    }
}

TEST(Files, FollowNamesToNoServer) {
    const struct {
        const char16_t* Name;
        const char16_t* Path;
    } rows[] = {
        {u"a.png", u"in/a.png"},      {u"..\\b/a.png", u"in/..\\b/a.png"},
        {u"/b/a.png", u"/b/a.png"},   {u"\\a.png", u"\\a.png"},
        {u"C:a.png", u"C:a.png"},     {u"1:a.png", u"in/1:a.png"},
        {u"?a.png", u"in/?a.png"},    {u"\\\\server\\share\\a.png", u""},
        {u"//server/a.png", u""},     {u"/\\.\\pipe\\a", u""},
        {u"\\\\?\\UNC\\server", u""}, {u"\\??\\UNC\\server\\a.png", u""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(PathIn(u"in/", row.Name), row.Path);
    }
}
