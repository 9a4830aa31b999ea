// Models in the formats of the assimp library: COLLADA, OBJ, FBX, 3DS, PLY, STL, IFC and others. A
// build can omit the library.
#pragma once

#include "provider/model/Model.h"

#include <string>
#include <string_view>

struct aiScene;

// Whether a file name's ending, with its dot, belongs to a format that assimp reads, even if this build
// omits assimp.
bool IsAssimpEnding(std::string_view ending);

// Fills an empty model. ending, with its dot, is that of the format that the content identifies, or
// empty if the path's own applies. Returns false, with the reason in error, if the file can't be used.
bool ReadAssimpModel(const std::u16string& path, std::string_view ending, Model& model,
                     std::string& error);

// The same for a scene from assimp, which must have a root. Pictures are looked up in directory, which
// ends with a separator.
bool ReadAssimpScene(const aiScene& scene, const std::u16string& directory, Model& model,
                     std::string& error);
