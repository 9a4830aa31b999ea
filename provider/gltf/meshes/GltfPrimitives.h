// The triangles of a glTF document's meshes.
#pragma once

#include "provider/gltf/meshes/GltfSurface.h"
#include "provider/gltf/meshes/PosedVertices.h"
#include "provider/gltf/meshes/SingleFaces.h"
#include "provider/reading/FaceBuilder.h"

struct PrimitiveReading {
    GltfDocument& Document;
    const std::vector<GltfSurface>& Surfaces; // of each material, which has the same index in Output
    Model& Output;
    std::string& Error;

    // Memory that one primitive leaves to the next.
    FaceGeometry Geometry;
    SingleScratch Singles;
};

// Appends the faces of a mesh in a pose. Returns false, with place and reason in Error, if one of its
// primitives can't be read. Primitives of points and lines have no faces.
bool AddMeshFaces(PrimitiveReading& reading, uint32_t mesh, const GltfPose& pose);

// Reserves memory for the numbers that files usually have: floats, and some for seams.
void ReserveFaces(GltfDocument& document, Model& model);
