// Feeds bytes to the reader of glTF, binary or text. The one file beside it is "p.png".
#include "CheckModel.h"
#include "FuzzInput.h"
#include "provider/FileFormat.h"
#include "provider/gltf/GltfModel.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::span<const uint8_t> bytes(data, size);
    FoundFormat found;
    Model model;
    std::string error;
    if (!FindFormat(bytes, "", found, error)) {
        Expect(!error.empty());
        return 0;
    }
    if (found.Format != FileFormat::Gltf) {
        return 0;
    }
    const bool read = ReadGltfModel(found.Parts, std::move(found.Json), PictureFolder(), model, error);
    Expect(read || !error.empty());
    if (read) {
        CheckModel(std::move(model));
    }
    return 0;
}
