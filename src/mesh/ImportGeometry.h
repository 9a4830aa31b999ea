// The bridge from the reader to the meshes of a node.
#pragma once

#include "api/Handles.h"
#include "tool/ModelImporter.h"

// The distance, in every one of a vertex's eight floats, below which vertices are one.
constexpr float WeldTolerance = 1e-5f;

// Gathers the images and faces of one list of entities and appends their meshes to the node, in
// ascending order of material: per material one batch, welded, and cut where it exceeds the size of a
// mesh. What was gathered before a failed texture is batched all the same.
void ImportGeometry(ModelImporter& importer, EntitiesHandle entities, SceneNode& node,
                    int32_t inheritedIndex);

// Appends the meshes of a list to the node. The list is empty afterwards: each pool is released as soon
// as its meshes stand, so that at no time all are held twice.
void AddPolygons(SceneNode& node, PolygonList& polygons);
