// Conversions between UTF-16 and UTF-8.
#include "platform/Text.h"

#include <cstdint>

namespace {

constexpr char32_t ReplacementCharacter = 0xFFFD;

void AppendUtf16(std::u16string& text, char32_t code) {
    if (code < 0x10000) {
        text.push_back(static_cast<char16_t>(code));
    } else {
        text.push_back(static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10)));
        text.push_back(static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF)));
    }
}

void AppendUtf8(std::string& text, char32_t code) {
    const auto append = [&text](char32_t byte) {
        text.push_back(static_cast<char>(byte));
    };
    if (code < 0x80) {
        append(code);
    } else if (code < 0x800) {
        append(0xC0 | (code >> 6));
        append(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        append(0xE0 | (code >> 12));
        append(0x80 | ((code >> 6) & 0x3F));
        append(0x80 | (code & 0x3F));
    } else {
        append(0xF0 | (code >> 18));
        append(0x80 | ((code >> 12) & 0x3F));
        append(0x80 | ((code >> 6) & 0x3F));
        append(0x80 | (code & 0x3F));
    }
}

// A lead byte: how many bytes follow it, and the range of the first of them, which excludes overlong
// forms, surrogates and codes above U+10FFFF.
struct Lead {
    int Following; // -1 for a byte that can't lead
    uint8_t Low;
    uint8_t High;
};

Lead ClassifyLead(uint8_t byte) {
    if (byte < 0x80) {
        return {0, 0x80, 0xBF};
    }
    if (byte >= 0xC2 && byte <= 0xDF) {
        return {1, 0x80, 0xBF};
    }
    if (byte >= 0xE0 && byte <= 0xEF) {
        return {2, static_cast<uint8_t>(byte == 0xE0 ? 0xA0 : 0x80),
                static_cast<uint8_t>(byte == 0xED ? 0x9F : 0xBF)};
    }
    if (byte >= 0xF0 && byte <= 0xF4) {
        return {3, static_cast<uint8_t>(byte == 0xF0 ? 0x90 : 0x80),
                static_cast<uint8_t>(byte == 0xF4 ? 0x8F : 0xBF)};
    }
    return {-1, 0, 0};
}

} // namespace

std::string Utf8FromUtf16(std::u16string_view text) {
    std::string result;
    result.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (IsHighSurrogate(unit) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
            const char32_t high = unit - 0xD800u;
            const char32_t low = text[i + 1] - 0xDC00u;
            AppendUtf8(result, 0x10000 + (high << 10) + low);
            ++i;
        } else if (IsHighSurrogate(unit) || IsLowSurrogate(unit)) {
            AppendUtf8(result, ReplacementCharacter);
        } else {
            AppendUtf8(result, unit);
        }
    }
    return result;
}

std::u16string Utf16FromUtf8(std::string_view text) {
    std::u16string result;
    result.reserve(text.size());
    for (size_t i = 0; i < text.size();) {
        const auto byte = static_cast<uint8_t>(text[i++]);
        const Lead lead = ClassifyLead(byte);
        if (lead.Following <= 0) {
            AppendUtf16(result, lead.Following == 0 ? byte : ReplacementCharacter);
            continue;
        }
        char32_t code = byte & (0x3Fu >> lead.Following);
        uint8_t low = lead.Low;
        uint8_t high = lead.High;
        int missing = lead.Following;
        for (; missing > 0 && i < text.size(); --missing, ++i) {
            const auto next = static_cast<uint8_t>(text[i]);
            if (next < low || next > high) {
                break;
            }
            code = (code << 6) | (next & 0x3Fu);
            low = 0x80;
            high = 0xBF;
        }
        AppendUtf16(result, missing == 0 ? code : ReplacementCharacter);
    }
    return result;
}
