// Divides triangulations into parts that each face one side. Inline, for positions of any kind: at is
// called with the number of a vertex and returns its position.
//
// A triangulation that faces all directions is split by the axis to which each triangle points most:
// simple, and at most six parts.
#pragma once

#include "platform/LargeArray.h"
#include "provider/model/Vector.h"

#include <array>
#include <cmath>
#include <numeric>
#include <span>

// Cosine of the angle between a triangle's normal and the face's. Triangles closer to edge-on could
// change sides when the coordinates are rounded.
constexpr double SmallestTurn = 1e-3;

constexpr size_t AxisCount = 6;
constexpr std::array<Point3, AxisCount> Axes = {Point3{1, 0, 0},  Point3{-1, 0, 0}, Point3{0, 1, 0},
                                                Point3{0, -1, 0}, Point3{0, 0, 1},  Point3{0, 0, -1}};

// Its length is twice the triangle's area.
template <class At> Point3 NormalOfTriangle(At at, const uint32_t* corners) {
    const Point3 a = at(corners[0]);
    const Point3 b = at(corners[1]);
    const Point3 c = at(corners[2]);
    return Cross(b - a, c - a);
}

// The common normal of all triangles. Returns false if some don't face its side.
template <class At> bool FindCommonNormal(At at, std::span<const uint32_t> corners, Point3& normal) {
    Point3 sum;
    for (size_t i = 0; i < corners.size(); i += 3) {
        sum = sum + NormalOfTriangle(at, &corners[i]);
    }
    if (!MakeUnit(sum, normal)) {
        return false;
    }
    for (size_t i = 0; i < corners.size(); i += 3) {
        const Point3 own = NormalOfTriangle(at, &corners[i]);
        if (Dot(own, normal) < SmallestTurn * Length(own)) {
            return false;
        }
    }
    return true;
}

inline size_t AxisOf(Point3 normal) {
    const std::array<double, AxisCount / 2> parts = {normal.X, normal.Y, normal.Z};
    size_t best = 0;
    for (size_t i = 1; i < parts.size(); ++i) {
        best = std::abs(parts[i]) > std::abs(parts[best]) ? i : best;
    }
    return 2 * best + (parts[best] < 0.0 ? 1 : 0);
}

// The triangles in the order of their axes.
struct AxisOrder {
    LargeArray<uint32_t> Triangles;
    std::array<size_t, AxisCount + 1> Ends = {}; // where those of each axis begin, then the end
    LargeArray<uint8_t> AxisOfEach;

    std::span<const uint32_t> Part(size_t axis) const {
        return std::span<const uint32_t>(Triangles).subspan(Ends[axis], Ends[axis + 1] - Ends[axis]);
    }
};

// A triangle without area goes with the one before it, the first with the given normal.
template <class At>
void SortByAxis(At at, std::span<const uint32_t> corners, Point3 normal, AxisOrder& order) {
    const size_t count = corners.size() / 3;
    order.AxisOfEach.Resize(count);
    order.Triangles.Resize(count);
    order.Ends = {};
    size_t axis = AxisOf(normal);
    for (size_t triangle = 0; triangle < count; ++triangle) {
        const Point3 own = NormalOfTriangle(at, &corners[3 * triangle]);
        axis = Length(own) > 0.0 ? AxisOf(own) : axis;
        order.AxisOfEach[triangle] = static_cast<uint8_t>(axis);
        ++order.Ends[axis + 1];
    }
    std::partial_sum(order.Ends.begin(), order.Ends.end(), order.Ends.begin());
    std::array<size_t, AxisCount + 1> places = order.Ends;
    for (size_t triangle = 0; triangle < count; ++triangle) {
        order.Triangles[places[order.AxisOfEach[triangle]]++] = static_cast<uint32_t>(triangle);
    }
}
