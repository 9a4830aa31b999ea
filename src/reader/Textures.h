// Names and writes texture files.
#pragma once

#include "run/ModelImporter.h"

// The paths of a new texture file.
struct TexturePaths {
    std::u16string OutputPath;   // in the directory of the scene file
    std::u16string RelativePath; // as the scene file refers to it
};

// Takes the next texture number and returns its paths.
TexturePaths NextTexturePaths(ModelImporter& importer);

// Writes the row's texture file on the first call for the row; later calls do nothing, even after a
// failure. Silently skips a row without a picture. A failed write is logged and sets ImportStatus, which
// ends the import.
void WriteMaterialTexture(ModelImporter& importer, MaterialEntry& entry);
