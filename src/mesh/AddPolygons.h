// Batching: converts the polygons of one list of entities to meshes, one batch per material.
#pragma once

#include "mesh/WeldVertices.h"
#include "scene/SceneNode.h"

// Vertices that differ by less than this in each of their eight floats are merged.
constexpr float WeldTolerance = 1e-5f;

// Appends the meshes of a polygon list to the node, in ascending order of row: one batch per row,
// welded, and split at the size of a mesh. Their arrays are taken from the memory. The list is empty
// afterwards. A large pool is released once its meshes are built, so that memory never holds everything
// twice; the scratch memory of small ones is kept.
void AddPolygons(SceneNode& node, PolygonList& polygons, WeldScratch& scratch, MeshMemory& memory);
