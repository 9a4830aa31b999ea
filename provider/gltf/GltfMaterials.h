// The materials of a glTF document.
#pragma once

#include "provider/gltf/data/GltfDocument.h"
#include "provider/gltf/meshes/GltfSurface.h"

// Appends all materials and their pictures to an empty model, and a surface for each material. Pictures
// that can't be used are omitted, with a remark. Returns false, with place and reason in error, if a
// material isn't an object.
bool ReadGltfMaterials(GltfDocument& document, const JsonTape& json, const std::u16string& directory,
                       Model& model, std::vector<GltfSurface>& surfaces, std::string& error);
