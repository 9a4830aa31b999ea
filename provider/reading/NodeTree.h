// From the node tree of an interchange format to groups, definitions and instances.
#pragma once

#include "provider/model/Model.h"

#include <functional>
#include <string>
#include <vector>

// How a format's axes become the model's: from Y up, (x, y, z) becomes (x, -z, y); from Z up, nothing
// changes.
enum class UpAxis : uint8_t { Y, Z };

Point3 ToModelAxes(UpAxis up, Point3 point);
// The same for a transformation between two places that both have the format's axes.
Transform ToModelAxes(UpAxis up, const Transform& transform);

struct ImportedNode {
    std::u16string Name;
    Transform Placement = IdentityTransform; // in the model's axes, into the parent
    std::vector<uint32_t> Children;          // indices of nodes
    std::vector<uint32_t> Meshes;            // indices of meshes that have triangles
};

struct ImportedTree {
    std::vector<ImportedNode> Nodes; // the first holds what the model itself holds; its placement and
                                     // name are not used
    std::vector<std::u16string> MeshNames;
    std::function<bool(uint32_t mesh)> AddFaces; // appends a mesh's faces to the model; called once each
};

// Fills the lists of a model that has none yet. A node becomes a group, unless neither it nor any node
// below it has a mesh; a mesh that is used more than once becomes a definition, and an instance wherever
// it is used. Gives false, and the reason in error, when nodes form no tree or one that is too deep, or
// when AddFaces gives false.
bool PlaceNodes(const ImportedTree& tree, Model& model, std::string& error);
