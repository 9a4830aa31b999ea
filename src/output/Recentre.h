// Flattens the finished tree: bakes every transformation into the vertices.
#pragma once

#include "scene/SceneNode.h"

// Moves the tree's box to y = 0, centred on x = z = 0, and bakes all matrices into the vertices.
// Afterwards all node matrices are the identity and all vertices in scene coordinates. Order and counts
// don't change.
void Recentre(SceneNode& root);

// Extends the box by the positions of a node and its descendants, in the target coordinates of
// parentWorld.
void AccumulateBounds(const SceneNode& node, const Matrix4& parentWorld, BoundingBox& box);

// Applies the world matrices of a node and its descendants to their meshes and resets the node matrices.
void BakeTransforms(SceneNode& node, const Matrix4& parentWorld);

// Transforms positions by world and normals by its inverse transpose, and reverses the winding if world
// mirrors. If world is the identity within 1e-8, the mesh stays bit for bit. For a singular matrix the
// transpose replaces the inverse transpose.
void TransformMesh(SceneMesh& mesh, const Matrix4& world);
