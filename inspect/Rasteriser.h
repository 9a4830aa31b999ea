// Fills triangles into a picture with a depth for each pixel.
//
// Screen space: pixels, x to the right, y down, pixel centres at halves. Work is proportional to each
// triangle's pixels, less those of tiles that it is behind all over.
#pragma once

#include "inspect/Mipmaps.h"

#include <array>
#include <cstdint>
#include <limits>
#include <vector>

// Pixels along each side of a tile.
constexpr int64_t TileSide = 16;

struct Tile {
    float Farthest = 0;      // No pixel's nearness is less.
    uint32_t Looks = 0;      // Pixels looked at since Farthest was found.
    bool HasChanged = false; // A pixel's nearness, since then.
};

// The blended surfaces that a pixel has been hidden behind.
struct Veil {
    float Through = 1; // The part that shows through of what is behind them all.
    float Nearness = std::numeric_limits<float>::infinity(); // Of the farthest.
};

struct Canvas {
    uint32_t Width = 0; // Pixels.
    uint32_t Height = 0;
    std::vector<std::array<float, 3>> Colours; // Red, green, blue from 0 to 1; rows from the top.
    std::vector<float> Nearness;               // 1 / distance of what is drawn there; 0 for nothing.
    std::vector<Tile> Tiles;                   // Rows from the top.
    std::vector<Veil> Veils;                   // Empty before the first blended one.
};

Canvas BlackCanvas(uint32_t width, uint32_t height);

struct ScreenCorner {
    double X; // Pixels, within the canvas.
    double Y;
    double Nearness; // 1 / distance, above 0.
    double U;
    double V;
    double Light; // What the colour is multiplied by.
};

struct Surface {
    Colour BaseColour;                // Multiplied with the picture's colour.
    const Mipmaps* Picture = nullptr; // Null for none.
    bool IsBlended = false;           // Mixed by its alpha, and not in the way of what comes later.
};

// Draws what is nearer than all that is there. Only triangles whose corners go clockwise on the screen
// are drawn; pixels on an edge shared by two of them belong to one.
void DrawTriangle(Canvas& canvas, const std::array<ScreenCorner, 3>& corners, const Surface& surface);

// Lets nothing be drawn any more that is, or all but is, behind this triangle and the blended ones for
// which the same was called before; the triangles themselves are still drawn. It does the most when
// called from near to far; for blended ones, when all others have been drawn.
void HideBehindTriangle(Canvas& canvas, const std::array<ScreenCorner, 3>& corners,
                        const Surface& surface);
