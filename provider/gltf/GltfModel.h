// Models in glTF 2: nodes become groups, primitives become faces.
#pragma once

#include "provider/gltf/data/GltfParts.h"
#include "provider/model/Model.h"
#include "provider/reading/JsonTape.h"

// Fills an empty model. json is the tape of parts.Json. Buffers and pictures are looked up in directory,
// which ends with a separator. Returns false, with place and reason in error, if the document can't be
// used.
bool ReadGltfModel(const GltfParts& parts, JsonTape json, const std::u16string& directory, Model& model,
                   std::string& error);
