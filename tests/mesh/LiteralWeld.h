// Welding as it is defined, step by step and however slow: what results of WeldVertices are measured by.
// Shares no code with it.
#pragma once

#include "scene/SceneNode.h"

#include <cstdint>
#include <vector>

// From this many vertices on a pool is walked by the grid, below one by one.
constexpr size_t LiteralGridMinimum = 80;

// Expects a pool and indices that are not empty.
void WeldLiterally(std::vector<Vertex>& vertices, std::vector<uint32_t>& indices, float tolerance);
