// Writing the scene file.
#pragma once

#include "run/MaterialTable.h"
#include "run/OutputFile.h"
#include "scene/SceneNode.h"

// Writes the whole file to an open stream and sends it to the system: header, then the tree depth first,
// each mesh with its material in front. Expects a baked tree whose meshes refer to rows of the table.
// False as soon as a write falls short; what went out by then stays in the file.
bool WriteScene(OutputFile& file, const SceneNode& root, const MaterialTable& materials);

// One node block: the node, its meshes, its children.
bool WriteNode(const SceneNode& node, OutputFile& file, const MaterialTable& materials);

// One mesh block: mesh and material records, name and texture path of the material, arrays.
bool WriteMesh(const SceneMesh& mesh, OutputFile& file, const MaterialTable& materials);
