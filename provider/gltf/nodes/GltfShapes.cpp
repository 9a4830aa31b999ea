// Finds the shapes of nodes: weights of morph targets, and the places of joints in the scene.
#include "provider/gltf/nodes/GltfShapes.h"

#include "provider/gltf/data/GltfElements.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace {

enum class Reach : uint8_t { None, Visible, Invisible };

struct ShapeReading {
    GltfDocument& Document;
    ImportedTree& Tree;
    std::vector<std::string>& Remarks;
    std::vector<Reach> Reached;           // of each node of the tree, from the scene
    std::vector<uint32_t> Parents;        // of each node of the tree; NoIndex without one
    std::map<uint32_t, Transform> Placed; // of nodes in the scene, as far as asked for
    // By skin; null if the skin can't be used.
    std::map<uint32_t, std::shared_ptr<const std::vector<Transform>>> Joints;
    std::map<uint32_t, bool> Skinnable; // by mesh
    std::map<std::tuple<uint32_t, uint32_t, std::vector<double>>, uint32_t> Found;
    std::vector<GltfShape> Shapes;
};

// Fills Reached and Parents.
void WalkTree(ShapeReading& reading) {
    const std::vector<ImportedNode>& nodes = reading.Tree.Nodes;
    reading.Parents.assign(nodes.size(), NoIndex);
    for (uint32_t node = 1; node < nodes.size(); ++node) {
        for (const uint32_t child : nodes[node].Children) {
            reading.Parents[child] = node;
        }
    }
    reading.Reached.assign(nodes.size(), Reach::None);
    reading.Reached[0] = Reach::Visible;
    std::vector<uint32_t> waiting = {0};
    while (!waiting.empty()) {
        const uint32_t node = waiting.back();
        waiting.pop_back();
        for (const uint32_t child : nodes[node].Children) {
            if (reading.Reached[child] == Reach::None) {
                const bool isVisible = reading.Reached[node] == Reach::Visible && nodes[child].IsVisible;
                reading.Reached[child] = isVisible ? Reach::Visible : Reach::Invisible;
                waiting.push_back(child);
            }
        }
    }
}

// The placement of a node in the scene. Returns false if it is below itself or nested too deeply. Each
// node is placed once, since many joints can be below the same nodes.
bool PlaceInScene(ShapeReading& reading, uint32_t node, Transform& placement) {
    std::vector<uint32_t> path; // up to the first node that is placed
    const auto isPlaced = [&](uint32_t which) {
        return which == NoIndex || reading.Placed.contains(which);
    };
    for (uint32_t above = node; !isPlaced(above); above = reading.Parents[above]) {
        if (path.size() == DeepestNesting) {
            return false;
        }
        path.push_back(above);
    }
    for (; !path.empty(); path.pop_back()) {
        const ImportedNode& placed = reading.Tree.Nodes[path.back()];
        const uint32_t parent = reading.Parents[path.back()];
        reading.Placed[path.back()] =
            parent == NoIndex ? placed.Placement : Multiply(placed.Placement, reading.Placed.at(parent));
    }
    placement = reading.Placed.at(node);
    return true;
}

// Returns null, or the reason why the inverse bind matrices can't be read.
bool ReadBindMatrices(GltfDocument& document, const GltfSkin& skin, std::vector<double>& numbers,
                      std::string& reason) {
    constexpr size_t components = 16;
    GltfElements elements;
    if (!FindElements(document, skin.InverseBindMatrices, elements, reason)) {
        return false;
    }
    const char* fault =
        ReadTuples(elements, {0, static_cast<uint32_t>(skin.Joints.size())}, components, numbers);
    reason = fault != nullptr ? fault : "";
    return fault == nullptr;
}

