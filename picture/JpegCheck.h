// A check of JPEG files ahead of the decoder, which trusts one count in them.
#pragma once

#include <cstdint>
#include <span>

// Whether no Huffman table of a JPEG file has more codes than the decoder can number, which is 255; a
// picture of 8 bits per channel needs fewer. The decoder would mistake the 256th, and write the others
// past the end of its own table. Anything that is no JPEG file passes.
bool HasSoundHuffmanTables(std::span<const uint8_t> bytes);
