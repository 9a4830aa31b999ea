// Texture files: their paths, and writing them.
#pragma once

#include "run/ModelImporter.h"

// Where the picture of a new texture number goes.
struct TexturePaths {
    std::u16string OutputPath;   // in the directory of the scene file
    std::u16string RelativePath; // as the scene file refers to it
};

// Hands out the next texture number and gives its paths.
TexturePaths NextTexturePaths(ModelImporter& importer);

// Writes the row's picture file at the first call for the row; later calls do nothing, whatever came of
// the first. A row without a picture is passed over without a word. A failed write is logged and sets
// ImportStatus, which ends the import.
void WriteMaterialTexture(ModelImporter& importer, MaterialEntry& entry);
