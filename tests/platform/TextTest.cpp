// Text conversion.
#include "platform/Text.h"

#include <gtest/gtest.h>

TEST(Text, FoldsTheCaseOfAsciiOnly) {
    EXPECT_EQ(FoldCase(std::u16string(u"AZ Brick.JPG")), u"az brick.jpg");
    EXPECT_EQ(FoldCase(std::u16string(u"\u00C4@[`{")), u"\u00C4@[`{"); // code points next to the letters
}

TEST(Text, ConvertsBetweenUtf16AndUtf8) {
    const std::u16string text = u"a\u00FC\u20AC\U0001F3E0";
    EXPECT_EQ(Utf8FromUtf16(text), "a\xC3\xBC\xE2\x82\xAC\xF0\x9F\x8F\xA0");
    EXPECT_EQ(Utf16FromUtf8(Utf8FromUtf16(text)), text);
    const std::u16string unpaired = {0xD83C, u'x', 0xDFE0, 0xD83C};
    EXPECT_EQ(Utf8FromUtf16(unpaired), "\xEF\xBF\xBDx\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(Text, ReplacesInvalidUtf8) {
    const struct {
        const char* Bytes;
        const char16_t* Text;
    } cases[] = {
        {"\x80", u"\uFFFD"},
        {"a\xC3", u"a\uFFFD"},
        {"\xC3(", u"\uFFFD("},
        {"\xE2\x82(", u"\uFFFD("},
        {"\xC0\x80", u"\uFFFD\uFFFD"},
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xF0\x9F\x8F", u"\uFFFD"},
        {"\xFF", u"\uFFFD"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Utf16FromUtf8(c.Bytes), c.Text);
    }
}
