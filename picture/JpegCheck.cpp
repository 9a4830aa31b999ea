// Checks JPEG files before they are decoded. Walks the segments up to the first scan as the decoder
// does. After that every marker counts, since coded data contains none.
#include "picture/JpegCheck.h"

#include <algorithm>
#include <numeric>

constexpr uint8_t MarkerStart = 0xFF;
constexpr uint8_t StartOfImage = 0xD8;
constexpr uint8_t HuffmanTables = 0xC4;
constexpr uint8_t StartOfScan = 0xDA;
constexpr size_t LengthSize = 2;
// One byte for the kind of table, then the number of codes of each length from 1 to 16.
constexpr size_t CodeLengths = 16;
constexpr size_t TableHeader = 1 + CodeLengths;
// The decoder numbers the codes of a table from 0 in one byte; 255 means none.
constexpr uint32_t MostCodes = 255;

namespace {

size_t LengthAt(std::span<const uint8_t> bytes, size_t at) {
    return at + LengthSize <= bytes.size() ? size_t{bytes[at]} << 8 | bytes[at + 1] : 0;
}

// at is the index of the segment's length.
bool AreSoundTables(std::span<const uint8_t> bytes, size_t at) {
    const size_t end = std::min(bytes.size(), at + LengthAt(bytes, at));
    at += LengthSize;
    while (at + TableHeader <= end) {
        const auto counts = bytes.subspan(at + 1, CodeLengths);
        const uint32_t codes = std::accumulate(counts.begin(), counts.end(), uint32_t{0});
        if (codes > MostCodes) {
            return false;
        }
        at += TableHeader + codes;
    }
    // If bytes remain, the decoder reads a table past the end of the segment.
    return at >= end;
}

} // namespace

bool HasSoundHuffmanTables(std::span<const uint8_t> bytes) {
    // Any number of fill bytes may precede a marker, including the first one.
    const auto start = static_cast<size_t>(
        std::ranges::find_if_not(bytes, [](uint8_t byte) { return byte == MarkerStart; }) -
        bytes.begin());
    if (start == 0 || start == bytes.size() || bytes[start] != StartOfImage) {
        return true;
    }
    bool inScans = false;
    for (size_t at = start + 1; at + 1 < bytes.size(); ++at) {
        if (bytes[at] != MarkerStart || bytes[at + 1] == MarkerStart) {
            continue;
        }
        const uint8_t marker = bytes[at + 1];
        if (marker == HuffmanTables && !AreSoundTables(bytes, at + 2)) {
            return false;
        }
        inScans |= marker == StartOfScan;
        if (!inScans) {
            at += 1 + LengthAt(bytes, at + 2);
        }
    }
    return true;
}
