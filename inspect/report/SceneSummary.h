// The facts about a scene that scene-inspect reports, without any wording.
#pragma once

#include "inspect/stored/SceneReader.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

struct MaterialSummary {
    StoredMaterial Material;
    uint64_t Meshes = 0;
    uint64_t Triangles = 0;
};

// One mesh: the node's number in the file and the mesh's number in the node, both from 0.
struct MeshSummary {
    uint64_t Node = 0;
    std::string NodeName; // As in StoredNode.
    uint64_t Mesh = 0;
    std::u16string Material; // The material's name.
    uint64_t Vertices = 0;
    uint64_t Triangles = 0;
};

// In scene coordinates, as stored: node matrices aren't applied.
struct SceneBounds {
    std::array<float, 3> Minimum;
    std::array<float, 3> Maximum;
};

// Number of the largest meshes that are kept.
constexpr size_t LargestMeshCount = 5;

struct SceneSummary {
    uint64_t Nodes = 0;
    uint64_t NodesWithMatrix = 0; // Those whose matrix isn't the identity. 0 in a finished scene.
    uint64_t Levels = 0;          // Nodes on the longest path from the root; 1 for a root alone.
    uint64_t Meshes = 0;
    uint64_t Vertices = 0;
    uint64_t Triangles = 0;
    uint64_t DegenerateTriangles = 0;       // Area 0 or not a number, in double precision.
    uint64_t NonFiniteNumbers = 0;          // Infinities and NaNs in vertices and matrices.
    std::optional<SceneBounds> Bounds;      // Of the vertices with finite positions, if there are any.
    std::vector<MaterialSummary> Materials; // In the order of their first mesh.
    // By number of triangles, the largest first; equal ones in the order of the file.
    std::vector<MeshSummary> LargestMeshes;
};

SceneSummary Summarize(const StoredScene& scene);

// The same for a scene that is read part by part. Returns the fault if the file is not sound; the
// summary then covers the part before it.
std::optional<SceneFault> SummarizeParts(SceneReading& reading, SceneSummary& summary);
