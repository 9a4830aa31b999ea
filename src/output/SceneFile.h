// Writes the scene file.
#pragma once

#include "platform/ProgressLine.h"
#include "run/MaterialTable.h"
#include "run/OutputFile.h"
#include "scene/SceneNode.h"

// Writes the whole file to an open stream and flushes it: header, then the tree depth first, each mesh
// with its material. Expects a baked tree whose meshes refer to rows of the table. Returns false as soon
// as a write fails; bytes already written stay in the file. Shows the share that is written.
bool WriteScene(OutputFile& file, const SceneNode& root, const MaterialTable& materials,
                ProgressLine& progress);
