// Triangulates plane polygons with holes.
#pragma once

#include "provider/model/Vector.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

// The unit normal of a loop by Newell's method: the loop runs counter-clockwise about it. Returns false
// if the loop encloses no area or its size overflows.
bool NormalOfLoop(std::span<const Point3> loop, Point3& normal);

// A point where outlines cross: a weighted sum of up to four earlier points. The weights add up to 1.
struct CrossingPoint {
    std::array<uint32_t, 4> Points = {};
    std::array<double, 4> Weights = {};
};

// The loops of a polygon, one after the other, and its triangulation.
struct PolygonTriangulation {
    std::vector<Point3> Points;     // the corners; points where outlines cross are appended
    std::vector<uint32_t> LoopEnds; // index after the last corner of each loop; the outline is first
    std::vector<uint32_t> Indices;  // three per triangle, counter-clockwise about the normal
    std::vector<CrossingPoint> Crossings; // one for each point appended
};

// Fills Indices, and appends to Points and Crossings where outlines cross. The outline is
// counter-clockwise about normal, the holes turn either way. Returns false if nothing is left to
// triangulate, if edges cross or touch more than eight times per corner, or if the polygon can't be
// triangulated.
bool TriangulatePolygon(PolygonTriangulation& polygon, Point3 normal);
