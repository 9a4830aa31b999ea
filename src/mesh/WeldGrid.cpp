// Cell ranges in single precision: each operation is rounded separately, since the borders of the cells
// affect results.
#include "mesh/WeldGrid.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <limits>

namespace {

constexpr int32_t CellsX = 64;
constexpr int32_t CellsY = 8; // buildings are wider than high
constexpr int32_t CellsZ = 64;

GridAxis MakeAxis(float min, float max, int32_t cells, float tolerance) {
    constexpr float smallestExtent = 1.0f; // keeps the scale finite for flat pools
    float extent = max - min;
    if (!(extent > smallestExtent)) {
        extent = smallestExtent;
    }
    const float scale = static_cast<float>(cells) / extent;
    const float margin = scale * tolerance;
    return {.Min = min, .Scale = scale, .Margin = margin + margin, .Cells = cells};
}

// Returns the cells that a vertex at this coordinate searches. Empty if the coordinate has no cell.
CellRange SearchRange(const GridAxis& axis, float coordinate) {
    const float g = axis.Scale * (coordinate - axis.Min);
    constexpr float belowInt = -2147483648.0f;
    constexpr float aboveInt = 2147483648.0f;
    const int32_t cell =
        g >= belowInt && g < aboveInt ? static_cast<int32_t>(g) : std::numeric_limits<int32_t>::min();
    CellRange range = {.Low = cell, .High = cell + 1};
    if (axis.Margin >= g - static_cast<float>(cell)) {
        range.Low = cell - 1;
    }
    if (axis.Margin >= static_cast<float>(cell + 1) - g) {
        range.High = cell + 2;
    }
    return {.Low = std::clamp(range.Low, 0, axis.Cells), .High = std::clamp(range.High, 0, axis.Cells)};
}

bool IsEmpty(const CellRange& range) {
    return range.Low >= range.High;
}

bool Holds(const CellRange& range, int32_t cell) {
    return range.Low <= cell && cell < range.High;
}

} // namespace

void ComputeBounds(BoundingBox& box, const Vertex* vertices, int32_t count) {
    BoundingBox inRegisters = box;
    for (int32_t i = 0; i < count; ++i) {
        ExtendBox(inRegisters, vertices[i].Position);
    }
    box = inRegisters;
}

WeldGrid MakeWeldGrid(std::span<const Vertex> vertices, float tolerance) {
    BoundingBox box = EmptyBox;
    ComputeBounds(box, vertices.data(), static_cast<int32_t>(vertices.size()));
    return {.X = MakeAxis(box.Min.X, box.Max.X, CellsX, tolerance),
            .Y = MakeAxis(box.Min.Y, box.Max.Y, CellsY, tolerance),
            .Z = MakeAxis(box.Min.Z, box.Max.Z, CellsZ, tolerance),
            .Bounded = std::isfinite(box.Max.X - box.Min.X) && std::isfinite(box.Max.Y - box.Min.Y) &&
                       std::isfinite(box.Max.Z - box.Min.Z)};
}

SearchBox SearchBoxOf(const WeldGrid& grid, const Vec3& position) {
    return {.X = SearchRange(grid.X, position.X),
            .Y = SearchRange(grid.Y, position.Y),
            .Z = SearchRange(grid.Z, position.Z)};
}

bool IsEmpty(const SearchBox& box) {
    return IsEmpty(box.X) || IsEmpty(box.Y) || IsEmpty(box.Z);
}

bool Reaches(const SearchBox& search, const SearchBox& entered) {
    return Holds(search.X, entered.X.Low) && Holds(search.Y, entered.Y.Low) &&
           Holds(search.Z, entered.Z.Low);
}

int32_t EntryCell(const SearchBox& box) {
    // Low never equals the exclusive upper bound: no coordinate reaches it.
    assert(box.X.Low < CellsX && box.Y.Low < CellsY && box.Z.Low < CellsZ);
    return (box.X.Low * CellsY + box.Y.Low) * CellsZ + box.Z.Low;
}
