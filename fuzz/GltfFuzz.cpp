// Feeds any bytes to the reader of glTF, binary or text. "p.png" is the one file beside it.
#include "CheckModel.h"
#include "FuzzInput.h"
#include "provider/gltf/GltfModel.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::span<const uint8_t> bytes(data, size);
    GltfParts parts = {{reinterpret_cast<const char*>(data), size}, {}};
    JsonTape json;
    Model model;
    std::string error;
    if ((IsGlb(bytes) && !SplitGlb(bytes, parts, error)) || !ParseJson(parts.Json, json, error)) {
        Expect(!error.empty());
        return 0;
    }
    if (!GltfVersion(json).starts_with("2")) {
        return 0;
    }
    const bool read = ReadGltfModel(parts, json, PictureFolder(), model, error);
    Expect(read || !error.empty());
    if (read) {
        CheckModel(std::move(model));
    }
    return 0;
}
