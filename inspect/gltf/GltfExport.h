// A scene as binary glTF 2.0 with its pictures inside.
//
// glTF's axes are right-handed, so Z changes its sign and each triangle turns; colours become linear,
// texture coordinates stay. The tree keeps its shape, each stored mesh becoming one primitive. Normals
// without length, which the format forbids, are replaced by that of a triangle at the vertex.
#pragma once

#include "inspect/stored/StoredScene.h"
#include "inspect/stored/Textures.h"

#include <string>

struct GltfFile {
    std::string Bytes; // Empty if the scene is too large for the format, which ends at 4 GiB.
    uint64_t TrianglesLeftOut = 0; // Those with a number that isn't finite, which glTF can't hold.
};

// Node matrices aren't applied: in a finished scene they are the identity.
GltfFile ExportGltf(const StoredScene& scene, TextureShelf& textures);
