// Counting in the scene tree.
#include "scene/SceneNode.h"

int32_t CountTriangles(const SceneNode& node) {
    int32_t total = 0;
    for (const SceneNode* child : node.Children.Elements) {
        total += CountTriangles(*child);
    }
    for (const SceneMesh* mesh : node.Meshes.Elements) {
        total += static_cast<int32_t>(mesh->Indices.size()) / 3;
    }
    return total;
}
