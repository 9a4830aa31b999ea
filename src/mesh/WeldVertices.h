// Welding: merges vertices that agree in all eight floats.
#pragma once

#include "scene/SceneNode.h"

#include <cstdint>
#include <vector>

// Smaller pools are compared one by one; in others a grid chooses among matches.
constexpr int32_t GridVertexMinimum = 80;

// Merges each vertex of the pool with an earlier kept one that differs by less than the tolerance in
// every float, if the search finds one. The pool keeps the first vertex of each group, in order of
// occurrence. The indices, which must be positions in the pool, are updated; no triangle is dropped.
// Does nothing if the pool is already welded. Which of several matches wins is defined exactly. Time is
// proportional to the pool. [Limit: 0 < tolerance <= LargestWeldTolerance in mesh/WeldIndex.h]
void WeldVertices(VertexPool& pool, std::vector<uint32_t>& indices, float tolerance);

// The same by comparison with every kept vertex, oldest first. If a vertex matches several kept ones,
// the result can differ from the grid's. Expects a non-empty pool.
void WeldVerticesBruteForce(VertexPool& pool, std::vector<uint32_t>& indices, float tolerance);
