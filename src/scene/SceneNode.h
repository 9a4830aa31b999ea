// The geometry records: the tree that becomes the scene file, and the vertex pools that its meshes are
// built from.
#pragma once

#include "platform/LargeArray.h"
#include "scene/Matrix.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

// Eight floats. Face corners that differ in any of them are different vertices.
struct Vertex {
    Vec3 Position; // [Units: model units]
    Vec3 Normal;   // of the vertex's side of the surface
    float U = 0;
    float V = 0; // 0 at the top of the picture
};
static_assert(sizeof(Vertex) == 32);

// A list of separately allocated elements in order of appending. Null elements are allowed.
template <class Element> struct PointerList {
    std::vector<Element*> Elements;
    bool Owned = true; // whether the list deletes its elements

    PointerList() = default;
    PointerList(const PointerList&) = delete;
    PointerList& operator=(const PointerList&) = delete;
    ~PointerList() {
        if (Owned) {
            for (Element* element : Elements) {
                delete element;
            }
        }
    }

    // Appends an element, takes ownership of it and returns it.
    Element& Append(std::unique_ptr<Element> element) {
        Elements.push_back(element.get());
        return *element.release();
    }
};

// The triangles of one material in one list of entities, before welding.
struct VertexPool {
    // In the order in which the corners first use them; each is used. One that has a float that is not
    // finite, and so equals nothing, has one corner.
    LargeArray<Vertex> Vertices;
    LargeArray<uint32_t> Corners; // three per triangle, each the number of a vertex
    bool Welded = false;          // set by WeldVertices, reset by every append

    size_t MemoryBytes() const {
        return Vertices.Memory.Room + Corners.Memory.Room;
    }
};

// The polygons of one list of entities by row of the MaterialTable, rows ascending. The polygons of a
// row are triangulated, in order of appending.
struct PolygonList {
    std::map<int32_t, VertexPool> Pools;
    std::vector<VertexPool> Spare; // empty pools of earlier lists, for their memory
    size_t SpareBytes = 0;         // of these
};

// An indexed triangle mesh with one material. Its arrays are in a MeshMemory.
struct SceneMesh {
    std::span<uint32_t> Indices; // three per triangle, each below the number of vertices
    std::span<Vertex> Vertices;  // 1 to 99999 [Limit: MeshVertexLimit in mesh/AddMeshes.h]
    int32_t MaterialIndex = 0;   // row of the MaterialTable
};

// The arrays of finished meshes, one after the other in a few blocks, none of which moves.
struct MeshMemory {
    std::vector<LargeArray<std::byte>> Blocks;
    size_t Size = 0; // bytes reserved in all blocks
};

// One node of the tree. Its vertices are in node coordinates until BakeTransforms converts them to scene
// coordinates.
struct SceneNode {
    std::u16string Name;       // of a group; empty on all other nodes
    Matrix4 Matrix = Identity; // from this node's coordinates to its parent's
    PointerList<SceneNode> Children;
    PointerList<SceneMesh> Meshes;

    explicit SceneNode(std::u16string name) : Name(std::move(name)) {
    }
};

// The result of a conversion: the tree, null until the walk has finished.
struct RootHolder {
    MeshMemory Meshes; // of all nodes
    std::unique_ptr<SceneNode> Root;
};

// Returns the pool of a row.
VertexPool& PoolOf(PolygonList& polygons, int32_t row);

// Appends triangles, given by three corners each: numbers of vertices. Takes over only vertices that are
// used. numbers is scratch memory. Throws std::length_error if the pool would exceed 2^31 - 1 corners.
void AppendTriangles(VertexPool& pool, std::span<const Vertex> vertices,
                     std::span<const uint32_t> corners, LargeArray<uint32_t>& numbers);

// Appends a convex polygon, its corners in boundary order, as a fan around the first corner. Fewer than
// three corners append nothing.
void AppendPolygon(VertexPool& pool, std::span<const Vertex> corners);

// Adds undefined bytes to the memory, at an address that every array may have.
std::byte* TakeBytes(MeshMemory& memory, size_t count);

// Gives back the end of the bytes that were taken last, after the first used ones.
void ReturnBytes(MeshMemory& memory, const std::byte* taken, size_t used);

// A copy of an array in the memory.
template <class Element>
std::span<Element> CopyInto(MeshMemory& memory, std::span<const Element> elements) {
    std::byte* const bytes = TakeBytes(memory, elements.size_bytes());
    std::memcpy(bytes, elements.data(), elements.size_bytes());
    return {reinterpret_cast<Element*>(bytes), elements.size()};
}

// Returns the triangle count of a node and its descendants, at most 2^31 - 1.
int32_t CountTriangles(const SceneNode& node);
