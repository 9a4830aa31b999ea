// A check of JPEG files ahead of the decoder, which trusts one count in them.
#pragma once

#include <cstdint>
#include <span>

// Whether no Huffman table of a JPEG file has more codes than there are byte values. The decoder would
// write past the end of its own table. Anything that is no JPEG file passes.
bool HasSoundHuffmanTables(std::span<const uint8_t> bytes);
