// Welding: vertices that agree in all eight floats become one.
#pragma once

#include "scene/SceneNode.h"

#include <cstdint>
#include <vector>

// Pools of fewer vertices are compared one by one; for the others a grid chooses among matches.
constexpr int32_t GridVertexMinimum = 80;

// Merges each vertex of the pool with an earlier one that was kept and differs by less than the
// tolerance in every float, if the search meets one. The pool keeps the first vertex of each group, in
// order of occurrence; the indices, which have to be positions in the pool, are changed to match, and no
// triangle is dropped. Does nothing on a pool that is welded. Exact in its course: which of several
// matches wins is fixed. Takes time in proportion to the pool. [Limit: tolerance above 0 and not above
// LargestWeldTolerance of mesh/WeldIndex.h]
void WeldVertices(VertexPool& pool, std::vector<uint32_t>& indices, float tolerance);

// The same by comparing with every kept vertex, the oldest first. Where a vertex matches several kept
// ones the outcome can differ from the grid's. Expects a pool that is not empty.
void WeldVerticesBruteForce(VertexPool& pool, std::vector<uint32_t>& indices, float tolerance);
