// Fills vertex pools and counts triangles.
#include "scene/SceneNode.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

// The vertex count of a pool, and all counts derived from it, are 32-bit signed numbers.
constexpr size_t MaxPoolVertices = std::numeric_limits<int32_t>::max();

Vertex* AppendTriangles(VertexPool& pool, size_t count) {
    if (count > (MaxPoolVertices - pool.Vertices.size()) / 3) {
        throw std::length_error("too many triangles of one material in one list");
    }
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
    int64_t total = 0;
    for (const SceneNode* child : node.Children.Elements) {
        total += CountTriangles(*child);
    }
    for (const SceneMesh* mesh : node.Meshes.Elements) {
        total += static_cast<int64_t>(mesh->Indices.size() / 3);
    }
    return static_cast<int32_t>(std::min<int64_t>(total, std::numeric_limits<int32_t>::max()));
}
