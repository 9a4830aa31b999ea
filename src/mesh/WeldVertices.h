// Welding: merges vertices that agree in all eight floats.
#pragma once

#include "mesh/WeldIndex.h"
#include "scene/SceneNode.h"

#include <cstdint>

// Pools with fewer corners are compared one by one; in others a grid chooses among matches.
constexpr int32_t GridCornerMinimum = 80;

// A vertex that is merged with a kept one of other values. A kept one that comes later can suit the
// further corners of this vertex better.
struct OpenMerge {
    Vertex Merged;
    uint32_t Kept = 0; // for its first corner
};

// Memory that one welding leaves to the next.
struct WeldScratch {
    WeldIndex Index;
    LargeArray<uint32_t> Numbers;
    LargeArray<OpenMerge> OpenMerges;
};

// Welds the pool as if each corner had a vertex of its own, in the order of the corners: each is merged
// with an earlier kept one that differs by less than the tolerance in every float, if the search finds
// one. The pool keeps the first vertex of each group, in order of occurrence, and its corners get the
// new numbers; no triangle is dropped. Does nothing if the pool is already welded. Which of several
// matches wins is defined exactly. Time is proportional to the pool. [Limit: 0 < tolerance <=
// LargestWeldTolerance in mesh/WeldIndex.h]
void WeldVertices(VertexPool& pool, WeldScratch& scratch, float tolerance);

// The same by comparison with every kept vertex, oldest first. If a vertex matches several kept ones,
// the result can differ from the grid's.
void WeldVerticesBruteForce(VertexPool& pool, WeldScratch& scratch, float tolerance);
