// Reading UTF-8: pure text work, the same on every system.
#include "platform/Platform.h"

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

// A lead byte: how many bytes follow it, and the range of the first of them. The range keeps out
// overlong forms, surrogates and codes above U+10FFFF.
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
