// The walk through the nesting of the model, which gives the scene tree its shape.
//
// Every list of entities becomes a content node with its meshes; every group or instance in it becomes a
// transform node, which bears the element's matrix, with the content node of the element beneath it. The
// material index passed down is the row for whatever beneath has no material of its own.
#pragma once

#include "api/SketchUpAPI.h"
#include "run/ModelImporter.h"

// The content node of a list: its own faces and images, then its groups, then its instances, depth
// first. Null if the run has failed before; also given, incomplete, when it fails on the way.
std::unique_ptr<SceneNode> ImportEntities(ModelImporter& importer, EntitiesHandle entities,
                                          std::u16string name, int32_t inheritedIndex);
