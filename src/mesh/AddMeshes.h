// Splits a welded batch into meshes of bounded size.
#pragma once

#include "scene/SceneNode.h"

#include <cstdint>

// A mesh is closed once it has this many vertices. The last triangle adds at most three to one vertex
// less, so no mesh has more than 99999.
constexpr size_t MeshVertexLimit = 99997;

// Appends a welded batch to the node as meshes, whose arrays are taken from the memory, split between
// triangles at MeshVertexLimit. Vertices are in order of first use by the triangles, in the pool and in
// each mesh; a vertex used on both sides of a split is in both meshes. An empty batch adds nothing. The
// pool's corners are overwritten.
void AddMeshes(SceneNode& node, VertexPool& pool, int32_t materialIndex, MeshMemory& memory);
