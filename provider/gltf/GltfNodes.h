// The nodes of a glTF document as a tree for the model.
#pragma once

#include "provider/gltf/data/GltfDocument.h"
#include "provider/reading/NodeTree.h"

// Fills an empty tree: its first node holds those of the scene, or all without a parent if there are no
// scenes, and node i of the document is node i + 1 of the tree. Names of meshes and their faces are left
// to the caller. Returns false, with place and reason in error, if a node or the scene can't be used.
bool ReadGltfNodes(const GltfDocument& document, const JsonTape& json, ImportedTree& tree,
                   std::string& error);
