// Converts a node tree to lists of elements, level by level, so that each list is contiguous.
#include "provider/reading/NodeTree.h"

#include <algorithm>
#include <span>

namespace {

// With Y up: the old axis of each new one, and its sign.
constexpr std::array<size_t, 4> OldAxis = {0, 2, 1, 3};
constexpr std::array<double, 4> OldSign = {1.0, -1.0, 1.0, 1.0};

bool FailAt(const ImportedTree& tree, uint32_t node, const std::string& reason, std::string& error) {
    const bool isNamed = node >= tree.FirstNamed;
    error = (isNamed ? "nodes[" + std::to_string(node - tree.FirstNamed) + "]: " : "") + reason;
    return false;
}

// The nodes level by level from the root.
bool OrderNodes(const ImportedTree& tree, std::vector<uint32_t>& order, std::string& error) {
    std::vector<bool> seen(tree.Nodes.size());
    order = {0};
    seen[0] = true;
    size_t level = 0;
    size_t levelEnd = 1;
    for (size_t i = 0; i < order.size(); ++i) {
        if (i == levelEnd) {
            levelEnd = order.size();
            // One level is reserved for the instance of a shared mesh.
            if (++level > DeepestNesting - 1) {
                return FailAt(tree, order[i],
                              "nodes are nested deeper than " + std::to_string(DeepestNesting - 1) +
                                  " levels",
                              error);
            }
        }
        for (const uint32_t child : tree.Nodes[order[i]].Children) {
            if (child >= tree.Nodes.size() || seen[child]) {
                return FailAt(tree, child, "the node contains itself or occurs twice in the tree",
                              error);
            }
            seen[child] = true;
            order.push_back(child);
        }
    }
    return true;
}

struct Placing {
    const ImportedTree& Tree;
    Model& Output;
    std::vector<bool> IsUsed;          // of each mesh
    std::vector<bool> IsShared;        // of each mesh that needs a definition
    std::vector<uint32_t> Definitions; // of each mesh that is shared
    std::vector<bool> HasMesh;         // of each node, itself or below it
};

// Finds the meshes that are shared and the nodes that have one, and reserves memory for what they
// become.
void FindUses(Placing& placing, const std::vector<uint32_t>& order) {
    for (size_t i = order.size(); i-- > 0;) {
        const ImportedNode& node = placing.Tree.Nodes[order[i]];
        for (const uint32_t mesh : node.Meshes) {
            placing.IsShared[mesh] =
                placing.IsShared[mesh] || placing.IsUsed[mesh] || node.Instances.Count > 0;
            placing.IsUsed[mesh] = true;
        }
        placing.HasMesh[order[i]] =
            !node.Meshes.empty() ||
            std::ranges::any_of(node.Children, [&](uint32_t child) { return placing.HasMesh[child]; });
    }
    size_t instances = 0;
    const auto definitions = static_cast<size_t>(std::ranges::count(placing.IsShared, true));
    for (const uint32_t index : order) {
        const ImportedNode& node = placing.Tree.Nodes[index];
        for (const uint32_t mesh : node.Meshes) {
            instances += placing.IsShared[mesh] ? std::max(node.Instances.Count, 1U) : 0;
        }
    }
    const auto groups = static_cast<size_t>(std::ranges::count(placing.HasMesh, true));
    placing.Output.Groups.reserve(groups);
    placing.Output.Instances.reserve(instances);
    placing.Output.Definitions.reserve(definitions);
    placing.Output.Entities.reserve(1 + groups + definitions);
}

bool AddFacesTo(Placing& placing, uint32_t list, std::span<const uint32_t> meshes) {
    const auto first = static_cast<uint32_t>(placing.Output.Faces.size());
    for (const uint32_t mesh : meshes) {
        if (!placing.Tree.AddFaces(mesh)) {
            return false;
        }
    }
    placing.Output.Entities[list].Faces = {first,
                                           static_cast<uint32_t>(placing.Output.Faces.size()) - first};
    return true;
}

bool AddInstances(Placing& placing, uint32_t mesh, IndexRange placements) {
    Model& model = placing.Output;
    if (placing.Definitions[mesh] == NoIndex) {
        const auto list = static_cast<uint32_t>(model.Entities.size());
        placing.Definitions[mesh] = static_cast<uint32_t>(model.Definitions.size());
        model.Definitions.push_back({placing.Tree.MeshNames[mesh], list});
        model.Entities.emplace_back();
        if (!AddFacesTo(placing, list, {&mesh, 1})) {
            return false;
        }
    }
    ModelInstance instance;
    instance.Definition = placing.Definitions[mesh];
    for (uint32_t i = 0; i < std::max(placements.Count, 1U); ++i) {
        if (placements.Count > 0) {
            instance.Placement = placing.Tree.Placements[placements.First + i];
        }
        model.Instances.push_back(instance);
    }
    return true;
}

// The layer of invisible nodes. No other layer is added, so it is the second one.
uint32_t InvisibleLayer(Model& model) {
    if (model.Layers.size() == 1) {
        model.Layers.push_back({u"invisible", false});
    }
    return 1;
}

// Fills the list of a node, appends the lists of its children and adds them to waiting.
bool FillList(Placing& placing, uint32_t list, const ImportedNode& node,
              std::vector<std::pair<uint32_t, uint32_t>>& waiting) {
    Model& model = placing.Output;
    std::vector<uint32_t> own;
    std::vector<uint32_t> shared;
    for (const uint32_t mesh : node.Meshes) {
        (placing.IsShared[mesh] ? shared : own).push_back(mesh);
    }
    const auto firstInstance = static_cast<uint32_t>(model.Instances.size());
    if (!AddFacesTo(placing, list, own) || !std::ranges::all_of(shared, [&](uint32_t mesh) {
            return AddInstances(placing, mesh, node.Instances);
        })) {
        return false;
    }
    const auto firstGroup = static_cast<uint32_t>(model.Groups.size());
    for (const uint32_t child : node.Children) {
        if (placing.HasMesh[child]) {
            ModelGroup group;
            group.Name = placing.Tree.Nodes[child].Name;
            group.Placement = placing.Tree.Nodes[child].Placement;
            group.Entities = static_cast<uint32_t>(model.Entities.size());
            group.Element.Layer = placing.Tree.Nodes[child].IsVisible ? 0 : InvisibleLayer(model);
            waiting.emplace_back(group.Entities, child);
            model.Groups.push_back(std::move(group));
            model.Entities.emplace_back();
        }
    }
    model.Entities[list].Groups = {firstGroup, static_cast<uint32_t>(model.Groups.size()) - firstGroup};
    model.Entities[list].Instances = {firstInstance,
                                      static_cast<uint32_t>(model.Instances.size()) - firstInstance};
    return true;
}

} // namespace

