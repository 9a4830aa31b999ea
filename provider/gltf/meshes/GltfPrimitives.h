// The triangles of a glTF document's meshes.
#pragma once

#include "provider/gltf/meshes/GltfSurface.h"
#include "provider/gltf/meshes/PosedVertices.h"

struct PrimitiveReading {
    GltfDocument& Document;
    const std::vector<GltfSurface>& Surfaces; // of each material, which has the same index in Output
    Model& Output;
    std::string& Error;
};

// Appends the faces of a mesh in a pose. Returns false, with place and reason in Error, if one of its
// primitives can't be read. Primitives of points and lines have no faces.
bool AddMeshFaces(PrimitiveReading& reading, uint32_t mesh, const GltfPose& pose);

// Reserves memory for the least that all meshes need, and for seams.
void ReserveFaces(GltfDocument& document, Model& model);
