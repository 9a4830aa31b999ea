// The records that carry geometry: the tree that becomes the scene file, and the batches it is made
// from.
#pragma once

#include "scene/Matrix.h"

#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

// Eight floats, copied whole. Two corners of faces that differ in any of them are two vertices.
struct Vertex {
    Vec3 Position; // [Units: model's]
    Vec3 Normal;   // of the side of the surface that the vertex belongs to
    float U = 0;
    float V = 0; // 0 at the top of a picture
};
static_assert(sizeof(Vertex) == 32);

// A list of separately allocated elements in the order of appending. Null elements are allowed.
template <class Element> struct PointerList {
    std::vector<Element*> Elements;
    bool Owned = true; // whether the elements end with the list

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

    // Appends an element, which belongs to the list from then on, and gives it back.
    Element& Append(std::unique_ptr<Element> element) {
        Elements.push_back(element.get());
        return *element.release();
    }
};

// The triangles of one material in one list of entities, unindexed before welding.
struct VertexPool {
    std::vector<Vertex> Vertices;
    bool Welded = false; // set by WeldVertices, taken back by every append
};

// The polygons of one list of entities, apart by row of the MaterialTable, rows ascending. Those of one
// row stand in the order of appending, cut into triangles.
using PolygonList = std::map<int32_t, VertexPool>;

// An indexed triangle mesh with one material.
struct SceneMesh {
    std::vector<uint32_t> Indices; // three per triangle, each below the number of vertices
    std::vector<Vertex> Vertices;  // 1 to 99999 [Limit: MeshVertexLimit in mesh/AddMeshes.h]
    int32_t MaterialIndex = 0;     // row of the MaterialTable
};

// One node of the tree. Its vertices are in the node's own coordinates until BakeTransforms has brought
// all of them into those of the scene.
struct SceneNode {
    std::u16string Name;       // of a group; empty on all other nodes
    Matrix4 Matrix = Identity; // from this node's coordinates to its parent's
    PointerList<SceneNode> Children;
    PointerList<SceneMesh> Meshes;

    explicit SceneNode(std::u16string name) : Name(std::move(name)) {
    }
};

// What a conversion has built: the tree, once the walk has finished.
struct RootHolder {
    std::unique_ptr<SceneNode> Root;
};

// Makes room for so many triangles at the end of the pool and gives the first of their vertices. Throws
// std::length_error where the pool would have more than 2^31 - 1 vertices.
Vertex* AppendTriangles(VertexPool& pool, size_t count);

// Appends a convex polygon, its corners in boundary order, as a fan around its first corner. Fewer than
// three corners append nothing.
void AppendPolygon(VertexPool& pool, std::span<const Vertex> corners);

// The triangles of a node and of all below it, 2^31 - 1 at most.
int32_t CountTriangles(const SceneNode& node);
