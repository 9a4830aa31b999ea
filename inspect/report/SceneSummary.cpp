// Collects the facts in one pass, a node or a mesh at a time.
#include "inspect/report/SceneSummary.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr std::array<float, 16> IdentityMatrix = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

struct Tally {
    SceneSummary& Summary;
    std::map<MaterialKey, size_t> Rows; // Positions in Summary.Materials.
    uint64_t MeshesOfNode = 0;
};

uint64_t CountNonFinite(std::span<const float> numbers) {
    return static_cast<uint64_t>(std::count_if(numbers.begin(), numbers.end(),
                                               [](float number) { return !std::isfinite(number); }));
}

bool IsDegenerate(const StoredMesh& mesh, size_t firstIndex) {
    std::array<std::array<double, 3>, 2> edges{};
    const auto& origin = mesh.Vertices[mesh.Indices[firstIndex]].Position;
    for (size_t edge = 0; edge < 2; ++edge) {
        const auto& corner = mesh.Vertices[mesh.Indices[firstIndex + edge + 1]].Position;
        for (size_t axis = 0; axis < 3; ++axis) {
            edges[edge][axis] = static_cast<double>(corner[axis]) - static_cast<double>(origin[axis]);
        }
    }
    const auto& [a, b] = edges;
    const double crossX = a[1] * b[2] - a[2] * b[1];
    const double crossY = a[2] * b[0] - a[0] * b[2];
    const double crossZ = a[0] * b[1] - a[1] * b[0];
    return !(std::abs(crossX) + std::abs(crossY) + std::abs(crossZ) > 0.0);
}

void AddVertex(const StoredVertex& vertex, SceneSummary& summary) {
    const uint64_t badPosition = CountNonFinite(vertex.Position);
    const std::array<float, 2> texture = {vertex.U, vertex.V};
    summary.NonFiniteNumbers += badPosition + CountNonFinite(vertex.Normal) + CountNonFinite(texture);
    if (badPosition != 0) {
        return;
    }
    if (!summary.Bounds) {
        summary.Bounds = SceneBounds{vertex.Position, vertex.Position};
    }
    for (size_t axis = 0; axis < 3; ++axis) {
        summary.Bounds->Minimum[axis] = std::min(summary.Bounds->Minimum[axis], vertex.Position[axis]);
        summary.Bounds->Maximum[axis] = std::max(summary.Bounds->Maximum[axis], vertex.Position[axis]);
    }
}

void AddToMaterials(const StoredMesh& mesh, Tally& tally) {
    std::vector<MaterialSummary>& materials = tally.Summary.Materials;
    const auto [place, isNew] = tally.Rows.try_emplace(KeyOf(mesh.Material), materials.size());
    if (isNew) {
        materials.push_back({mesh.Material, 0, 0});
    }
    ++materials[place->second].Meshes;
    materials[place->second].Triangles += mesh.Indices.size() / 3;
}

void AddToLargest(const StoredNode& node, const StoredMesh& mesh, Tally& tally) {
    std::vector<MeshSummary>& largest = tally.Summary.LargestMeshes;
    const uint64_t triangles = mesh.Indices.size() / 3;
    const auto place = std::find_if(largest.begin(), largest.end(), [&](const MeshSummary& other) {
        return other.Triangles < triangles;
    });
    if (place == largest.end() && largest.size() == LargestMeshCount) {
        return;
    }
    largest.insert(place, {tally.Summary.Nodes - 1, node.Name, tally.MeshesOfNode, mesh.Material.Name,
                           mesh.Vertices.size(), triangles});
    if (largest.size() > LargestMeshCount) {
        largest.pop_back();
    }
}

void AddNode(const StoredNode& node, uint64_t depth, Tally& tally) {
    SceneSummary& summary = tally.Summary;
    ++summary.Nodes;
    summary.Levels = std::max(summary.Levels, depth);
    summary.NodesWithMatrix += node.Matrix == IdentityMatrix ? 0 : 1;
    summary.NonFiniteNumbers += CountNonFinite(node.Matrix);
    tally.MeshesOfNode = 0;
}

void AddMesh(const StoredNode& node, const StoredMesh& mesh, Tally& tally) {
    SceneSummary& summary = tally.Summary;
    ++summary.Meshes;
    summary.Vertices += mesh.Vertices.size();
    summary.Triangles += mesh.Indices.size() / 3;
    for (const StoredVertex& vertex : mesh.Vertices) {
        AddVertex(vertex, summary);
    }
    for (size_t first = 0; first < mesh.Indices.size(); first += 3) {
        summary.DegenerateTriangles += IsDegenerate(mesh, first) ? 1 : 0;
    }
    AddToMaterials(mesh, tally);
    AddToLargest(node, mesh, tally);
    ++tally.MeshesOfNode;
}

} // namespace

SceneSummary Summarize(const StoredScene& scene) {
    SceneSummary summary;
    Tally tally{summary, {}, 0};
    std::vector<uint64_t> levels;
    levels.reserve(scene.Nodes.size());
    for (const StoredNode& node : scene.Nodes) {
        levels.push_back(node.Parent ? levels[*node.Parent] + 1 : 1);
        AddNode(node, levels.back(), tally);
        for (const StoredMesh& mesh : node.Meshes) {
            AddMesh(node, mesh, tally);
        }
    }
    return summary;
}

std::optional<SceneFault> SummarizeParts(SceneReading& reading, SceneSummary& summary) {
    summary = {};
    Tally tally{summary, {}, 0};
    ScenePart part = ReadPart(reading);
    for (; part == ScenePart::Node || part == ScenePart::Mesh; part = ReadPart(reading)) {
        if (part == ScenePart::Node) {
            AddNode(reading.Node, reading.Depth, tally);
        } else {
            AddMesh(reading.Node, reading.Mesh, tally);
        }
    }
    return reading.Fault;
}
