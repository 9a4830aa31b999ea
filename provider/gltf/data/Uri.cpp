// Decodes percent-encoded file names and data in Base64.
#include "provider/gltf/data/Uri.h"

#include "platform/Text.h"

#include <array>

namespace {

constexpr uint8_t NoDigit = 0xFF;

constexpr std::array<uint8_t, 256> DigitsOf(std::string_view digits) {
    std::array<uint8_t, 256> values = {};
    values.fill(NoDigit);
    for (size_t i = 0; i < digits.size(); ++i) {
        values[static_cast<uint8_t>(digits[i])] = static_cast<uint8_t>(i);
    }
    return values;
}

constexpr auto Base64Digits =
    DigitsOf("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");

} // namespace

std::string DecodePercent(std::string_view text) {
    std::string decoded;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && HexDigit(text[i + 1]) >= 0 &&
            HexDigit(text[i + 2]) >= 0) {
            decoded += static_cast<char>(HexDigit(text[i + 1]) * 16 + HexDigit(text[i + 2]));
            i += 2;
        } else {
            decoded += text[i];
        }
    }
    return decoded;
}

bool IsDataUri(std::string_view uri) {
    return uri.starts_with("data:");
}

bool DecodeDataUri(std::string_view uri, std::vector<uint8_t>& bytes) {
    constexpr std::string_view markText = ";base64,";
    // The type before the mark is short; data without a mark can be gigabytes.
    const size_t mark = uri.substr(0, 256).find(markText);
    if (!IsDataUri(uri) || mark == std::string_view::npos) {
        return false;
    }
    uri.remove_prefix(mark + markText.size());
    while (uri.ends_with('=')) {
        uri.remove_suffix(1);
    }
    if (uri.size() % 4 == 1) {
        return false;
    }
    bytes.clear();
    bytes.reserve(uri.size() / 4 * 3 + 2);
    uint32_t bits = 0;
    int count = 0; // of valid bits
    for (const char c : uri) {
        const uint8_t digit = Base64Digits[static_cast<uint8_t>(c)];
        if (digit == NoDigit) {
            return false;
        }
        bits = bits << 6 | digit;
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes.push_back(static_cast<uint8_t>(bits >> count));
        }
    }
    return true;
}
