// Welding by a uniform grid of cells over the pool's bounding box.
//
// A vertex is entered in the low corner of the range of cells that its own search covers, and a search
// walks its cells in order, the newest entry of a cell first. Entering a vertex in the cell it lies in,
// or stopping at another match, would change results.
#include "mesh/WeldVertices.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <limits>

namespace {

constexpr int32_t CellsX = 64;
constexpr int32_t CellsY = 8; // buildings are wider than high
constexpr int32_t CellsZ = 64;
constexpr size_t CellCount = size_t{CellsX} * CellsY * CellsZ;
constexpr int32_t None = -1;

// The cells along one axis of the grid.
struct GridAxis {
    float Min = 0;    // of the pool [Units: model's]
    float Scale = 0;  // cells per unit
    float Margin = 0; // twice the tolerance [Units: cells]
    int32_t Cells = 0;
};

// Cells from Low up to but not including High.
struct CellRange {
    int32_t Low = 0;
    int32_t High = 0;
};

// A kept vertex in its cell. Each cell is a chain, newest first.
struct CellEntry {
    int32_t PoolVertex = 0;
    int32_t Next = None;
};

struct WeldGrid {
    GridAxis X;
    GridAxis Y;
    GridAxis Z;
    std::vector<int32_t> CellHeads = std::vector<int32_t>(CellCount, None);
    std::vector<CellEntry> CellEntries;
};

bool WithinTolerance(float a, float b, float tolerance) {
    return std::fabs(a - b) < tolerance;
}

bool Match(const Vertex& a, const Vertex& b, float tolerance) {
    return WithinTolerance(a.Position.X, b.Position.X, tolerance) &&
           WithinTolerance(a.Position.Y, b.Position.Y, tolerance) &&
           WithinTolerance(a.Position.Z, b.Position.Z, tolerance) &&
           WithinTolerance(a.Normal.X, b.Normal.X, tolerance) &&
           WithinTolerance(a.Normal.Y, b.Normal.Y, tolerance) &&
           WithinTolerance(a.Normal.Z, b.Normal.Z, tolerance) && WithinTolerance(a.U, b.U, tolerance) &&
           WithinTolerance(a.V, b.V, tolerance);
}

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

WeldGrid MakeGrid(const std::vector<Vertex>& vertices, float tolerance) {
    BoundingBox box = EmptyBox;
    ComputeBounds(box, vertices.data(), static_cast<int32_t>(vertices.size()));
    WeldGrid grid;
    grid.X = MakeAxis(box.Min.X, box.Max.X, CellsX, tolerance);
    grid.Y = MakeAxis(box.Min.Y, box.Max.Y, CellsY, tolerance);
    grid.Z = MakeAxis(box.Min.Z, box.Max.Z, CellsZ, tolerance);
    return grid;
}

// The cells in which a vertex at this coordinate looks. Empty for a coordinate that gives no number.
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

size_t CellNumber(int32_t x, int32_t y, int32_t z) {
    return (static_cast<size_t>(x) * CellsY + static_cast<size_t>(y)) * CellsZ + static_cast<size_t>(z);
}

// What one vertex searches, per axis.
struct SearchBox {
    CellRange X;
    CellRange Y;
    CellRange Z;
};

// The first kept vertex of the search that matches, as a pool vertex, or None.
int32_t FindMatch(const WeldGrid& grid, const SearchBox& search, const std::vector<Vertex>& pool,
                  const Vertex& vertex, float tolerance) {
    for (int32_t x = search.X.Low; x < search.X.High; ++x) {
        for (int32_t y = search.Y.Low; y < search.Y.High; ++y) {
            for (int32_t z = search.Z.Low; z < search.Z.High; ++z) {
                int32_t number = grid.CellHeads[CellNumber(x, y, z)];
                while (number != None) {
                    const CellEntry& entry = grid.CellEntries[static_cast<size_t>(number)];
                    if (Match(vertex, pool[static_cast<size_t>(entry.PoolVertex)], tolerance)) {
                        return entry.PoolVertex;
                    }
                    number = entry.Next;
                }
            }
        }
    }
    return None;
}

void EnterVertex(WeldGrid& grid, const SearchBox& search, int32_t poolVertex) {
    // The exclusive upper bound can be a low corner only on paper: no coordinate reaches it.
    assert(search.X.Low < CellsX && search.Y.Low < CellsY && search.Z.Low < CellsZ);
    int32_t& head = grid.CellHeads[CellNumber(search.X.Low, search.Y.Low, search.Z.Low)];
    grid.CellEntries.push_back({.PoolVertex = poolVertex, .Next = head});
    head = static_cast<int32_t>(grid.CellEntries.size() - 1);
}

// Puts the kept vertices into the pool and sends the indices through remap, which has one entry per
// former pool vertex.
void FinishWelding(VertexPool& pool, std::vector<uint32_t>& indices, std::vector<Vertex>& kept,
                   const std::vector<int32_t>& remap) {
    for (uint32_t& index : indices) {
        assert(index < remap.size());
        index = static_cast<uint32_t>(remap[index]);
    }
    pool.Vertices = std::move(kept);
}

void WeldByGrid(VertexPool& pool, std::vector<uint32_t>& indices, float tolerance) {
    WeldGrid grid = MakeGrid(pool.Vertices, tolerance);
    std::vector<int32_t> remap(pool.Vertices.size(), None);
    std::vector<Vertex> kept;
    for (size_t i = 0; i < pool.Vertices.size(); ++i) {
        const Vertex& vertex = pool.Vertices[i];
        const SearchBox search = {.X = SearchRange(grid.X, vertex.Position.X),
                                  .Y = SearchRange(grid.Y, vertex.Position.Y),
                                  .Z = SearchRange(grid.Z, vertex.Position.Z)};
        const int32_t match = FindMatch(grid, search, pool.Vertices, vertex, tolerance);
        if (match != None) {
            remap[i] = remap[static_cast<size_t>(match)];
        } else {
            EnterVertex(grid, search, static_cast<int32_t>(i));
            kept.push_back(vertex);
            remap[i] = static_cast<int32_t>(kept.size() - 1);
        }
    }
    FinishWelding(pool, indices, kept, remap);
}

} // namespace

void ComputeBounds(BoundingBox& box, const Vertex* vertices, int32_t count) {
    for (int32_t i = 0; i < count; ++i) {
        ExtendBox(box, vertices[i].Position);
    }
}

void WeldVerticesBruteForce(VertexPool& pool, std::vector<uint32_t>& indices, float tolerance) {
    std::vector<int32_t> remap(pool.Vertices.size(), None);
    std::vector<Vertex> kept;
    for (size_t i = 0; i < pool.Vertices.size(); ++i) {
        const Vertex& vertex = pool.Vertices[i];
        const auto match = std::ranges::find_if(
            kept, [&](const Vertex& other) { return Match(vertex, other, tolerance); });
        remap[i] = static_cast<int32_t>(match - kept.begin());
        if (match == kept.end()) {
            kept.push_back(vertex);
        }
    }
    FinishWelding(pool, indices, kept, remap);
}

void WeldVertices(VertexPool& pool, std::vector<uint32_t>& indices, float tolerance) {
    if (pool.Welded) {
        return;
    }
    pool.Welded = true;
    const auto count = static_cast<int32_t>(pool.Vertices.size());
    if (count == 0 || indices.empty()) {
        return;
    }
    if (count < GridVertexMinimum) {
        WeldVerticesBruteForce(pool, indices, tolerance);
    } else {
        WeldByGrid(pool, indices, tolerance);
    }
}
