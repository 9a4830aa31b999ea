// The coarse grid, which decides which of several matches a vertex is merged with.
//
// The grid divides the pool's bounding box into 64 x 8 x 64 cells. A vertex searches a range of cells
// around its position, in the order of their numbers. If it is kept, it is entered in the first cell of
// its range. Entering it in the cell that contains it would change results.
#pragma once

#include "scene/SceneNode.h"

#include <cstdint>
#include <span>

// The cells along one axis of the grid.
struct GridAxis {
    float Min = 0;    // of the pool [Units: model units]
    float Scale = 0;  // cells per unit
    float Margin = 0; // twice the tolerance [Units: cells]
    int32_t Cells = 0;
};

struct WeldGrid {
    GridAxis X;
    GridAxis Y;
    GridAxis Z;
    bool Bounded = true; // no extent overflows: no finite position has an empty range
};

// Cells from Low up to but not including High.
struct CellRange {
    int32_t Low = 0;
    int32_t High = 0;
};

// The cells that one position searches, per axis. Empty if a range is.
struct SearchBox {
    CellRange X;
    CellRange Y;
    CellRange Z;
};

// Extends the box by the positions of count vertices.
void ComputeBounds(BoundingBox& box, const Vertex* vertices, int32_t count);

WeldGrid MakeWeldGrid(std::span<const Vertex> vertices, float tolerance);

SearchBox SearchBoxOf(const WeldGrid& grid, const Vec3& position);

bool IsEmpty(const SearchBox& box);

// Whether a search of this box visits the cell in which a vertex with the entered box was entered.
bool Reaches(const SearchBox& search, const SearchBox& entered);

// Returns the number of the cell in which a vertex with this non-empty box is entered.
int32_t EntryCell(const SearchBox& box);
