// The materials of a scene that assimp has read.
#pragma once

#include "provider/model/Model.h"

#include <assimp/scene.h>
#include <string>
#include <vector>

// Appends all materials and the pictures that they show to an empty model. coordinateSets receives, for
// each material, the set of texture coordinates that its picture follows. Pictures that can't be used
// are left out, with a remark.
void ReadAssimpMaterials(const aiScene& scene, const std::u16string& directory, Model& model,
                         std::vector<uint32_t>& coordinateSets);
