// The geometry records: the tree that becomes the scene file, and the vertex pools that its meshes are
// built from.
#pragma once

#include "scene/Matrix.h"

#include <cstdint>
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

// The triangles of one material in one list of entities, unindexed before welding.
struct VertexPool {
    std::vector<Vertex> Vertices;
    bool Welded = false; // set by WeldVertices, reset by every append
};

// The polygons of one list of entities by row of the MaterialTable, rows ascending. The polygons of a
// row are triangulated, in order of appending.
using PolygonList = std::map<int32_t, VertexPool>;

// An indexed triangle mesh with one material.
struct SceneMesh {
    std::vector<uint32_t> Indices; // three per triangle, each below the number of vertices
    std::vector<Vertex> Vertices;  // 1 to 99999 [Limit: MeshVertexLimit in mesh/AddMeshes.h]
    int32_t MaterialIndex = 0;     // row of the MaterialTable
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
    std::unique_ptr<SceneNode> Root;
};

// Appends count triangles to the pool and returns their first vertex, for the caller to fill. Throws
// std::length_error if the pool would exceed 2^31 - 1 vertices.
Vertex* AppendTriangles(VertexPool& pool, size_t count);

// Appends a convex polygon, its corners in boundary order, as a fan around the first corner. Fewer than
// three corners append nothing.
void AppendPolygon(VertexPool& pool, std::span<const Vertex> corners);

// Returns the triangle count of a node and its descendants, at most 2^31 - 1.
int32_t CountTriangles(const SceneNode& node);
