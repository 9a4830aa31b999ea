// Models in glTF 2: nodes become groups, primitives become faces.
#pragma once

#include "provider/gltf/GltfDocument.h"
#include "provider/model/Model.h"

// Fills an empty model. parts and json are as for ReadGltfDocument. Buffers and pictures are looked up
// in directory, which ends with a separator. Returns false, with the reason in error, if the document
// can't be used.
bool ReadGltfModel(const GltfParts& parts, const JsonTape& json, const std::u16string& directory,
                   Model& model, std::string& error);
