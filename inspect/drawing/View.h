// The viewpoint of a picture: above a corner of the scene, where all of it just fits.
//
// Scene space: left-handed, Y up. View space: x to the right, y up, z away from the eye, which is at
// the origin. Screen space: pixels, x to the right, y down, (0, 0) the upper left corner of the
// picture.
#pragma once

#include "inspect/stored/StoredScene.h"

#include <array>

using Vector = std::array<double, 3>;

struct View {
    Vector Right; // The axes of view space, in scene space, of unit length.
    Vector Up;
    Vector Forward;
    Vector Eye;                // In scene space.
    double PixelsPerSlope = 1; // Screen distance from the middle for x / z = 1.
    double MiddleX = 0;        // Pixels.
    double MiddleY = 0;
};

double Dot(const Vector& a, const Vector& b);
Vector Cross(const Vector& a, const Vector& b); // By the usual formula, in any axes.
// The zero vector if the length is 0 or not finite.
Vector Normalized(const Vector& vector);
Vector ToVector(const std::array<float, 3>& position);
bool IsFinite(const std::array<float, 3>& position);

// The view for a picture of this size in pixels. It contains, with a margin, every vertex that a
// triangle uses and that has a finite position. Without any, a view of the origin.
View FrameScene(const StoredScene& scene, double width, double height);

// A point of the scene in view space. z is above 0 for all framed points.
Vector ToView(const View& view, const std::array<float, 3>& position);
