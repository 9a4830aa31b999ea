// Mesh splitting, in triangle order.
#include "mesh/AddMeshes.h"

#include <algorithm>
#include <cassert>

namespace {

// A vertex that is not in the present mesh.
constexpr uint32_t NotInMesh = 0xFFFFFFFF;

// The most vertices of a mesh: the last triangle adds three to one less than the limit.
constexpr size_t MostVertices = MeshVertexLimit - 1 + 3;

void AppendMesh(SceneNode& node, std::span<uint32_t> indices, std::span<Vertex> vertices,
                int32_t materialIndex) {
    SceneMesh& mesh = node.Meshes.Append(std::make_unique<SceneMesh>());
    mesh.Indices = indices;
    mesh.Vertices = vertices;
    mesh.MaterialIndex = materialIndex;
}

// Appends the mesh of the triangles from begin on and returns the first corner that is not in it.
// Replaces its corners by their indices in the mesh. numbers is NotInMesh for each vertex, before and
// after.
size_t AppendPart(SceneNode& node, VertexPool& pool, size_t begin, LargeArray<uint32_t>& numbers,
                  int32_t materialIndex, MeshMemory& memory) {
    const size_t most = std::min(MostVertices, pool.Vertices.Count);
    std::byte* const bytes = TakeBytes(memory, most * sizeof(Vertex));
    auto* const vertices = reinterpret_cast<Vertex*>(bytes);
    LargeArray<uint32_t> used; // the vertices of the mesh, by their index in it
    used.Resize(most);
    uint32_t count = 0;
    size_t end = begin;
    while (end < pool.Corners.Count && count < MeshVertexLimit) {
        for (const size_t stop = end + 3; end < stop; ++end) {
            uint32_t& corner = pool.Corners[end];
            assert(corner < pool.Vertices.Count);
            uint32_t& number = numbers[corner];
            if (number == NotInMesh) {
                number = count;
                used[count] = corner;
                vertices[count++] = pool.Vertices[corner];
            }
            corner = number;
        }
    }
    // Only the entries of this mesh: a whole pass for each would be slow.
    for (uint32_t i = 0; i < count; ++i) {
        numbers[used[i]] = NotInMesh;
    }
    ReturnBytes(memory, bytes, count * sizeof(Vertex));
    const std::span<const uint32_t> indices(&pool.Corners[begin], end - begin);
    AppendMesh(node, CopyInto(memory, indices), {vertices, count}, materialIndex);
    return end;
}

} // namespace

void AddMeshes(SceneNode& node, VertexPool& pool, int32_t materialIndex, MeshMemory& memory) {
    assert(pool.Corners.Count % 3 == 0);
    if (pool.Corners.Count == 0 || pool.Vertices.Count == 0) {
        return;
    }
    if (pool.Vertices.Count < MeshVertexLimit) {
        const std::span<Vertex> vertices = CopyInto(memory, std::span<const Vertex>(pool.Vertices));
        AppendMesh(node, CopyInto(memory, std::span<const uint32_t>(pool.Corners)), vertices,
                   materialIndex);
        return;
    }
    pool.Vertices.Shrink(); // most of the memory is unused after welding
    LargeArray<uint32_t> numbers;
    numbers.Resize(pool.Vertices.Count);
    std::ranges::fill(numbers, NotInMesh);
    for (size_t begin = 0; begin < pool.Corners.Count;) {
        begin = AppendPart(node, pool, begin, numbers, materialIndex, memory);
    }
}
