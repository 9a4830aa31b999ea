// The materials of a scene that assimp has read.
#pragma once

#include "provider/model/Model.h"

#include <assimp/scene.h>
#include <string>
#include <vector>

// Appends all materials and their pictures to an empty model. coordinateSets receives, for each
// material, the set of texture coordinates that its picture uses. Pictures that can't be used are
// omitted, with a remark.
void ReadAssimpMaterials(const aiScene& scene, const std::u16string& directory, Model& model,
                         std::vector<uint32_t>& coordinateSets);
