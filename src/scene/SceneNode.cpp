// Filling pools, and counting in the scene tree.
#include "scene/SceneNode.h"

Vertex* AppendTriangles(VertexPool& pool, size_t count) {
    pool.Welded = false;
    const size_t former = pool.Vertices.size();
    pool.Vertices.resize(former + 3 * count);
    return pool.Vertices.data() + former;
}

void AppendPolygon(VertexPool& pool, std::span<const Vertex> corners) {
    if (corners.size() < 3) {
        return;
    }
    Vertex* vertex = AppendTriangles(pool, corners.size() - 2);
    for (size_t i = 1; i + 1 < corners.size(); ++i) {
        *vertex++ = corners[0];
        *vertex++ = corners[i];
        *vertex++ = corners[i + 1];
    }
}

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
