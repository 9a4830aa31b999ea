// A scene as binary glTF 2.0 with embedded pictures.
//
// glTF's axes are right-handed, so Z is negated and each triangle is reversed. Colours become linear,
// texture coordinates stay. The tree keeps its shape, and each stored mesh becomes one primitive.
// Normals without length, which the format forbids, are replaced by that of a triangle at the vertex.
#pragma once

#include "inspect/stored/StoredScene.h"
#include "inspect/stored/Textures.h"

#include <string>

struct GltfFile {
    std::string Bytes;             // Empty if the scene exceeds the format's limit, 4 GiB.
    uint64_t TrianglesLeftOut = 0; // Those with a non-finite number, which glTF forbids.
};

// Node matrices are not applied: in a finished scene they are the identity.
GltfFile ExportGltf(const StoredScene& scene, TextureShelf& textures);
