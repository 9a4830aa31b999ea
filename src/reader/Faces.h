// Faces: both sides of each visible face of a list, read as triangles.
#pragma once

#include "api/SketchUpAPI.h"
#include "reader/LibraryReading.h"
#include "run/ModelImporter.h"

// The factors that turn coordinates in model units into texture coordinates.
struct TextureScale {
    float S = 1.0f;
    float T = 1.0f;
};

// One side of a face: which row it shows, and where it looks.
struct FaceSide {
    bool IsFront = true;
    int32_t MaterialIndex = DefaultMaterialIndex;
    Vec3 PlaneNormal; // of this side; decides the winding and is not stored
    TextureScale Scale;
};

// What the mesh helper tells of one side, in the library's axes, and what becomes of it.
struct SideMesh {
    ClearedArray<double> Positions; // three per vertex, as the next two
    ClearedArray<double> Normals;
    ClearedArray<double> Stq;
    ClearedArray<uint64_t> Indices; // three per triangle; the low 32 bits count
    std::vector<Vertex> Vertices;   // in scene axes, with the normals and coordinates of the side
};

// Appends the triangles of all visible faces of the list, for each face its front, then its back, in the
// coordinates of the list, Y up. A side without a material of its own takes over the one of the
// inherited row or, for backs where that is row 0, of the front. The picture files of used rows are
// written on the way. What can't be read is left out; nothing is logged here.
void ImportFaces(ModelImporter& importer, EntitiesHandle entities, PolygonList& polygons,
                 int32_t inheritedIndex);

// Appends the triangles of one side. Each turns by the right-hand rule about the side's plane normal.
// The mesh is scratch memory.
void ImportFaceSide(ModelImporter& importer, MeshHelperHandle meshHelper, PolygonList& polygons,
                    const FaceSide& side, SideMesh& mesh);
