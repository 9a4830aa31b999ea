// The formatting that all reports share.
#include "inspect/stored/Wording.h"

#include "platform/Platform.h"

#include <array>
#include <system_error>

namespace {

// Windows-1252 from 0x80 to 0x9F; the rest of the page is Latin-1. The five undefined bytes stay
// control characters.
constexpr std::array<char16_t, 32> Windows1252Upper = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// UTF-16 units.
constexpr size_t LongestQuote = 200;

} // namespace

std::u16string Counted(uint64_t count, std::u16string_view one, std::u16string_view several) {
    return (Number(count) + u" ").append(count == 1 ? one : several);
}

std::u16string InBrackets(int errorNumber) {
    if (errorNumber == 0) {
        return u"";
    }
    return u" (" + Utf16FromUtf8(std::generic_category().message(errorNumber)) + u")";
}

std::u16string Hex(uint32_t value, unsigned digits) {
    std::u16string text;
    for (unsigned digit = digits; digit-- > 0;) {
        text += u"0123456789ABCDEF"[(value >> (digit * 4)) & 0xF];
    }
    return text;
}

std::u16string Quoted(std::u16string_view name) {
    std::u16string text = u"\"";
    for (const char16_t unit : name.substr(0, LongestQuote)) {
        if (unit == u'"' || unit == u'\\') {
            text += {u'\\', unit};
        } else if (IsObeyed(unit)) {
            text += unit < 0x100 ? u"\\x" + Hex(unit, 2) : u"\\u" + Hex(unit, 4);
        } else {
            text += unit;
        }
    }
    return text + (name.size() > LongestQuote ? u"\"\u2026" : u"\"");
}

std::u16string NodeNameText(std::string_view name) {
    std::u16string text;
    for (const char character : name) {
        const auto byte = static_cast<uint8_t>(character);
        text += byte >= 0x80 && byte < 0xA0 ? Windows1252Upper[byte - 0x80u] : char16_t{byte};
    }
    return text;
}
