// Welding in expected linear time.
//
// The coarse grid determines which kept vertex a vertex is merged with: of the matches entered in a cell
// that its search visits, the one in the lowest cell, and there the newest. But a grid cell can hold any
// number of vertices, so the index of fine cells finds the matches, and the grid only chooses among
// them.
//
// Most vertices of a model have the values of kept ones, which need no choice. The search of a copy
// begins in the cell in which the original was entered. A later vertex in that cell that matches the
// copy would match the original too and would have been merged with it. Only values count: zeros of
// either sign are alike.
//
// So a vertex is welded once, at its first corner, and its further corners follow it if it is kept or
// has the values of a kept one. This does not hold for a vertex that is merged with one of other values:
// a vertex kept in the meantime can win at the next corner. Such corners are searched again, among the
// vertices kept before them.
#include "mesh/WeldVertices.h"

#include "mesh/WeldGrid.h"
#include "mesh/WeldIndex.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cmath>
#include <cstring>

namespace {

// Vertices that are looked up together, so that memory loads overlap with work on others.
constexpr size_t BlockSize = 64;

struct Welding {
    float Tolerance = 0;
    WeldGrid Grid;
    WeldIndex& Index;
    LargeArray<OpenMerge>& OpenMerges;
    Vertex* Kept = nullptr; // at the front of the pool, over vertices already processed
    int32_t KeptCount = 0;
};

// Marks the number of a vertex as one in Welding::OpenMerges.
constexpr uint32_t IsOpen = 0x80000000;

// The state of a vertex during its lookup.
struct Lookup {
    VertexPlaces Places;
    uint32_t Tag = 0;
    bool Matchable = false; // false if always kept and never found by a search
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

bool IsFinite(const Vertex& vertex) {
    const auto floats = std::bit_cast<std::array<float, FloatsPerVertex>>(vertex);
    return std::ranges::all_of(floats, [](float value) { return std::isfinite(value); });
}

bool SameBits(const Vertex& a, const Vertex& b) {
    const auto word = [](const Vertex& vertex, size_t i) {
        uint64_t bits = 0;
        std::memcpy(&bits, reinterpret_cast<const char*>(&vertex) + i * sizeof bits, sizeof bits);
        return bits;
    };
    return ((word(a, 0) ^ word(b, 0)) | (word(a, 1) ^ word(b, 1)) | (word(a, 2) ^ word(b, 2)) |
            (word(a, 3) ^ word(b, 3))) == 0;
}

// Whether the vertices have equal values, which differ from equal bits in the signs of zeros. Adding
// zero makes them positive.
bool SameValues(const Vertex& a, const Vertex& b) {
    const auto positive = [](const Vertex& v) {
        return Vertex{.Position = {v.Position.X + 0.0f, v.Position.Y + 0.0f, v.Position.Z + 0.0f},
                      .Normal = {v.Normal.X + 0.0f, v.Normal.Y + 0.0f, v.Normal.Z + 0.0f},
                      .U = v.U + 0.0f,
                      .V = v.V + 0.0f};
    };
    return SameBits(positive(a), positive(b));
}

// A vertex with a float that is not finite matches nothing. A vertex whose range is empty, because an
// extent overflows, searches nothing. Nor is it found: such positions are so large that others are
// either equal or further away than the tolerance.
void Prepare(const Welding& welding, const Vertex& vertex, Lookup& lookup) {
    const bool usual = PlaceVertex(welding.Index, vertex, lookup.Places);
    lookup.Matchable = (usual || IsFinite(vertex)) &&
                       (welding.Grid.Bounded || !IsEmpty(SearchBoxOf(welding.Grid, vertex.Position)));
    lookup.Tag = CellTag(CellSum(lookup.Places, WideCell));
}

const IndexSlot& FirstSlot(const Welding& welding, const Lookup& lookup) {
    return welding.Index.Slots[lookup.Tag >> welding.Index.TagShift];
}

// Returns the newest match in the lowest cell of the grid, or NoVertex, among the vertices kept before
// the limit. Not inlined, since it would slow down the main loop.
[[gnu::noinline]] int32_t FindMatch(const Welding& welding, const Vertex& vertex,
                                    const VertexPlaces& places, int32_t limit) {
    const SearchBox search = SearchBoxOf(welding.Grid, vertex.Position);
    int32_t best = NoVertex;
    int32_t bestCell = 0;
    VisitNear(welding.Index, places, [&](int32_t kept) {
        const Vertex& other = welding.Kept[kept];
        if (kept < limit && Match(vertex, other, welding.Tolerance)) {
            const SearchBox entered = SearchBoxOf(welding.Grid, other.Position);
            const int32_t cell = EntryCell(entered);
            const bool better = best == NoVertex || cell < bestCell || (cell == bestCell && kept > best);
            if (better && Reaches(search, entered)) {
                best = kept;
                bestCell = cell;
            }
        }
        return false;
    });
    return best;
}

// Returns the number of the kept vertex that replaces this one, or its own number if it is kept; with
// IsOpen, that of an open merge.
uint32_t Resolve(Welding& welding, const Vertex& vertex, const Lookup& lookup) {
    if (lookup.Matchable) {
        int32_t found = NoVertex;
        const CellEnd end = VisitCell(welding.Index, lookup.Tag, [&](int32_t kept) {
            const Vertex& other = welding.Kept[kept];
            const bool same = SameBits(vertex, other) || SameValues(vertex, other);
            found = same ? kept : NoVertex;
            return same;
        });
        if (found != NoVertex) {
            return static_cast<uint32_t>(found);
        }
        if (end.Count > 0 || IsNearWideBorder(lookup.Places)) {
            found = FindMatch(welding, vertex, lookup.Places, welding.KeptCount);
        }
        if (found != NoVertex) {
            const auto kept = static_cast<uint32_t>(found);
            if (SameValues(vertex, welding.Kept[kept])) {
                return kept; // in a narrow cell
            }
            const size_t number = welding.OpenMerges.Count;
            welding.OpenMerges.Push({.Merged = vertex, .Kept = kept});
            return static_cast<uint32_t>(number) | IsOpen;
        }
        Enter(welding.Index, lookup.Places, lookup.Tag, end, welding.KeptCount);
    }
    welding.Kept[welding.KeptCount] = vertex;
    return static_cast<uint32_t>(welding.KeptCount++);
}

// Moves the kept vertices to the front. Writes the new number of each vertex.
void WeldByIndex(Welding& welding, std::span<const Vertex> vertices, uint32_t* numbers) {
    std::array<Lookup, BlockSize> lookups;
    for (size_t begin = 0; begin < vertices.size(); begin += BlockSize) {
        const Vertex* block = vertices.data() + begin;
        const size_t count = std::min(BlockSize, vertices.size() - begin);
        Reserve(welding.Index, count);
        for (size_t i = 0; i < count; ++i) {
            Prepare(welding, block[i], lookups[i]);
            __builtin_prefetch(&FirstSlot(welding, lookups[i]));
        }
        for (size_t i = 0; i < count; ++i) {
            const IndexSlot& slot = FirstSlot(welding, lookups[i]);
            const bool likely = slot.Tag == lookups[i].Tag && slot.Kept != NoVertex;
            __builtin_prefetch(&welding.Kept[likely ? slot.Kept : 0]);
        }
        for (size_t i = 0; i < count; ++i) {
            numbers[begin + i] = Resolve(welding, block[i], lookups[i]);
        }
    }
}

// Replaces the vertices of the corners by their numbers.
void MapCorners(const Welding& welding, LargeArray<uint32_t>& corners, const uint32_t* numbers) {
    if (welding.OpenMerges.Count == 0) {
        for (uint32_t& corner : corners) {
            corner = numbers[corner];
        }
        return;
    }
    uint32_t next = 0; // the vertex that is used next for the first time
    uint32_t kept = 0; // vertices kept so far
    for (uint32_t& corner : corners) {
        const uint32_t number = numbers[corner];
        const bool isFirst = corner == next;
        next += isFirst ? 1 : 0;
        corner = number;
        if ((number & IsOpen) != 0) {
            const OpenMerge& merge = welding.OpenMerges[number & ~IsOpen];
            corner = merge.Kept;
            if (!isFirst) {
                VertexPlaces places;
                PlaceVertex(welding.Index, merge.Merged, places);
                corner = static_cast<uint32_t>(
                    FindMatch(welding, merge.Merged, places, static_cast<int32_t>(kept)));
            }
        } else if (number == kept) {
            ++kept;
        }
    }
}

// Gives each corner a vertex of its own.
void SeparateCorners(VertexPool& pool) {
    LargeArray<Vertex> vertices;
    vertices.Resize(pool.Corners.Count);
    for (size_t i = 0; i < vertices.Count; ++i) {
        vertices[i] = pool.Vertices[pool.Corners[i]];
        pool.Corners[i] = static_cast<uint32_t>(i);
    }
    pool.Vertices = std::move(vertices);
}

void WeldWithGrid(VertexPool& pool, WeldScratch& scratch, float tolerance) {
    Welding welding = {.Tolerance = tolerance,
                       .Grid = MakeWeldGrid(pool.Vertices, tolerance),
                       .Index = scratch.Index,
                       .OpenMerges = scratch.OpenMerges};
    if (!welding.Grid.Bounded) {
        // Vertices whose search is empty equal nothing, not even themselves.
        SeparateCorners(pool);
    }
    // Models keep between a quarter and all of these vertices.
    Clear(scratch.Index, tolerance, pool.Vertices.Count);
    scratch.OpenMerges.Clear();
    scratch.Numbers.Resize(pool.Vertices.Count);
    welding.Kept = pool.Vertices.begin();
    WeldByIndex(welding, pool.Vertices, scratch.Numbers.begin());
    MapCorners(welding, pool.Corners, scratch.Numbers.begin());
    pool.Vertices.Resize(static_cast<size_t>(welding.KeptCount));
}

} // namespace

void WeldVerticesBruteForce(VertexPool& pool, WeldScratch& scratch, float tolerance) {
    // The first match of a vertex stays the first, so its further corners follow it.
    scratch.Numbers.Resize(pool.Vertices.Count);
    Vertex* const begin = pool.Vertices.begin();
    Vertex* end = begin;
    for (size_t i = 0; i < pool.Vertices.Count; ++i) {
        const Vertex vertex = pool.Vertices[i];
        const auto* const match = std::find_if(
            begin, end, [&](const Vertex& other) { return Match(vertex, other, tolerance); });
        scratch.Numbers[i] = static_cast<uint32_t>(match - begin);
        if (match == end) {
            *end++ = vertex;
        }
    }
    for (uint32_t& corner : pool.Corners) {
        assert(corner < scratch.Numbers.Count);
        corner = scratch.Numbers[corner];
    }
    pool.Vertices.Resize(static_cast<size_t>(end - begin));
}

void WeldVertices(VertexPool& pool, WeldScratch& scratch, float tolerance) {
    if (pool.Welded) {
        return;
    }
    pool.Welded = true;
    if (pool.Corners.Count == 0) {
        return;
    }
    if (pool.Corners.Count < GridCornerMinimum) {
        WeldVerticesBruteForce(pool, scratch, tolerance);
    } else {
        WeldWithGrid(pool, scratch, tolerance);
    }
    scratch.Index.Slots.ReleaseLarge();
    scratch.Numbers.ReleaseLarge();
    scratch.OpenMerges.ReleaseLarge();
}
