// Models in the formats of the assimp library: COLLADA, OBJ, FBX, 3DS, PLY, STL, IFC and others. A build
// can leave the library out.
#pragma once

#include "provider/model/Model.h"

#include <string>
#include <string_view>

struct aiScene;

// Whether a file name's ending, with its dot, belongs to a format that is read through the library, also
// if this build lacks it.
bool IsAssimpEnding(std::string_view ending);

// Fills an empty model. ending, with its dot, is the one of the format that the content shows, or empty
// where the path's own serves. Gives false, and the reason in error, when the file can't be
// used.
bool ReadAssimpModel(const std::u16string& path, std::string_view ending, Model& model,
                     std::string& error);

// The same for a scene that the library has delivered. It must have a root; directory, with its closing
// separator, is where pictures are looked for.
bool ReadAssimpScene(const aiScene& scene, const std::u16string& directory, Model& model,
                     std::string& error);
