// Gathers the facts in one pass over the nodes, which stand parents first.
#include "inspect/SceneSummary.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>

namespace {

using MaterialKey = std::tuple<std::u16string, std::u16string, std::array<float, 4>>;

constexpr std::array<float, 16> IdentityMatrix = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

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

void AddMesh(const StoredMesh& mesh, std::map<MaterialKey, size_t>& materials, SceneSummary& summary) {
    const uint64_t triangles = mesh.Indices.size() / 3;
    ++summary.Meshes;
    summary.Vertices += mesh.Vertices.size();
    summary.Triangles += triangles;
    for (const StoredVertex& vertex : mesh.Vertices) {
        AddVertex(vertex, summary);
    }
    for (size_t first = 0; first < mesh.Indices.size(); first += 3) {
        summary.DegenerateTriangles += IsDegenerate(mesh, first) ? 1 : 0;
    }
    const StoredMaterial& material = mesh.Material;
    const auto [place, isNew] = materials.try_emplace(
        MaterialKey{material.Name, material.TexturePath, material.Colour}, summary.Materials.size());
    if (isNew) {
        summary.Materials.push_back({material, 0, 0});
    }
    MaterialSummary& row = summary.Materials[place->second];
    ++row.Meshes;
    row.Triangles += triangles;
}

} // namespace

SceneSummary Summarize(const StoredScene& scene) {
    SceneSummary summary;
    std::map<MaterialKey, size_t> materials;
    std::vector<uint64_t> levels;
    levels.reserve(scene.Nodes.size());
    for (const StoredNode& node : scene.Nodes) {
        levels.push_back(node.Parent ? levels[*node.Parent] + 1 : 1);
        summary.Levels = std::max(summary.Levels, levels.back());
        summary.NodesWithMatrix += node.Matrix == IdentityMatrix ? 0 : 1;
        summary.NonFiniteNumbers += CountNonFinite(node.Matrix);
        for (const StoredMesh& mesh : node.Meshes) {
            AddMesh(mesh, materials, summary);
        }
    }
    summary.Nodes = scene.Nodes.size();
    return summary;
}
