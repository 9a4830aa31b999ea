// The shapes that nodes give to their meshes by skins and weights, beside that of the mesh itself.
#pragma once

#include "provider/gltf/meshes/PosedVertices.h"
#include "provider/gltf/nodes/GltfNodes.h"

struct GltfShape {
    uint32_t Mesh = 0;
    GltfPose Pose;
};

// Gives shaped nodes their shapes: shape i is mesh n + i of the tree, where n is the number of meshes of
// the document. Nodes with the same mesh, skin and weights share one. A mesh with a skin moves to a new
// node below the first node of the tree: only its joints place it. Skins that can't be used are left
// out, with a remark.
std::vector<GltfShape> ShapeNodes(GltfDocument& document, GltfNodes& nodes,
                                  std::vector<std::string>& remarks);
