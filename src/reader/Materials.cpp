// Reads the materials of the model.
#include "reader/Materials.h"

#include "api/SketchUpAPI.h"
#include "reader/LibraryReading.h"
#include "reader/Textures.h"
#include "run/Paths.h"

namespace {

constexpr uint32_t OpaqueAlpha = 0xFF000000;
constexpr uint32_t WhiteOpaque = 0xFFFFFFFF;

// Truncates to a signed 32-bit integer as x86 does: a value that doesn't fit becomes the lowest one.
int32_t TruncateToInt(double value) {
    constexpr double below = -2147483649.0;
    constexpr double above = 2147483648.0;
    return value > below && value < above ? static_cast<int32_t>(value)
                                          : std::numeric_limits<int32_t>::min();
}

uint32_t ReadAlpha(MaterialHandle material) {
    uint8_t useOpacity = 0;
    if (SUMaterialGetUseOpacity(material, &useOpacity) != 0 || useOpacity == 0) {
        return OpaqueAlpha;
    }
    double opacity = 0.0;
    SUMaterialGetOpacity(material, &opacity);
    return static_cast<uint32_t>(TruncateToInt(opacity * 255.0)) << 24;
}

// Returns alpha, red, green, blue. A colour that can't be read is opaque white, whatever the opacity.
uint32_t ReadColor(MaterialHandle material) {
    uint8_t rgba[4] = {};
    uint32_t color = WhiteOpaque;
    if (SUMaterialGetColor(material, rgba) == 0) {
        color = (static_cast<uint32_t>(rgba[0]) << 16) | (static_cast<uint32_t>(rgba[1]) << 8) | rgba[2];
    }
    return ReadAlpha(material) | color;
}

void ImportMaterial(ModelImporter& importer, MaterialHandle material) {
    TextureHandle texture = {};
    const bool hasTexture = SUMaterialGetTexture(material, &texture) == 0;
    MaterialEntry entry;
    entry.Material = material;
    entry.Color = ReadColor(material);
    int32_t type = MaterialTypePlain;
    SUMaterialGetType(material, &type);

    // The null handle is that of the default row, so it gets no row.
    if (IsNull(material) || FindMaterial(importer.MaterialTable, material) != NoRow) {
        return;
    }
    if (hasTexture && (type == MaterialTypeTextured || type == MaterialTypeColorized)) {
        entry.SourceTextureName = ReadText(texture, SUTextureGetFileName);
        const int32_t row = FindPicture(importer.MaterialTable, entry.SourceTextureName, entry.Color);
        if (row != NoRow) {
            const MaterialEntry& shared = importer.MaterialTable.Rows[static_cast<size_t>(row)];
            entry.OutputPath = shared.OutputPath;
            entry.RelativePath = shared.RelativePath;
        } else {
            TexturePaths paths = NextTexturePaths(importer);
            entry.OutputPath = std::move(paths.OutputPath);
            entry.RelativePath = std::move(paths.RelativePath);
        }
    }
    entry.Name = ReadText(material, SUMaterialGetName);
    entry.OutputFileName = FileNameOf(entry.OutputPath);
    AppendRow(importer.MaterialTable, std::move(entry));
}

} // namespace

void ImportMaterials(ModelImporter& importer) {
    if (importer.ImportStatus != StatusOk) {
        return;
    }
    // Its source texture name stays empty: an image without a file name finds this row by it and stays
    // plain, so that no texture file is written for it.
    MaterialEntry defaultRow;
    defaultRow.Name = u"Default";
    AppendRow(importer.MaterialTable, std::move(defaultRow));
    for (const MaterialHandle material : ReadList(importer.Model, SUModelGetNumAllMaterials,
                                                  SUModelGetAllMaterials, ReturnedCount::MustMatch)) {
        ImportMaterial(importer, material);
    }
}
