// Splits a welded batch into meshes of bounded size.
#pragma once

#include "scene/SceneNode.h"

#include <cstdint>
#include <vector>

// A mesh is closed once it has this many vertices. The last triangle adds at most three to one vertex
// less, so no mesh has more than 99999.
constexpr size_t MeshVertexLimit = 99997;

// Appends the batch to the node as meshes, split between triangles at MeshVertexLimit. Vertices are in
// order of first use by the triangles; a vertex used on both sides of a split is in both meshes. Expects
// three indices per triangle, each a position in the pool. An empty batch adds nothing. If neither a
// split nor another order is needed, the mesh takes over the arrays.
void AddMeshes(SceneNode& node, std::vector<uint32_t> indices, VertexPool pool, int32_t materialIndex);
