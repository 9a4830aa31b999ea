// Opens a model file of any supported format: reads its bytes and selects its reader.
#include "provider/OpenModel.h"

#include "platform/Files.h"
#include "platform/Text.h"
#include "provider/FileFormat.h"
#include "provider/assimp/AssimpModel.h"
#include "provider/document/ModelDocument.h"
#include "provider/gltf/GltfModel.h"

// The ending of a path's last component in lower case, with its dot.
static std::string EndingOfPath(const std::u16string& path) {
    const std::u16string name = LastComponent(path);
    const size_t dot = name.rfind(u'.');
    return dot != std::u16string::npos ? FoldCase(Utf8FromUtf16(name.substr(dot))) : std::string();
}

bool OpenModel(const std::u16string& path, Model& model, std::string& error) {
    LargeArray<uint8_t> bytes;
    if (!ReadWholeFile(path, bytes)) {
        error = "the file can't be found or read";
        return false;
    }
    FoundFormat found;
    if (!FindFormat(bytes, EndingOfPath(path), found, error)) {
        return false;
    }
    switch (found.Format) {
    case FileFormat::ModelDocument:
        bytes.Release(); // the tape has its contents
        return ReadModelDocument(found.Json, DirectoryPart(path), model, error);
    case FileFormat::Gltf:
        return ReadGltfModel(found.Parts, std::move(found.Json), DirectoryPart(path), model, error);
    case FileFormat::Assimp:
        bytes.Release(); // assimp reads the file itself
        return ReadAssimpModel(path, found.Ending, model, error);
    }
    return false;
}
