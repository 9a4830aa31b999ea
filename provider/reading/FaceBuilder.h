// Builds faces from triangulated geometry and appends them to Model::Faces.
#pragma once

#include "provider/model/Model.h"

#include <vector>

// The triangulation of one face as stored in a file. All arrays except Indices have one element per
// vertex or, where the comment allows it, none.
struct FaceGeometry {
    std::vector<Point3> Positions;
    std::vector<Point3> Normals;          // unit vertex normals of the front; none: one normal for all
    std::vector<Point3> FrontCoordinates; // s, t, q; none: by a mapping
    std::vector<Point3> BackCoordinates;  // the same
    std::vector<uint32_t> Indices;        // three per triangle, counter-clockwise seen from the front
};

// Appends a face with the given unit normal, whose side all triangles face.
void AddFace(Model& model, const FaceGeometry& geometry, Point3 normal);

// Appends the triangulation as one face if all triangles face the side of their common normal,
// otherwise as up to six faces, each with an axis as its normal.
void AddTriangulation(Model& model, const FaceGeometry& geometry);

// Sets the material of both sides of the faces from firstFace on. The back gets the texture coordinates
// of the front.
void CoverBothSides(Model& model, size_t firstFace, uint32_t material);

// Removes the vertices that no triangle uses.
void DropUnusedVertices(FaceGeometry& geometry);

// Makes separate vertices and a normal for each triangle; without area, the previous normal.
void MakeFlatNormals(FaceGeometry& geometry);

// Sets Normals to the sums of the normals of the triangles at each vertex, weighted by area.
void MakeSmoothNormals(FaceGeometry& geometry);
