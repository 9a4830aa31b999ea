// Flattening the finished tree: every transformation goes into the vertices.
#pragma once

#include "scene/SceneNode.h"

// Stands the tree on the ground, its box centred on x = z = 0, and bakes all matrices into the vertices.
// All node matrices are the identity afterwards, and all vertices in scene coordinates. Order and counts
// stay.
void Recentre(SceneNode& root);

// Takes the positions of a node and of all below it into the box, in the coordinates that parentWorld
// leads to.
void AccumulateBounds(const SceneNode& node, const Matrix4& parentWorld, BoundingBox& box);

// Multiplies the world matrices of a node and of all below it into their meshes and resets them.
void BakeTransforms(SceneNode& node, const Matrix4& parentWorld);

// Sends positions through world, normals through its inverse transpose, and turns the winding back where
// world mirrors. A mesh whose world is the identity within 1e-8 stays bit for bit. Under a singular
// matrix the transpose stands for the inverse transpose.
void TransformMesh(SceneMesh& mesh, const Matrix4& world);
