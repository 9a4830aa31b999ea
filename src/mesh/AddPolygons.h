// Batching: the polygons of one list of entities become meshes, one batch per material.
#pragma once

#include "scene/SceneNode.h"

// The distance, in every one of a vertex's eight floats, below which vertices are one.
constexpr float WeldTolerance = 1e-5f;

// Appends the meshes of a list to the node, in ascending order of material: per material one batch,
// welded, and cut where it exceeds the size of a mesh. The list is empty afterwards: each pool is
// released as soon as its meshes are made, so that at no time all are held twice.
void AddPolygons(SceneNode& node, PolygonList& polygons);
