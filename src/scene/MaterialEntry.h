// The look of a surface.
#pragma once

#include "api/Handles.h"

#include <cstdint>
#include <string>

// One row of the MaterialTable. Only Written changes once the row is in the table.
struct MaterialEntry {
    std::u16string Name;         // of the material in the model; "Default" in row 0; empty for an image
    std::u16string OutputPath;   // texture file to write; empty without a texture, as the next two
    std::u16string RelativePath; // the same file, as the scene file refers to it
    std::u16string OutputFileName;    // the last component of OutputPath
    std::u16string SourceTextureName; // file name in the model: the key for sharing a texture file
    uint32_t Color = 0xFFFFFFFF;      // alpha in the top byte, then red, green, blue
    bool Written = false;             // whether writing the texture file was attempted
    MaterialHandle Material = {};     // null in row 0 and for an image
    ImageHandle Image = {};           // null in row 0 and for a material
};
