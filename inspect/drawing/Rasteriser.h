// Draws triangles into a picture with a depth per pixel.
//
// Screen space: pixels, x to the right, y down, pixel centres at halves. Work is proportional to each
// triangle's pixels, except those in tiles that hide it completely.
#pragma once

#include "inspect/drawing/Mipmaps.h"

#include <array>
#include <cstdint>
#include <limits>
#include <vector>

// Pixels along each side of a tile.
constexpr int64_t TileSide = 16;

struct Tile {
    float Farthest = 0;      // Lower bound of its pixels' nearness.
    uint32_t Visits = 0;     // Pixels visited since Farthest was set.
    bool HasChanged = false; // Whether a pixel's nearness has, since then.
};

// The blended surfaces that hide a pixel.
struct Veil {
    float Through = 1; // The share of what is behind them that shows through.
    float Nearness = std::numeric_limits<float>::infinity(); // Of the farthest one.
};

struct Canvas {
    uint32_t Width = 0; // Pixels.
    uint32_t Height = 0;
    std::vector<std::array<float, 3>> Colours; // Red, green, blue from 0 to 1; rows from the top.
    std::vector<float> Nearness;               // 1 / distance of the surface there; 0 for none.
    std::vector<Tile> Tiles;                   // Rows from the top.
    std::vector<Veil> Veils;                   // Empty before the first blended surface.
};

Canvas BlackCanvas(uint32_t width, uint32_t height);

struct ScreenCorner {
    double X; // Pixels, within the canvas.
    double Y;
    double Nearness; // 1 / distance, above 0.
    double U;
    double V;
    double Light; // Factor of the colour.
};

struct Surface {
    Colour BaseColour;                // Multiplied by the picture's colour.
    const Mipmaps* Picture = nullptr; // Null for none.
    bool IsBlended = false;           // Blended by its alpha; hides nothing.
};

// Draws the pixels that are nearer than the canvas. Only triangles with clockwise corners on the screen
// are drawn. Pixels on a shared edge belong to one of the two triangles.
void DrawTriangle(Canvas& canvas, const std::array<ScreenCorner, 3>& corners, const Surface& surface);

// Excludes from drawing what is hidden, or almost hidden, by this triangle and by the blended ones of
// earlier calls. The triangles themselves are still drawn. Most effective in calls from near to far,
// and for blended triangles after all others are drawn.
void HideBehindTriangle(Canvas& canvas, const std::array<ScreenCorner, 3>& corners,
                        const Surface& surface);
