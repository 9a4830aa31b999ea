// One stored mesh made fit for glTF: finite, right-handed, with normals of unit length.
#pragma once

#include "inspect/stored/StoredScene.h"

#include <vector>

struct GltfMesh {
    std::vector<StoredVertex> Vertices; // Those that a triangle uses, Z negated.
    std::vector<uint32_t> Indices;      // Into Vertices, each triangle turned.
    uint64_t TrianglesLeftOut = 0;      // Those with a number that isn't finite.
};

GltfMesh MakeGltfMesh(const StoredMesh& mesh);
