// Text conversion.
#include "platform/Text.h"

#include <gtest/gtest.h>

TEST(Text, FoldsTheCaseOfAsciiOnly) {
    EXPECT_EQ(FoldCase(std::u16string(u"AZ Brick.JPG")), u"az brick.jpg");
    EXPECT_EQ(FoldCase(std::u16string(u"\u00C4@[`{")), u"\u00C4@[`{"); // code points next to the letters
}

TEST(Text, ConvertsBetweenUtf16AndUtf8) {
    // The first and last codes of each length.
    const std::u16string text = {0x01,   0x7F,   0x80,   0x7FF,  0x800, 0xD7FF,
                                 0xFFFF, 0xD800, 0xDC00, 0xDBFF, 0xDFFF};
    EXPECT_EQ(Utf8FromUtf16(text), "\x01\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEF\xBF\xBF"
                                   "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
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
