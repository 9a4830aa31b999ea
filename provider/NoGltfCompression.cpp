// Replaces the decoders of compressed glTF in builds without their libraries.
#include "provider/gltf/compression/Draco.h"
#include "provider/gltf/compression/Meshopt.h"

bool DecodeDraco(std::span<const uint8_t>, uint64_t, DracoMesh&, std::string& reason) {
    reason = "requires the draco library, which this build does not include";
    return false;
}

bool DecodeMeshopt(std::span<const uint8_t>, const GltfMeshopt&, std::vector<uint8_t>&,
                   std::string& reason) {
    reason = "requires the meshoptimizer library, which this build does not include";
    return false;
}
