// A picture in ever smaller sizes, and colours taken from it.
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

// Each level half the size of the one before, rounded down, the last a single pixel.
struct Mipmaps {
    std::vector<MipmapLevel> Levels;
};

Mipmaps MakeMipmaps(const Texture& texture);

// The colour at (u, v), the picture repeating, v growing downwards. texelsPerPixel tells how many pixels
// of the picture one of the screen covers, along a side: the level is the one that comes closest.
Colour SampleMipmaps(const Mipmaps& mipmaps, double u, double v, double texelsPerPixel);
