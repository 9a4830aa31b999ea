// The index of kept vertices: finds those that may be within the tolerance of a vertex, in expected
// constant time for any pool.
//
// Each of the eight floats is in a cell several tolerances wide. The eight cell numbers are hashed into
// one table with open addressing. Vertices within the tolerance are in the same cell or, for floats near
// a border of their cell, in the next one. Before mixing, the hash is a sum over the floats, so each
// further cell costs one addition. The table identifies a cell by its hash alone: it returns candidates,
// which the caller compares.
//
// Cells have two widths. Wide cells serve nearly all vertices of a model, since few floats are near a
// border. A wide cell takes a few vertices; further ones go to narrow cells. Kept vertices are at least
// a tolerance apart, except for a few that the coarse grid separates, so a narrow cell holds a bounded
// number of them.
#pragma once

#include "scene/SceneNode.h"

#include <array>
#include <bit>
#include <cstdint>

constexpr int32_t NoVertex = -1;

constexpr size_t FloatsPerVertex = sizeof(Vertex) / sizeof(float);

// A float as a fixed-point number, in the same order. [Units: tolerance / 2^ToleranceBits]
using Place = uint64_t;
using VertexPlaces = std::array<Place, FloatsPerVertex>;
constexpr int ToleranceBits = 14;

constexpr float LargestWeldTolerance = 1; // far above any in use

// The largest distance between the places of two floats that differ by less than the tolerance. Rounding
// moves each by up to half a unit.
constexpr Place PlaceReach = (Place{1} << ToleranceBits) + 2;

// The low bits of a place, below its cell number.
constexpr int WideCell = ToleranceBits + 8;   // 256 tolerances
constexpr int NarrowCell = ToleranceBits + 2; // 4 tolerances [Limit: more than 2 * PlaceReach]

// The number of vertices at which a wide cell is full.
constexpr int32_t FullCell = 4;

struct IndexSlot {
    uint32_t Tag = 0;        // hash of the cell
    int32_t Kept = NoVertex; // number of the kept vertex, NoVertex in a free slot
};

struct WeldIndex {
    double Scale = 0;            // places per unit of a float
    LargeArray<IndexSlot> Slots; // a power of two, at least half of them free
    size_t SlotMask = 0;         // maps a number to a slot: Slots.Count - 1
    int TagShift = 0;            // the slots of a cell begin at Tag >> TagShift
    size_t Used = 0;
    LargeArray<IndexSlot> Former; // scratch memory of growing
};

// The end of a search for a cell: the free slot after its vertices, and their number.
struct CellEnd {
    size_t Slot = 0;
    int32_t Count = 0;
};

// Empties the index and gives it at least so many slots, in its memory if they fit. [Limit: 0 <
// tolerance
// <= LargestWeldTolerance]
void Clear(WeldIndex& index, float tolerance, size_t slots);

// Makes room for count more vertices. Slots don't move while these are entered.
void Reserve(WeldIndex& index, size_t count);

// Enters a kept vertex, given its places, the tag of its wide cell and the end of the search for it.
void Enter(WeldIndex& index, const VertexPlaces& places, uint32_t wideTag, const CellEnd& wideEnd,
           int32_t kept);

// The rest runs for every vertex and is inline for speed.

// Added to a double, this leaves the rounded sum in its lower bits and a fixed exponent above them,
// unless the sum is too large. Then the bits are not fixed point, but still the same for equal floats,
// and for numbers so large nothing else is within the tolerance. The fraction of a cell keeps the
// multiples of 0.001, common in models, away from the borders at a tolerance of 1e-5.
constexpr double ToFixedPoint = 0x1.8p52 + 17.5 / 64 * (1 << WideCell);
constexpr int FixedPointBits = 52;
constexpr uint64_t FixedPointExponent = 0x433;

