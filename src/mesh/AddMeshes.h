// Splitting: a welded batch becomes meshes of bounded size.
#pragma once

#include "scene/SceneNode.h"

#include <cstdint>
#include <vector>

// A mesh is closed once it holds this many vertices. A triangle adds at most three to one vertex less,
// so no mesh has more than 99999.
constexpr size_t MeshVertexLimit = 99997;

// Appends the batch to the node's meshes, cut between triangles where the limit is met. Vertices stand
// in order of first use by the triangles; one that is used on both sides of a cut is in both meshes.
// Expects three indices per triangle, each a position in the pool; an empty batch adds nothing. What is
// moved into the call becomes the mesh itself where no cut and no other order is needed.
void AddMeshes(SceneNode& node, std::vector<uint32_t> indices, VertexPool pool, int32_t materialIndex);
