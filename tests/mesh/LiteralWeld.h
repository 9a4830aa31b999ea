// Welding by its definition, step by step and slow: the reference for WeldVertices. Shares no code with
// it.
#pragma once

#include "scene/SceneNode.h"

#include <cstdint>
#include <vector>

// Pools with this many vertices or more use the grid, smaller ones the linear scan.
constexpr size_t LiteralGridMinimum = 80;

// The pool and the indices must not be empty.
void WeldLiterally(std::vector<Vertex>& vertices, std::vector<uint32_t>& indices, float tolerance);