// Computes the places of a vertex. Returns false if a float is not finite or too large for fixed point.
inline bool PlaceVertex(const WeldIndex& index, const Vertex& vertex, VertexPlaces& places) {
    const auto place = [&](float value) {
        return std::bit_cast<Place>(static_cast<double>(value) * index.Scale + ToFixedPoint);
    };
    const Place x = place(vertex.Position.X);
    const Place y = place(vertex.Position.Y);
    const Place z = place(vertex.Position.Z);
    const Place nx = place(vertex.Normal.X);
    const Place ny = place(vertex.Normal.Y);
    const Place nz = place(vertex.Normal.Z);
    const Place u = place(vertex.U);
    const Place v = place(vertex.V);
    places = {x, y, z, nx, ny, nz, u, v};
    const Place inAll = x & y & z & nx & ny & nz & u & v;
    const Place inAny = x | y | z | nx | ny | nz | u | v;
    return inAll >> FixedPointBits == FixedPointExponent &&
           inAny >> FixedPointBits == FixedPointExponent;
}

// Odd numbers without a pattern, one for each float.
constexpr std::array<uint64_t, FloatsPerVertex> CellFactors = {
    0x9E3779B97F4A7C15, 0xC2B2AE3D27D4EB4F, 0xBF58476D1CE4E5B9, 0x94D049BB133111EB,
    0xD6E8FEB86659FD93, 0xA0761D6478BD642F, 0xE7037ED1A0B428DB, 0x8EBC6AF09C88C6E3};

inline uint64_t CellSum(const VertexPlaces& places, int cellBits) {
    const auto term = [&](size_t i) {
        return (places[i] >> cellBits) * CellFactors[i];
    };
    return ((term(0) + term(1)) + (term(2) + term(3))) + ((term(4) + term(5)) + (term(6) + term(7)));
}

// Every bit of the sum affects the tag's upper bits, which select the slot.
inline uint32_t CellTag(uint64_t sum) {
    return static_cast<uint32_t>(((sum ^ (sum >> 32)) * 0xD1B54A32D192ED03) >> 32);
}

// Whether a place within the tolerance can be in the next cell.
inline bool IsNearBorder(Place place, int cellBits) {
    const Place cell = Place{1} << cellBits;
    return ((place - PlaceReach) & (cell - 1)) >= cell - 2 * PlaceReach;
}

inline bool IsNearWideBorder(const VertexPlaces& places) {
    // Bits instead of branches: one of eight floats is near often enough for costly mispredictions.
    const auto near = [&](size_t i) {
        return IsNearBorder(places[i], WideCell) ? 1u : 0u;
    };
    return (near(0) | near(1) | near(2) | near(3) | near(4) | near(5) | near(6) | near(7)) != 0;
}

// Calls visit with each vertex of a cell until it returns true.
template <class Visit> CellEnd VisitCell(const WeldIndex& index, uint32_t tag, Visit visit) {
    CellEnd end = {.Slot = tag >> index.TagShift};
    for (;; end.Slot = (end.Slot + 1) & index.SlotMask) {
        const IndexSlot slot = index.Slots[end.Slot];
        if (slot.Kept == NoVertex) {
            return end;
        }
        if (slot.Tag == tag) {
            ++end.Count;
            if (visit(slot.Kept)) {
                return end;
            }
        }
    }
}

// The sums of the cell of given places and of all neighbours that can hold places within the tolerance.
struct CellsAround {
    std::array<uint64_t, size_t{1} << FloatsPerVertex> Sums;
    size_t Count = 0;
};

inline void FindCellsAround(CellsAround& cells, const VertexPlaces& places, int cellBits) {
    cells.Sums[0] = CellSum(places, cellBits);
    cells.Count = 1;
    for (size_t i = 0; i < FloatsPerVertex; ++i) {
        if (IsNearBorder(places[i], cellBits)) {
            const bool upper = (places[i] >> (cellBits - 1) & 1) != 0;
            const uint64_t step = upper ? CellFactors[i] : uint64_t{0} - CellFactors[i];
            for (size_t j = 0; j < cells.Count; ++j) {
                cells.Sums[cells.Count + j] = cells.Sums[j] + step;
            }
            cells.Count *= 2;
        }
    }
}

// Calls visit with kept vertices, including all within the tolerance of the places.
template <class Visit> void VisitNear(const WeldIndex& index, const VertexPlaces& places, Visit visit) {
    CellsAround cells;
    for (const int cellBits : {WideCell, NarrowCell}) {
        FindCellsAround(cells, places, cellBits);
        bool full = false;
        for (size_t i = 0; i < cells.Count; ++i) {
            full |= VisitCell(index, CellTag(cells.Sums[i]), visit).Count >= FullCell;
        }
        if (!full) {
            return;
        }
    }
}
