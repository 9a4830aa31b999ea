// A stored mesh converted for glTF: finite, right-handed, with normals of unit length.
#pragma once

#include "inspect/stored/StoredScene.h"

#include <vector>

struct GltfMesh {
    std::vector<StoredVertex> Vertices; // Those that a triangle uses, Z negated.
    std::vector<uint32_t> Indices;      // Into Vertices, each triangle reversed.
    uint64_t TrianglesLeftOut = 0;      // Those with a non-finite number.
};

GltfMesh MakeGltfMesh(const StoredMesh& mesh);
