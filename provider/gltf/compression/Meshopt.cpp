// Decodes streams by meshoptimizer, which checks their bytes. What it only asserts is checked here:
// counts, strides, modes and filters.
#include "provider/gltf/compression/Meshopt.h"

#include <meshoptimizer.h>

namespace {

constexpr uint64_t LargestStride = 256; // bytes

// The first byte of a stream has its kind and its version.
constexpr uint8_t VersionBits = 0x0F;
constexpr uint8_t VertexKind = 0xA0;
constexpr uint8_t TriangleKind = 0xE0;
constexpr uint8_t SequenceKind = 0xD0;

// The newest versions that the library decodes.
constexpr uint8_t VertexVersion = 0;
constexpr uint8_t IndexVersion = 1;

bool HasKnownForm(const GltfMeshopt& stream, std::string& reason) {
    if (stream.Mode == MeshoptMode::Unknown || stream.Filter == MeshoptFilter::Unknown) {
        reason = "has a mode or filter that is not supported";
        return false;
    }
    const uint64_t stride = stream.Stride;
    bool fits = false;
    if (stream.Mode == MeshoptMode::Attributes) {
        fits = stride > 0 && stride % 4 == 0 && stride <= LargestStride;
        fits = fits && (stream.Filter != MeshoptFilter::Octahedral || stride == 4 || stride == 8) &&
               (stream.Filter != MeshoptFilter::Quaternion || stride == 8);
    } else {
        fits = (stride == 2 || stride == 4) && stream.Filter == MeshoptFilter::None &&
               (stream.Mode == MeshoptMode::Indices || stream.Count % 3 == 0);
    }
    reason = "has a stride, count or filter that its mode can't have";
    return fits && stream.Count > 0;
}

bool HasKnownVersion(std::span<const uint8_t> bytes, MeshoptMode mode, std::string& reason) {
    if (bytes.empty()) {
        reason = "is empty";
        return false;
    }
    const bool isVertex = mode == MeshoptMode::Attributes;
    uint8_t kind = isVertex ? VertexKind : TriangleKind;
    kind = mode == MeshoptMode::Indices ? SequenceKind : kind;
    const uint8_t version = bytes[0] & VersionBits;
    if ((bytes[0] & ~VersionBits) == kind && version > (isVertex ? VertexVersion : IndexVersion)) {
        reason = "has version " + std::to_string(version) + ", which is newer than the library reads";
        return false;
    }
    return true;
}

bool DecodeElements(std::span<const uint8_t> bytes, const GltfMeshopt& stream,
                    std::vector<uint8_t>& elements) {
    const size_t count = stream.Count;
    const size_t stride = stream.Stride;
    if (stream.Mode == MeshoptMode::Attributes) {
        return meshopt_decodeVertexBuffer(elements.data(), count, stride, bytes.data(), bytes.size()) ==
               0;
    }
    if (stream.Mode == MeshoptMode::Triangles) {
        return meshopt_decodeIndexBuffer(elements.data(), count, stride, bytes.data(), bytes.size()) ==
               0;
    }
    return meshopt_decodeIndexSequence(elements.data(), count, stride, bytes.data(), bytes.size()) == 0;
}

} // namespace

bool DecodeMeshopt(std::span<const uint8_t> bytes, const GltfMeshopt& stream,
                   std::vector<uint8_t>& elements, std::string& reason) {
    if (!HasKnownForm(stream, reason) || !HasKnownVersion(bytes, stream.Mode, reason)) {
        return false;
    }
    if (stream.Count > bytes.size() * LargestMeshoptGrowth / stream.Stride) {
        reason = "is too short for its count";
        return false;
    }
    elements.resize(stream.Count * stream.Stride);
    if (!DecodeElements(bytes, stream, elements)) {
        reason = "is broken";
        return false;
    }
    if (stream.Filter == MeshoptFilter::Octahedral) {
        meshopt_decodeFilterOct(elements.data(), stream.Count, stream.Stride);
    } else if (stream.Filter == MeshoptFilter::Quaternion) {
        meshopt_decodeFilterQuat(elements.data(), stream.Count, stream.Stride);
    } else if (stream.Filter == MeshoptFilter::Exponential) {
        meshopt_decodeFilterExp(elements.data(), stream.Count, stream.Stride);
    }
    return true;
}
