// Reads nodes straight from the tape: there can be many.
#include "provider/gltf/GltfNodes.h"

#include "platform/Text.h"
#include "provider/gltf/records/GltfFields.h"

#include <algorithm>

namespace {

struct NodeReading {
    const GltfDocument& Document;
    const JsonTape& Json;
    ImportedTree& Tree;
    std::string& Error;
    std::vector<uint32_t> Nodes; // the values of the document
};

Transform RotationOf(const std::array<double, 4>& quaternion) {
    const auto [x, y, z, w] = quaternion;
    return {1 - 2 * (y * y + z * z),
            2 * (x * y + z * w),
            2 * (x * z - y * w),
            0,
            2 * (x * y - z * w),
            1 - 2 * (x * x + z * z),
            2 * (y * z + x * w),
            0,
            2 * (x * z + y * w),
            2 * (y * z - x * w),
            1 - 2 * (x * x + y * y),
            0,
            0,
            0,
            0,
            1};
}

// The placement of a node in glTF's axes. A matrix for column vectors, stored by columns, equals one
// for row vectors, stored by rows.
Transform PlacementOf(const JsonTape& json, uint32_t node) {
    Transform transform = IdentityTransform;
    if (ArrayMember(json, node, "matrix") != 0) {
        ReadNumbers(json, node, "matrix", transform);
        return transform;
    }
    std::array<double, 4> rotation = {};
    std::array<double, 3> scale = {};
    std::array<double, 3> translation = {};
    if (ReadNumbers(json, node, "rotation", rotation)) {
        transform = RotationOf(rotation);
    }
    if (ReadNumbers(json, node, "scale", scale)) {
        for (size_t i = 0; i < 9; ++i) {
            transform[i / 3 * 4 + i % 3] *= scale[i / 3];
        }
    }
    if (ReadNumbers(json, node, "translation", translation)) {
        std::ranges::copy(translation, transform.begin() + 12);
    }
    return transform;
}

// Appends the nodes of an array of indices, up to the first value that isn't a number.
bool ReadNodeList(NodeReading& reading, uint32_t array, std::vector<uint32_t>& nodes) {
    const JsonTape& json = reading.Json;
    for (const uint32_t i : ElementsOf(json, array)) {
        if (KindOf(json, i) != JsonKind::Number) {
            break;
        }
        const uint32_t node = IndexIn(json, i);
        if (node >= reading.Nodes.size()) {
            return FailAt(json, i, "the node does not exist", reading.Error);
        }
        nodes.push_back(node + 1);
    }
    return true;
}

bool ReadNode(NodeReading& reading, uint32_t node) {
    const JsonTape& json = reading.Json;
    if (KindOf(json, node) != JsonKind::Object) {
        return FailAt(json, node, "this must be an object", reading.Error);
    }
    ImportedNode& imported = reading.Tree.Nodes.emplace_back();
    imported.Name = Utf16FromUtf8(TextMember(json, node, "name"));
    imported.Placement = ToModelAxes(UpAxis::Y, PlacementOf(json, node));
    if (imported.Placement[15] == 0.0) {
        return FailAt(json, MemberOf(json, node, "matrix"), "the last number must not be 0",
                      reading.Error);
    }
    const uint32_t mesh = IndexMember(json, node, "mesh");
    if (mesh != NoIndex) {
        const std::vector<GltfMesh>& meshes = reading.Document.Records.Meshes;
        if (mesh >= meshes.size()) {
            return FailAt(json, MemberOf(json, node, "mesh"), "the mesh does not exist", reading.Error);
        }
        if (std::ranges::any_of(meshes[mesh].Primitives, HasTriangles)) {
            imported.Meshes.push_back(mesh);
        }
    }
    return ReadNodeList(reading, ArrayMember(json, node, "children"), imported.Children);
}

// All nodes without a parent.
void FindRoots(ImportedTree& tree) {
    std::vector<bool> isChild(tree.Nodes.size());
    for (const ImportedNode& node : tree.Nodes) {
        for (const uint32_t child : node.Children) {
            isChild[child] = true;
        }
    }
    for (uint32_t node = 1; node < isChild.size(); ++node) {
        if (!isChild[node]) {
            tree.Nodes[0].Children.push_back(node);
        }
    }
}

bool ReadScene(NodeReading& reading) {
    const JsonTape& json = reading.Json;
    const std::vector<uint32_t> scenes = ElementsOf(json, RootArray(json, "scenes"));
    if (scenes.empty()) {
        FindRoots(reading.Tree);
        return true;
    }
    const uint32_t chosen = MemberOf(json, 0, "scene");
    const uint32_t index = IndexIn(json, chosen);
    const uint32_t number = index != NoIndex ? index : 0;
    if (number >= scenes.size()) {
        return FailAt(json, chosen, "the scene does not exist", reading.Error);
    }
    const uint32_t scene = scenes[number];
    if (KindOf(json, scene) != JsonKind::Object) {
        return FailAt(json, scene, "this must be an object", reading.Error);
    }
    return ReadNodeList(reading, ArrayMember(json, scene, "nodes"), reading.Tree.Nodes[0].Children);
}

} // namespace

bool ReadGltfNodes(const GltfDocument& document, const JsonTape& json, ImportedTree& tree,
                   std::string& error) {
    NodeReading reading = {document, json, tree, error, ElementsOf(json, RootArray(json, "nodes"))};
    tree.Nodes.reserve(reading.Nodes.size() + 1);
    tree.Nodes.emplace_back();
    tree.FirstNamed = 1;
    return std::ranges::all_of(reading.Nodes, [&](uint32_t node) { return ReadNode(reading, node); }) &&
           ReadScene(reading);
}
