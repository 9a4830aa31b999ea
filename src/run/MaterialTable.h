// The table of everything that a surface can look like in this run, and the ways to find its rows.
#pragma once

#include "scene/MaterialEntry.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

constexpr int32_t DefaultMaterialIndex = 0;

// What a search gives that finds no row.
constexpr int32_t NoRow = -1;

// Rows are only appended, so an index stays valid to the end of the run; an address does not. Rows may
// share their name or their file. The maps hold the first row of each key, so that no search walks the
// rows: source texture names are in lower case, and a colour without its alpha may follow them.
struct MaterialTable {
    std::vector<MaterialEntry> Rows;
    std::unordered_map<uint64_t, int32_t> ByMaterial; // by the handle's value
    std::unordered_map<std::u16string, int32_t> BySource;
    std::unordered_map<std::u16string, int32_t> BySourceAndColor; // of rows with a picture file
};

// Gives the index of the new row.
int32_t AppendRow(MaterialTable& table, MaterialEntry entry);

// The row of a material of the model, or NoRow. A null handle has none.
int32_t FindMaterial(const MaterialTable& table, MaterialHandle material);

// The first row, of a material or of an image, with this source texture name, upper and lower case of A
// to Z being the same; or NoRow.
int32_t FindSource(const MaterialTable& table, std::u16string_view sourceTextureName);

// The first row with a picture file that has this source texture name and this red, green and blue: the
// one whose file is shared. Or NoRow.
int32_t FindPicture(const MaterialTable& table, std::u16string_view sourceTextureName, uint32_t color);
