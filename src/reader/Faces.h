// Reads both sides of each visible face of a list as triangles.
#pragma once

#include "api/SketchUpAPI.h"
#include "reader/LibraryReading.h"
#include "run/ModelImporter.h"

// The factors that convert model units to texture coordinates.
struct TextureScale {
    float S = 1.0f;
    float T = 1.0f;
};

// One side of a face: its row, its direction and its scale.
struct FaceSide {
    bool IsFront = true;
    int32_t MaterialIndex = DefaultMaterialIndex;
    Vec3 PlaneNormal; // of this side; decides the winding, not stored
    TextureScale Scale;
};

// The data of one side from the mesh helper, in the library's axes, and what is built from it. Reused
// from side to side and from list to list, for its memory.
struct SideMesh {
    ClearedArray<double> Positions; // three per vertex, as the next two
    ClearedArray<double> Normals;
    ClearedArray<double> Stq;
    ClearedArray<uint64_t> Indices; // three per triangle; only the low 32 bits are used
    LargeArray<Vertex> Vertices;    // in scene axes, with the normals and coordinates of the side
    LargeArray<uint32_t> Corners;   // three per triangle, wound
    LargeArray<uint32_t> Numbers;   // scratch memory of AppendTriangles
};

// Appends the triangles of all visible faces of the list, for each face its front, then its back, in the
// coordinates of the list, Y up. A side without a material of its own inherits that of the inherited row
// or, for a back where that is row 0, of the front. Writes the texture files of used rows. Skips what
// can't be read, without logging it. The mesh is scratch memory.
void ImportFaces(ModelImporter& importer, EntitiesHandle entities, PolygonList& polygons,
                 int32_t inheritedIndex, SideMesh& mesh);

// Appends the triangles of one side, wound by the right-hand rule about the side's plane normal.
void ImportFaceSide(ModelImporter& importer, MeshHelperHandle meshHelper, PolygonList& polygons,
                    const FaceSide& side, SideMesh& mesh);
