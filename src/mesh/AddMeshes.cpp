// Mesh splitting, in triangle order.
#include "mesh/AddMeshes.h"

#include <cassert>

void AddMeshes(SceneNode& node, const std::vector<uint32_t>& indices, const VertexPool& pool,
               int32_t materialIndex) {
    assert(indices.size() % 3 == 0);
    if (indices.empty() || pool.Vertices.empty()) {
        return;
    }
    constexpr int32_t notInChunk = -1;
    std::vector<int32_t> remap(pool.Vertices.size());
    auto chunk = std::make_unique<SceneMesh>();
    for (size_t k = 0; k < indices.size(); k += 3) {
        if (chunk->Vertices.empty()) {
            remap.assign(pool.Vertices.size(), notInChunk);
        }
        for (size_t corner = k; corner < k + 3; ++corner) {
            const uint32_t p = indices[corner];
            assert(p < pool.Vertices.size());
            if (remap[p] == notInChunk) {
                chunk->Vertices.push_back(pool.Vertices[p]);
                remap[p] = static_cast<int32_t>(chunk->Vertices.size() - 1);
            }
            chunk->Indices.push_back(static_cast<uint32_t>(remap[p]));
        }
        if (chunk->Vertices.size() >= MeshVertexLimit || k + 3 == indices.size()) {
            chunk->MaterialIndex = materialIndex;
            node.Meshes.Append(std::move(chunk));
            chunk = std::make_unique<SceneMesh>();
        }
    }
}
