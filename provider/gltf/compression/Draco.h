// The meshes of KHR_draco_mesh_compression.
#pragma once

#include "provider/gltf/records/GltfRecords.h"

#include <span>

struct DracoAttribute {
    uint32_t Id = 0;
    GltfType Type = GltfType::None;
    uint8_t Components = 0;
    std::vector<uint8_t> Bytes; // of all points, without gaps
};

struct DracoMesh {
    uint32_t Points = 0;
    std::vector<uint32_t> Indices; // three per triangle, below Points
    std::vector<DracoAttribute> Attributes;
};

// Decodes a mesh of at most mostTriangles triangles, and needs at most 250 bytes of memory for each of
// these. Attributes of types that glTF does not have are omitted. Returns false, with the reason, if the
// data can't be decoded; the reason completes the sentence "the data ...".
bool DecodeDraco(std::span<const uint8_t> bytes, uint64_t mostTriangles, DracoMesh& mesh,
                 std::string& reason);
