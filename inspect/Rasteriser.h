// Fills triangles into a picture with a depth for each pixel.
//
// Screen space: pixels, x to the right, y down, pixel centres at halves. Work is proportional to the
// pixels of each triangle's box.
#pragma once

#include "inspect/Mipmaps.h"

#include <array>
#include <cstdint>
#include <vector>

struct Canvas {
    uint32_t Width = 0; // Pixels.
    uint32_t Height = 0;
    std::vector<std::array<float, 3>> Colours; // Red, green, blue from 0 to 1; rows from the top.
    std::vector<float> Nearness;               // 1 / distance of what is drawn there; 0 for nothing.
};

struct ScreenCorner {
    double X; // Pixels, within the canvas.
    double Y;
    double Nearness; // 1 / distance, above 0.
    double U;
    double V;
    double Light; // What the colour is multiplied by.
};

struct Surface {
    Colour Base;                      // Multiplied with the picture's colour.
    const Mipmaps* Picture = nullptr; // Null for none.
    bool IsBlended = false;           // Mixed by its alpha, and not in the way of what comes later.
};

// Draws what is nearer than all that is there. Only triangles whose corners go clockwise on the screen
// are drawn; pixels on an edge shared by two of them belong to one.
void DrawTriangle(Canvas& canvas, const std::array<ScreenCorner, 3>& corners, const Surface& surface);
