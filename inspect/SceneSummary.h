// The facts about a scene that scene-inspect shows, without any wording.
#pragma once

#include "inspect/SceneReader.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

// Materials are one if name, texture path and colour agree; the file doesn't tell more.
struct MaterialSummary {
    StoredMaterial Material;
    uint64_t Meshes = 0;
    uint64_t Triangles = 0;
};

// In scene coordinates, as stored: node matrices aren't applied.
struct SceneBounds {
    std::array<float, 3> Minimum;
    std::array<float, 3> Maximum;
};

struct SceneSummary {
    uint64_t Nodes = 0;
    uint64_t NodesWithMatrix = 0; // Those whose matrix isn't the identity. 0 in a finished scene.
    uint64_t Levels = 0;          // Nodes on the longest way down; 1 for a lone root.
    uint64_t Meshes = 0;
    uint64_t Vertices = 0;
    uint64_t Triangles = 0;
    uint64_t DegenerateTriangles = 0;  // Area 0 or not a number, in double precision.
    uint64_t NonFiniteNumbers = 0;     // Infinities and NaNs in vertices and matrices.
    std::optional<SceneBounds> Bounds; // Of the vertices with finite positions; nothing without any.
    std::vector<MaterialSummary> Materials; // In the order of their first mesh.
};

SceneSummary Summarize(const StoredScene& scene);
