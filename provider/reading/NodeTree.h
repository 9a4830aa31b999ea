// Converts the node tree of an interchange format to groups, definitions and instances.
#pragma once

#include "provider/model/Model.h"

#include <functional>
#include <string>
#include <vector>

// The up axis of a format. With Y up, (x, y, z) becomes (x, -z, y) in the model; with Z up, nothing
// changes.
enum class UpAxis : uint8_t { Y, Z };

constexpr Point3 ToModelAxes(UpAxis up, Point3 point) {
    return up == UpAxis::Y ? Point3{point.X, -point.Z, point.Y} : point;
}
// The same for a transformation between two spaces with the format's axes.
Transform ToModelAxes(UpAxis up, const Transform& transform);

struct ImportedNode {
    std::u16string Name;
    Transform Placement = IdentityTransform; // in the model's axes, into the parent
    std::vector<uint32_t> Children;          // indices of nodes
    std::vector<uint32_t> Meshes;            // indices of meshes that have triangles
    IndexRange Instances;  // in Placements; if there are some, each mesh occurs once at each of them
    bool IsVisible = true; // otherwise the node is on an invisible layer
};

struct ImportedTree {
    std::vector<ImportedNode> Nodes;   // the first is the model itself; its placement and name
                                       // are not used
    std::vector<Transform> Placements; // in the model's axes, into the node
    uint32_t FirstNamed = 0; // the node that messages call nodes[0]; they name those from it on
    std::vector<std::u16string> MeshNames;
    // Appends a mesh's faces to the model. Called once per mesh; false ends the placing.
    std::function<bool(uint32_t mesh)> AddFaces;
};

// Fills the lists of a model without any. A node becomes a group if it or a node below it has a mesh. A
// mesh that is used more than once, or has placements of its own, becomes a definition, with an instance
// per use. Returns false, with the reason in error, if the nodes form no tree or one that is too deep,
// if there are no triangles or too many, or if AddFaces returns false.
bool PlaceNodes(const ImportedTree& tree, Model& model, std::string& error);
