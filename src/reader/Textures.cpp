// Texture export. Files are written during the walk, so only for rows that are used.
#include "reader/Textures.h"

#include "api/SketchUpAPI.h"
#include "reader/LibraryReading.h"
#include "run/Log.h"
#include "run/Messages.h"

namespace {

enum class Attempt { None, Written, Failed };

Attempt AttemptFrom(bool written) {
    return written ? Attempt::Written : Attempt::Failed;
}

Attempt WriteOfMaterial(ModelImporter& importer, const MaterialEntry& entry) {
    int32_t type = MaterialTypePlain;
    SUMaterialGetType(entry.Material, &type);
    TextureHandle texture = {};
    if (SUMaterialGetTexture(entry.Material, &texture) != 0 || IsNull(texture) ||
        type == MaterialTypePlain) {
        return Attempt::None;
    }
    Log(importer, MessageWritingTexture, {entry.OutputPath});
    const std::optional<std::string> path = LibraryPath(entry.OutputPath);
    return AttemptFrom(path && SUTextureWriteToFile(texture, path->c_str()) == 0);
}

Attempt WriteOfImage(const ModelImporter& importer, const MaterialEntry& entry) {
    int32_t textureId = 0;
    const EntityHandle entity = SUImageToEntity(entry.Image);
    if (SUTextureWriterLoadEntity(importer.TextureWriter, entity, &textureId) != 0) {
        return Attempt::None;
    }
    const std::optional<std::string> path = LibraryPath(entry.OutputPath);
    return AttemptFrom(path && SUTextureWriterWriteTexture(importer.TextureWriter, textureId,
                                                           path->c_str(), false) == 0);
}

Attempt WriteRowPicture(ModelImporter& importer, const MaterialEntry& entry) {
    // An image that shares the row of a material shows the material's picture.
    if (!IsNull(entry.Material)) {
        return WriteOfMaterial(importer, entry);
    }
    return IsNull(entry.Image) ? Attempt::None : WriteOfImage(importer, entry);
}

} // namespace

TexturePaths NextTexturePaths(ModelImporter& importer) {
    ++importer.TextureCounter;
    const auto compose = [&importer](const std::u16string& directory) {
        return Format(u"%s%sTexture%d.png",
                      {directory, importer.TexturePrefix, importer.TextureCounter});
    };
    return {.OutputPath = compose(importer.OutputDirectory),
            .RelativePath = compose(importer.RelativeDirectory)};
}

void WriteMaterialTexture(ModelImporter& importer, MaterialEntry& entry) {
    if (importer.ImportStatus != StatusOk || entry.Written) {
        return;
    }
    entry.Written = true;
    if (WriteRowPicture(importer, entry) == Attempt::Failed) {
        Log(importer, MessageErrorTexture, {entry.SourceTextureName, entry.OutputPath});
        importer.ImportStatus = StatusTextureNotWritten;
    }
}