// The matrices of the joints of a skin. Returns false, with place and reason, if it can't be used.
bool FindJoints(ShapeReading& reading, uint32_t index, std::vector<Transform>& joints,
                std::string& reason) {
    const std::string place = PlaceIn("skins", index);
    if (index >= reading.Document.Records.Skins.size()) {
        reason = place + ": the skin does not exist";
        return false;
    }
    const GltfSkin& skin = reading.Document.Records.Skins[index];
    std::vector<double> numbers;
    if (skin.InverseBindMatrices != NoIndex &&
        !ReadBindMatrices(reading.Document, skin, numbers, reason)) {
        reason = place + ".inverseBindMatrices: " + reason;
        return false;
    }
    for (size_t i = 0; i < skin.Joints.size(); ++i) {
        Transform inScene;
        if (skin.Joints[i] >= reading.Tree.Nodes.size() - 1 ||
            !PlaceInScene(reading, skin.Joints[i] + 1, inScene)) {
            reason = place + "." + PlaceIn("joints", i) + ": the node does not exist or has no place";
            return false;
        }
        Transform bind = IdentityTransform;
        if (!numbers.empty()) {
            std::copy_n(numbers.begin() + static_cast<ptrdiff_t>(i * bind.size()), bind.size(),
                        bind.begin());
        }
        joints.push_back(Multiply(ToModelAxes(UpAxis::Y, bind), inScene));
    }
    reason = place + ": there are no joints";
    return !joints.empty();
}

// Whether a mesh can be drawn with a skin. If not, adds a remark the first time.
bool CanUseSkin(ShapeReading& reading, uint32_t mesh, uint32_t skin) {
    std::string reason;
    const std::string end = "; the skin is left out";
    const auto [joints, isNewSkin] = reading.Joints.try_emplace(skin);
    if (isNewSkin) {
        std::vector<Transform> found;
        if (FindJoints(reading, skin, found, reason)) {
            joints->second = std::make_shared<const std::vector<Transform>>(std::move(found));
        } else {
            reading.Remarks.push_back(reason + end);
        }
    }
    if (joints->second == nullptr) {
        return false;
    }
    const auto [skinnable, isNewMesh] = reading.Skinnable.try_emplace(mesh);
    if (isNewMesh) {
        skinnable->second = CanHaveSkin(reading.Document, mesh, reason);
        if (!skinnable->second) {
            reading.Remarks.push_back(reason + end);
        }
    }
    return skinnable->second;
}

// The mesh of the tree for a shape.
uint32_t FindShape(ShapeReading& reading, uint32_t mesh, uint32_t skin,
                   const std::vector<double>& weights) {
    const auto count = static_cast<uint32_t>(reading.Document.Records.Meshes.size());
    const auto [found, isNew] = reading.Found.try_emplace({mesh, skin, weights});
    if (isNew) {
        found->second = count + static_cast<uint32_t>(reading.Shapes.size());
        GltfShape& shape = reading.Shapes.emplace_back();
        shape.Mesh = mesh;
        shape.Pose.Weights = weights;
        if (skin != NoIndex) {
            shape.Pose.Joints = reading.Joints[skin];
        }
    }
    return found->second;
}

void ShapeNode(ShapeReading& reading, const GltfShapedNode& shaped) {
    const std::vector<double>& own = reading.Document.Records.Meshes[shaped.Mesh].Weights;
    const std::vector<double>& weights = shaped.Weights.empty() ? own : shaped.Weights;
    const bool hasSkin = shaped.Skin != NoIndex && CanUseSkin(reading, shaped.Mesh, shaped.Skin);
    if (!hasSkin && weights == own) {
        return;
    }
    const uint32_t mesh = FindShape(reading, shaped.Mesh, hasSkin ? shaped.Skin : NoIndex, weights);
    ImportedTree& tree = reading.Tree;
    if (!hasSkin) {
        tree.Nodes[shaped.Node].Meshes = {mesh};
        return;
    }
    tree.Nodes[shaped.Node].Meshes.clear();
    if (reading.Reached[shaped.Node] != Reach::None) {
        ImportedNode moved;
        moved.Name = tree.Nodes[shaped.Node].Name;
        moved.IsVisible = reading.Reached[shaped.Node] == Reach::Visible;
        moved.Meshes = {mesh};
        tree.Nodes[0].Children.push_back(static_cast<uint32_t>(tree.Nodes.size()));
        tree.Nodes.push_back(std::move(moved));
    }
}

} // namespace

std::vector<GltfShape> ShapeNodes(GltfDocument& document, GltfNodes& nodes,
                                  std::vector<std::string>& remarks) {
    if (nodes.Shaped.empty()) {
        return {};
    }
    ShapeReading reading = {document, nodes.Tree, remarks, {}, {}, {}, {}, {}, {}, {}};
    WalkTree(reading);
    for (const GltfShapedNode& shaped : nodes.Shaped) {
        ShapeNode(reading, shaped);
    }
    return std::move(reading.Shapes);
}
