// Text operations: UTF-16 and UTF-8, case, digits. The same on every system.
#pragma once

#include <string>
#include <string_view>

// Converts UTF-16 to UTF-8. Each unpaired surrogate becomes U+FFFD.
std::string Utf8FromUtf16(std::u16string_view text);

// Converts UTF-8 to UTF-16. Each maximal invalid sequence becomes U+FFFD.
std::u16string Utf16FromUtf8(std::string_view text);

constexpr bool IsHighSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

constexpr bool IsLowSurrogate(char16_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

// Whether a terminal obeys a character instead of showing it: C0, DEL and C1, and what changes the order
// of its neighbours or ends a line, as marks of writing direction do.
constexpr bool IsObeyed(char16_t unit) {
    return unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit == 0x061C ||
           (unit >= 0x200E && unit <= 0x200F) || (unit >= 0x2028 && unit <= 0x202E) ||
           (unit >= 0x2066 && unit <= 0x2069);
}

// Returns a UTF-8 or UTF-16 text with A to Z replaced by a to z. Texts with equal results differ at most
// in the case of these letters.
template <class Unit> std::basic_string<Unit> FoldCase(std::basic_string<Unit> text) {
    for (Unit& unit : text) {
        if (unit >= Unit{'A'} && unit <= Unit{'Z'}) {
            unit = static_cast<Unit>(unit - Unit{'A'} + Unit{'a'});
        }
    }
    return text;
}

// Returns the value of a hexadecimal digit in either case, or -1.
constexpr int HexDigit(char digit) {
    if (digit >= '0' && digit <= '9') {
        return digit - '0';
    }
    if (digit >= 'a' && digit <= 'f') {
        return digit - 'a' + 10;
    }
    return digit >= 'A' && digit <= 'F' ? digit - 'A' + 10 : -1;
}
