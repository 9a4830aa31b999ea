// A scene as the page draws it: one list of triangles per material, and where the meshes of each node
// lie in these lists.
#pragma once

#include "inspect/stored/StoredScene.h"
#include "inspect/stored/Textures.h"

#include <string>
#include <vector>

// All triangles of one material, in the order of the file. The axes are right-handed, as in GltfMesh.
struct PageMaterial {
    bool UsesPicture = false;           // Has texture coordinates.
    bool IsMissing = false;             // UsesPicture, but the picture can't be used.
    const Texture* Picture = nullptr;   // Null if the picture is missing, too.
    std::vector<StoredVertex> Vertices; // Those that a triangle uses.
    std::vector<uint32_t> Indices;      // Into Vertices, three per triangle.
};

// One stored mesh. The drawn triangles of the meshes of a material lie one after the other.
struct PageMesh {
    uint32_t Node = 0;
    uint32_t Material = 0;
    uint64_t Vertices = 0;
    uint64_t Triangles = 0;
    uint64_t Drawn = 0; // Triangles without those that have a number which isn't finite.
};

struct PageScene {
    std::vector<PageMaterial> Materials; // In the order of their first mesh, as in SceneSummary.
    std::vector<PageMesh> Meshes;        // In the order of the file.
};

// The pictures belong to the shelf. Node matrices are not applied: in a finished scene they are the
// identity.
PageScene MakePageScene(const StoredScene& scene, TextureShelf& textures);
