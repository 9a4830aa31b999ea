// The walk through the nesting of the model, which gives the scene tree its shape.
//
// Every list of entities becomes a content node with its meshes; every group or instance in it becomes a
// transform node, which bears the element's matrix, with the content node of the element beneath it. The
// material index passed down is the row for whatever beneath has no material of its own.
#pragma once

#include "api/SketchUpAPI.h"
#include "tool/ModelImporter.h"

// The most lists of entities one inside the other, the model's own included. It is many times what
// people build, and all that follows a tree down needs less than 2 MB of stack for it, of the 8 that
// there are.
constexpr size_t NestingLimit = 1024;

// The content node of a list: its own faces and images, then its groups, then its instances, depth
// first. Null if the run has failed before; also given, incomplete, when it fails on the way.
std::unique_ptr<SceneNode> ImportEntities(ModelImporter& importer, EntitiesHandle entities,
                                          std::u16string name, int32_t inheritedIndex);

// A transformation of the model, translation in 12 to 14, as a matrix of the scene. Values are rounded
// to floats first; Y and Z are exchanged in rows and columns, and the fourth column keeps its place.
Matrix4 ConvertTransform(const double transform[TransformValues]);

// Whether an element is left out: its layer is invisible and it isn't hidden itself. A null element, and
// one about which a query fails, stays in.
bool IsExcludedByLayer(DrawingElementHandle element);
