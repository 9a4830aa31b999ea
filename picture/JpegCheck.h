// Checks JPEG files before they are decoded, since the decoder trusts one count in them.
#pragma once

#include <cstdint>
#include <span>

// Whether every Huffman table of a JPEG file has at most 255 codes, as many as the decoder can number. A
// picture of 8 bits per channel needs fewer. The decoder would misread the 256th code and write further
// ones past the end of its table. A file that is not a JPEG passes.
bool HasSoundHuffmanTables(std::span<const uint8_t> bytes);
