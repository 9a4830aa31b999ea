// The coarse grid that decides which of several matches a vertex is merged with.
//
// 64 x 8 x 64 cells lie over the pool's bounding box. A vertex searches a range of cells around its
// position, in the order of their numbers, and is entered, if it is kept, in the first cell of its own
// range. Entering it in the cell it lies in would change results.
#pragma once

#include "scene/SceneNode.h"

#include <cstdint>

// The cells along one axis of the grid.
struct GridAxis {
    float Min = 0;    // of the pool [Units: model's]
    float Scale = 0;  // cells per unit
    float Margin = 0; // twice the tolerance [Units: cells]
    int32_t Cells = 0;
};

struct WeldGrid {
    GridAxis X;
    GridAxis Y;
    GridAxis Z;
    bool Bounded = true; // no extent overflows: every finite position has a range that is not empty
};

// Cells from Low up to but not including High.
struct CellRange {
    int32_t Low = 0;
    int32_t High = 0;
};

// What one position searches, per axis. Empty if a range is.
struct SearchBox {
    CellRange X;
    CellRange Y;
    CellRange Z;
};

// Takes the positions of count vertices into the box.
void ComputeBounds(BoundingBox& box, const Vertex* vertices, int32_t count);

WeldGrid MakeWeldGrid(const std::vector<Vertex>& vertices, float tolerance);

SearchBox SearchBoxOf(const WeldGrid& grid, const Vec3& position);

bool IsEmpty(const SearchBox& box);

// Whether a search of this box comes by the cell in which a vertex with the entered box was entered.
bool Reaches(const SearchBox& search, const SearchBox& entered);

// The number of the cell in which a vertex with this box, which is not empty, is entered.
int32_t EntryCell(const SearchBox& box);
