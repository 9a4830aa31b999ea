// Writes the scene file.
#pragma once

#include "run/MaterialTable.h"
#include "run/OutputFile.h"
#include "scene/SceneNode.h"

// Writes the whole file to an open stream and flushes it: header, then the tree depth first, each mesh
// with its material. Expects a baked tree whose meshes refer to rows of the table. Returns false as soon
// as a write fails; bytes already written stay in the file.
bool WriteScene(OutputFile& file, const SceneNode& root, const MaterialTable& materials);

// Writes one node block: the node, its meshes, its children.
bool WriteNode(const SceneNode& node, OutputFile& file, const MaterialTable& materials);

// Writes one mesh block: mesh and material records, name and texture path of the material, arrays.
bool WriteMesh(const SceneMesh& mesh, OutputFile& file, const MaterialTable& materials);