Transform ToModelAxes(UpAxis up, const Transform& transform) {
    if (up == UpAxis::Z) {
        return transform;
    }
    Transform turned;
    for (size_t row = 0; row < 4; ++row) {
        for (size_t column = 0; column < 4; ++column) {
            // Adding zero makes negative zeros positive.
            turned[row * 4 + column] =
                OldSign[row] * OldSign[column] * transform[OldAxis[row] * 4 + OldAxis[column]] + 0.0;
        }
    }
    return turned;
}

bool PlaceNodes(const ImportedTree& tree, Model& model, std::string& error) {
    std::vector<uint32_t> order;
    if (!OrderNodes(tree, order, error)) {
        return false;
    }
    const size_t meshCount = tree.MeshNames.size();
    Placing placing = {tree,
                       model,
                       std::vector<bool>(meshCount),
                       std::vector<bool>(meshCount),
                       std::vector<uint32_t>(meshCount, NoIndex),
                       std::vector<bool>(tree.Nodes.size())};
    FindUses(placing, order);
    std::vector<std::pair<uint32_t, uint32_t>> waiting = {{0, 0}};
    for (size_t i = 0; i < waiting.size(); ++i) {
        const auto [list, node] = waiting[i];
        if (!FillList(placing, list, tree.Nodes[node], waiting)) {
            return false;
        }
    }
    if (model.Positions.Count >= NoIndex || model.SinglePositions.Count >= NoIndex ||
        model.Indices.Count >= NoIndex) {
        error = "there are too many vertices or triangles";
        return false;
    }
    if (model.Faces.empty()) {
        error = "the file has no triangles";
        return false;
    }
    return true;
}
