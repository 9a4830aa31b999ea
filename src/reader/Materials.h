// The material table, filled from the model before the walk.
#pragma once

#include "tool/ModelImporter.h"

// Where the picture of a new texture number goes.
struct TexturePaths {
    std::u16string OutputPath;   // in the directory of the scene file
    std::u16string RelativePath; // as the scene file refers to it
};

// Hands out the next texture number and gives its paths.
TexturePaths NextTexturePaths(ModelImporter& importer);

// Appends a row and enters it where rows are looked for. Gives its index.
int32_t AppendRow(ModelImporter& importer, MaterialEntry entry);

// The first row, of a material or of an image, with this source texture name but for the case of A to Z;
// or -1.
int32_t FindSource(const ModelImporter& importer, std::u16string_view sourceTextureName);

// Appends the default row, then one row for each material of the model, used or not. Textured materials
// with the same source file name and the same red, green and blue share one file. A failing query leaves
// rows with less, or only the default row; nothing is logged and no status set.
void ImportMaterials(ModelImporter& importer);
