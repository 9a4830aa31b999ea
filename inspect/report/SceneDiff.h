// The differences of two scenes, by node, mesh and field.
#pragma once

#include "inspect/stored/StoredScene.h"

#include <string>

struct SceneDifferences {
    // Each field of a node or a mesh, each field of a vertex and each triangle counts as one.
    uint64_t Count = 0;
    std::u16string First; // As text: place, field, both values. Empty without differences.
};

// Compares bit by bit. Nodes, meshes, vertices and triangles are matched by position. If one side has
// more of them, the number is the difference and the rest is not compared. The order is that of the
// first scene's file.
SceneDifferences CompareScenes(const StoredScene& scene, const StoredScene& other);
