// Feeds bytes to the decoders of compressed glTF, without a document around them: first what a document
// says of the data, in numbers that valid data can have, then the data.
#include "FuzzInput.h"
#include "provider/gltf/compression/Draco.h"
#include "provider/gltf/compression/Meshopt.h"

namespace {

void DecodeAsDraco(FuzzInput input) {
    const auto mostTriangles = input.Take<uint16_t>();
    DracoMesh mesh;
    std::string reason;
    if (!DecodeDraco(input.Bytes, mostTriangles, mesh, reason)) {
        Expect(!reason.empty());
        return;
    }
    Expect(mesh.Indices.size() % 3 == 0 && mesh.Indices.size() / 3 <= mostTriangles);
    Expect(std::ranges::all_of(mesh.Indices, [&](uint32_t index) { return index < mesh.Points; }));
    for (const DracoAttribute& attribute : mesh.Attributes) {
        Expect(attribute.Type != GltfType::None);
        Expect(mesh.Points == 0 || attribute.Bytes.size() % mesh.Points == 0);
    }
}

void DecodeAsMeshopt(FuzzInput input) {
    GltfMeshopt stream;
    stream.Mode = static_cast<MeshoptMode>(input.Below(4));
    stream.Filter = static_cast<MeshoptFilter>(input.Below(5));
    stream.Stride = input.Take<uint8_t>();
    stream.Count = input.Take<uint16_t>();
    std::vector<uint8_t> elements;
    std::string reason;
    if (DecodeMeshopt(input.Bytes, stream, elements, reason)) {
        Expect(elements.size() == stream.Count * stream.Stride);
        Expect(elements.size() <= input.Bytes.size() * LargestMeshoptGrowth);
    } else {
        Expect(!reason.empty());
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput input = {{data, size}};
    if (input.Below(2) == 0) {
        DecodeAsDraco(input);
    } else {
        DecodeAsMeshopt(input);
    }
    return 0;
}
