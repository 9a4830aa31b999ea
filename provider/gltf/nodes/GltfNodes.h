// The nodes of a glTF document as a tree for the model.
#pragma once

#include "provider/gltf/data/GltfDocument.h"
#include "provider/reading/NodeTree.h"

// What a node says about the shape of its mesh.
struct GltfShapedNode {
    uint32_t Node = 0; // in the tree
    uint32_t Mesh = 0; // has triangles
    uint32_t Skin = NoIndex;
    std::vector<double> Weights; // none: those of the mesh
};

struct GltfNodes {
    ImportedTree Tree;
    std::vector<GltfShapedNode> Shaped;
};

// Fills an empty tree: its first node holds those of the scene, or all without a parent if there are no
// scenes, and node i of the document is node i + 1 of the tree. Names of meshes and their faces are left
// to the caller. Instances that can't be read are left out, with a remark. Returns false, with place and
// reason in error, if a node or the scene can't be used.
bool ReadGltfNodes(GltfDocument& document, const JsonTape& json, GltfNodes& nodes,
                   std::vector<std::string>& remarks, std::string& error);
