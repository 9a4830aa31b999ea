// Plane polygons with holes to triangles.
#pragma once

#include "provider/model/Vector.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

// The unit normal of a loop by Newell's method: the loop runs counter-clockwise about it. Gives false
// when the loop encloses no area or its size overflows.
bool NormalOfLoop(std::span<const Point3> loop, Point3& normal);

// A point where outlines cross: a mixture of up to four earlier points. The weights add up to 1.
struct CrossingPoint {
    std::array<uint32_t, 4> Points = {};
    std::array<double, 4> Weights = {};
};

// The loops of a polygon in points, one after the other, and its triangulation.
struct PolygonTriangulation {
    std::vector<Point3> Points;     // the corners; points where outlines cross are appended
    std::vector<uint32_t> LoopEnds; // index after the last corner of each loop; the outline is first
    std::vector<uint32_t> Indices;  // three per triangle, counter-clockwise about the normal
    std::vector<CrossingPoint> Crossings; // one for each point appended
};

// Fills Indices, and adds to Points and Crossings where outlines cross. The outline turns
// counter-clockwise about normal, the holes either way. Gives false when nothing is left to triangulate
// or the polygon can't be triangulated.
bool TriangulatePolygon(PolygonTriangulation& polygon, Point3 normal);
