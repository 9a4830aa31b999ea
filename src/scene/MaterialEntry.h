// The table of everything that a surface can look like in this run.
#pragma once

#include "api/Handles.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

// One row. Nothing but Written changes once a row is in the table.
struct MaterialEntry {
    std::u16string Name;         // of the material in the model; "Default" on row 0; empty for an image
    std::u16string OutputPath;   // picture file to write; empty without a texture, as the next two
    std::u16string RelativePath; // the same file as the scene file refers to it
    std::u16string OutputFileName;    // the last component of OutputPath
    std::u16string SourceTextureName; // file name in the model: the key by which rows share a file
    uint32_t Color = 0xFFFFFFFF;      // alpha in the top byte, then red, green, blue
    bool Written = false;             // whether writing the picture file has been tried
    MaterialHandle Material = {};     // null on row 0 and for an image
    ImageHandle Image = {};           // null on row 0 and for a material
};

// Rows are only appended, so an index stays valid to the end of the run; an address does not. Rows may
// share their name or their file.
using MaterialTable = std::vector<MaterialEntry>;

constexpr int32_t DefaultMaterialIndex = 0;

// Where to find rows without walking the table: the first row of each material handle, of each source
// texture name, and of each source texture name with a colour among those with a picture file. Names are
// folded to lower case, colours without alpha stand behind them.
struct MaterialRows {
    std::unordered_map<uint64_t, int32_t> ByMaterial;
    std::unordered_map<std::u16string, int32_t> BySource;
    std::unordered_map<std::u16string, int32_t> BySourceAndColor;
};

// The row of a material, or -1. A null handle has none.
int32_t FindMaterial(const MaterialRows& rows, MaterialHandle material);
