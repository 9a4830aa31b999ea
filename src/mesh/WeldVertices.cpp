// Welding in expected linear time.
//
// The coarse grid determines which kept vertex a vertex is merged with: of the matches entered in a cell
// that its search visits, the one in the lowest cell, and there the newest. But a grid cell can hold any
// number of vertices, so the index of fine cells finds the matches, and the grid only chooses among
// them.
//
// Most vertices of a model are copies of kept ones, which need no choice. The search of a copy begins in
// the cell in which the original was entered. A later vertex in that cell that matches the copy would
// match the original too and would have been merged with it. This does not hold for copies of merged
// vertices.
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
    WeldIndex Index;
    Vertex* Kept = nullptr; // at the front of the pool, over vertices already processed
    int32_t KeptCount = 0;
};

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

// Returns the newest match in the lowest cell of the grid, or NoVertex. Not inlined, since it would slow
// down the main loop.
[[gnu::noinline]] int32_t FindMatch(const Welding& welding, const Vertex& vertex,
                                    const VertexPlaces& places) {
    const SearchBox search = SearchBoxOf(welding.Grid, vertex.Position);
    int32_t best = NoVertex;
    int32_t bestCell = 0;
    VisitNear(welding.Index, places, [&](int32_t kept) {
        const Vertex& other = welding.Kept[kept];
        if (Match(vertex, other, welding.Tolerance)) {
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

// Returns the number of the kept vertex that replaces this one, or its own number if it is kept.
int32_t Resolve(Welding& welding, const Vertex& vertex, const Lookup& lookup) {
    if (lookup.Matchable) {
        int32_t found = NoVertex;
        const CellEnd end = VisitCell(welding.Index, lookup.Tag, [&](int32_t kept) {
            const bool same = SameBits(vertex, welding.Kept[kept]);
            found = same ? kept : NoVertex;
            return same;
        });
        if (found == NoVertex && (end.Count > 0 || IsNearWideBorder(lookup.Places))) {
            found = FindMatch(welding, vertex, lookup.Places);
        }
        if (found != NoVertex) {
            return found;
        }
        Enter(welding.Index, lookup.Places, lookup.Tag, end, welding.KeptCount);
    }
    welding.Kept[welding.KeptCount] = vertex;
    return welding.KeptCount++;
}

// Moves the kept vertices to the front and returns their count. Writes the new number of each vertex.
int32_t WeldByIndex(std::vector<Vertex>& vertices, uint32_t* numbers, float tolerance) {
    // Models keep between a sixth and two thirds of their vertices.
    const size_t slots = vertices.size() / 2;
    Welding welding = {.Tolerance = tolerance,
                       .Grid = MakeWeldGrid(vertices, tolerance),
                       .Index = MakeWeldIndex(tolerance, slots),
                       .Kept = vertices.data(),
                       .KeptCount = 0};
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
            numbers[begin + i] = static_cast<uint32_t>(Resolve(welding, block[i], lookups[i]));
        }
    }
    return welding.KeptCount;
}

// The same by comparison with every kept vertex.
int32_t WeldOneByOne(std::vector<Vertex>& vertices, uint32_t* numbers, float tolerance) {
    const auto begin = vertices.begin();
    auto end = begin;
    for (size_t i = 0; i < vertices.size(); ++i) {
        const Vertex vertex = vertices[i];
        const auto match = std::find_if(
            begin, end, [&](const Vertex& other) { return Match(vertex, other, tolerance); });
        numbers[i] = static_cast<uint32_t>(match - begin);
        if (match == end) {
            *end++ = vertex;
        }
    }
    return static_cast<int32_t>(end - begin);
}

bool CountUp(const std::vector<uint32_t>& indices) {
    uint32_t expected = 0;
    return std::ranges::all_of(indices, [&](uint32_t index) { return index == expected++; });
}

template <class Weld>
void WeldPool(VertexPool& pool, std::vector<uint32_t>& indices, float tolerance, Weld weld) {
    std::vector<Vertex>& vertices = pool.Vertices;
    int32_t kept = 0;
    if (indices.size() == vertices.size() && CountUp(indices)) {
        // The usual case: the new numbers are the new indices.
        kept = weld(vertices, indices.data(), tolerance);
    } else {
        std::vector<uint32_t> numbers(vertices.size());
        kept = weld(vertices, numbers.data(), tolerance);
        for (uint32_t& index : indices) {
            assert(index < numbers.size());
            index = numbers[index];
        }
    }
    vertices.resize(static_cast<size_t>(kept));
}

} // namespace

void WeldVerticesBruteForce(VertexPool& pool, std::vector<uint32_t>& indices, float tolerance) {
    WeldPool(pool, indices, tolerance, WeldOneByOne);
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
        WeldPool(pool, indices, tolerance, WeldByIndex);
    }
}
