// The instances that EXT_mesh_gpu_instancing makes of the mesh of a node.
#pragma once

#include "provider/gltf/data/GltfDocument.h"
#include "provider/reading/NodeTree.h"

// Reads the instances of the last node of the tree, which has a mesh and is the given value. If they
// can't be read, they are left out, with a remark. Returns false, with place and reason in error, if the
// tree gets too many instances.
bool ReadInstances(GltfDocument& document, const JsonTape& json, uint32_t node, ImportedTree& tree,
                   std::vector<std::string>& remarks, std::string& error);
