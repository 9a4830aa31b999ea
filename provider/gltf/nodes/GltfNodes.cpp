// Reads nodes straight from the tape: there can be many.
#include "provider/gltf/nodes/GltfNodes.h"

#include "platform/Text.h"
#include "provider/gltf/nodes/GltfInstances.h"
#include "provider/gltf/nodes/GltfPlacement.h"
#include "provider/gltf/records/GltfExtensions.h"
#include "provider/gltf/records/GltfFields.h"

#include <algorithm>

namespace {

struct NodeReading {
    GltfDocument& Document;
    const JsonTape& Json;
    GltfNodes& Output;
    std::vector<std::string>& Remarks;
    std::string& Error;
    std::vector<uint32_t> Nodes; // the values of the document
};

// Keeps what a node says about the shape of its mesh, if anything.
void ReadShape(NodeReading& reading, uint32_t node, uint32_t mesh) {
    const JsonTape& json = reading.Json;
    GltfShapedNode shaped;
    shaped.Skin = IndexMember(json, node, "skin");
    shaped.Weights = NumbersMember(json, node, "weights");
    if (shaped.Skin != NoIndex || !shaped.Weights.empty()) {
        shaped.Node = static_cast<uint32_t>(reading.Output.Tree.Nodes.size() - 1);
        shaped.Mesh = mesh;
        reading.Output.Shaped.push_back(std::move(shaped));
    }
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
    ImportedNode& imported = reading.Output.Tree.Nodes.emplace_back();
    imported.Name = Utf16FromUtf8(TextMember(json, node, "name"));
    imported.Placement = ToModelAxes(UpAxis::Y, ReadPlacement(json, node));
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
            ReadShape(reading, node, mesh);
        }
    }
    const uint32_t visibility = ExtensionOf(json, node, VisibilityExtension);
    imported.IsVisible = FlagMember(json, visibility, "visible", true);
    if (!imported.Meshes.empty() && !ReadInstances(reading.Document, json, node, reading.Output.Tree,
                                                   reading.Remarks, reading.Error)) {
        return false;
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
        FindRoots(reading.Output.Tree);
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
    return ReadNodeList(reading, ArrayMember(json, scene, "nodes"),
                        reading.Output.Tree.Nodes[0].Children);
}

} // namespace

bool ReadGltfNodes(GltfDocument& document, const JsonTape& json, GltfNodes& nodes,
                   std::vector<std::string>& remarks, std::string& error) {
    NodeReading reading = {document, json,  nodes,
                           remarks,  error, ElementsOf(json, RootArray(json, "nodes"))};
    ImportedTree& tree = nodes.Tree;
    tree.Nodes.reserve(reading.Nodes.size() + 1);
    tree.Nodes.emplace_back();
    tree.FirstNamed = 1;
    return std::ranges::all_of(reading.Nodes, [&](uint32_t node) { return ReadNode(reading, node); }) &&
           ReadScene(reading);
}
