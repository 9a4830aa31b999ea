// Mipmaps of a picture, and colours sampled from them.
#pragma once

#include "inspect/stored/Textures.h"

#include <array>
#include <cstdint>
#include <vector>

// Red, green, blue, alpha from 0 to 1, on the screen's scale, not premultiplied.
using Colour = std::array<float, 4>;

struct MipmapLevel {
    uint32_t Width = 0; // Pixels, above 0.
    uint32_t Height = 0;
    std::vector<uint8_t> Pixels; // Red, green, blue, alpha; rows from the top.
};

// Each level has half the size of the previous one, rounded down. The last is a single pixel.
struct Mipmaps {
    std::vector<MipmapLevel> Levels;
};

Mipmaps MakeMipmaps(const Texture& texture);

// The colour at (u, v). The picture repeats, and v grows downwards. texelsPerPixel is the number of
// picture pixels along a side of a screen pixel; it selects the closest level.
Colour SampleMipmaps(const Mipmaps& mipmaps, double u, double v, double texelsPerPixel);
