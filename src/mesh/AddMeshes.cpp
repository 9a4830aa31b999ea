// Mesh splitting, in triangle order.
#include "mesh/AddMeshes.h"

#include <algorithm>
#include <cassert>

namespace {

constexpr uint32_t NotInChunk = 0xFFFFFFFF;

// Whether all vertices are used and already in order of first use.
bool IsInOrderOfUse(const std::vector<uint32_t>& indices, size_t vertexCount) {
    uint32_t next = 0;
    const bool ascends = std::ranges::all_of(indices, [&next](uint32_t index) {
        next += index == next ? 1 : 0;
        return index < next;
    });
    return ascends && next == vertexCount;
}

// Appends a mesh whose arrays have no spare capacity.
void AppendMesh(SceneNode& node, std::vector<uint32_t> indices, std::vector<Vertex> vertices,
                int32_t materialIndex) {
    SceneMesh& mesh = node.Meshes.Append(std::make_unique<SceneMesh>());
    mesh.Indices = std::move(indices);
    mesh.Vertices = std::move(vertices);
    mesh.MaterialIndex = materialIndex;
    mesh.Vertices.shrink_to_fit();
}

} // namespace

void AddMeshes(SceneNode& node, std::vector<uint32_t> indices, VertexPool pool, int32_t materialIndex) {
    assert(indices.size() % 3 == 0);
    if (indices.empty() || pool.Vertices.empty()) {
        return;
    }
    if (pool.Vertices.size() < MeshVertexLimit && IsInOrderOfUse(indices, pool.Vertices.size())) {
        AppendMesh(node, std::move(indices), std::move(pool.Vertices), materialIndex);
        return;
    }
    pool.Vertices.shrink_to_fit(); // most of the capacity is unused after welding
    std::vector<uint32_t> remap(pool.Vertices.size(), NotInChunk);
    std::vector<uint32_t> chunkIndices;
    std::vector<Vertex> chunkVertices;
    size_t begin = 0; // of the chunk, in the indices
    for (size_t end = 3; end <= indices.size(); end += 3) {
        for (size_t corner = end - 3; corner < end; ++corner) {
            const uint32_t p = indices[corner];
            assert(p < pool.Vertices.size());
            if (remap[p] == NotInChunk) {
                remap[p] = static_cast<uint32_t>(chunkVertices.size());
                chunkVertices.push_back(pool.Vertices[p]);
            }
            chunkIndices.push_back(remap[p]);
        }
        if (chunkVertices.size() >= MeshVertexLimit || end == indices.size()) {
            AppendMesh(node, chunkIndices, chunkVertices, materialIndex);
            chunkIndices.clear();
            chunkVertices.clear();
            // Reset only the entries of this chunk: a whole pass for each chunk would be slow.
            for (; begin < end; ++begin) {
                remap[indices[begin]] = NotInChunk;
            }
        }
    }
}
