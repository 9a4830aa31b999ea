// Walks the nested lists of entities of the model and builds the scene tree.
//
// Every list of entities becomes a content node with its meshes. Every group or instance in it becomes a
// transform node, which has the element's matrix and the content node of the element as its child. The
// inherited index is the row for everything below without a material of its own.
#pragma once

#include "api/SketchUpAPI.h"
#include "run/ModelImporter.h"

// Returns the content node of a list: its own images and faces, then its groups, then its instances,
// depth first. Returns null if the run has already failed, an incomplete node if it fails during the
// walk.
std::unique_ptr<SceneNode> ImportEntities(ModelImporter& importer, EntitiesHandle entities,
                                          std::u16string name, int32_t inheritedIndex);
