// The faces of primitives whose numbers are floats in the file, straight from its bytes.
#pragma once

#include "provider/gltf/meshes/GltfSurface.h"
#include "provider/gltf/meshes/PosedVertices.h"
#include "provider/reading/FaceParts.h"

// All floats of a vertex in the file.
using VertexBits = std::array<uint64_t, 4>;

// Memory that one primitive leaves to the next.
struct SingleScratch {
    AxisOrder Order;
    // Of each vertex that has been placed, its index in Model::SinglePositions, plus one. Smaller
    // numbers than those of the present face are of earlier ones.
    LargeArray<uint32_t> Places;
    // The different vertices of the present face, by the hash of their bits.
    LargeArray<uint32_t> Slots;
    LargeArray<VertexBits> Different;
};

// The triangles of a primitive.
struct SingleTriangles {
    std::span<const uint32_t> Corners; // three per triangle, counted from the first of the range
    IndexRange Vertices;
};

// Appends the faces of a primitive as single faces. In each, vertices that are equal to the bit are one,
// unless fewer than three would remain. Returns false, with the model unchanged, if the primitive can't
// be read like this: it needs floats without replacements, all positions finite, normals, and no pose.
bool AddSingleFaces(Model& model, const PrimitiveSource& source, const GltfPose& pose,
                    const GltfSurface& surface, const SingleTriangles& triangles,
                    SingleScratch& scratch);
