// Faces of a model from ready geometry: what readers of files append to Model::Faces.
#pragma once

#include "provider/model/Model.h"

#include <vector>

// The triangulation of one face as a file gives it. All arrays but Indices have one element per vertex
// or, where the text says so, none.
struct FaceGeometry {
    std::vector<Point3> Positions;
    std::vector<Point3> Normals;          // unit vertex normals of the front; none: one normal for all
    std::vector<Point3> FrontCoordinates; // s, t, q; none: by a mapping
    std::vector<Point3> BackCoordinates;  // likewise
    std::vector<uint32_t> Indices;        // three per triangle, counter-clockwise seen from the front
};

// Appends a face with the given unit normal, to whose side all triangles turn.
void AddFace(Model& model, const FaceGeometry& geometry, Point3 normal);

// Appends the triangulation as one face if all triangles turn to the side of their common normal, or as
// up to six, each with an axis as its normal, if not.
void AddTriangulation(Model& model, const FaceGeometry& geometry);

// Makes both sides of the faces from firstFace on show a material of their own, the back with the
// texture coordinates of the front.
void CoverBothSides(Model& model, size_t firstFace, uint32_t material);

// Leaves out the vertices that no triangle uses.
void DropUnusedVertices(FaceGeometry& geometry);

// Gives each triangle vertices and a normal of its own; without area, the normal of the one before it.
void MakeFlatNormals(FaceGeometry& geometry);

// Sets Normals to the sums of the normals of the triangles at each vertex, weighted by area.
void MakeSmoothNormals(FaceGeometry& geometry);
