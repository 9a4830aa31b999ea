// The material table: one row for each look of a surface in this run, and the searches for rows.
#pragma once

#include "scene/MaterialEntry.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

constexpr int32_t DefaultMaterialIndex = 0;

// The result of a search that finds no row.
constexpr int32_t NoRow = -1;

// Rows are only appended: indices stay valid to the end of the run, addresses don't. Rows may share a
// name or a texture file. The maps hold the first row of each key, so that no search scans the rows.
// Source texture names in keys are in lower case, in BySourceAndColor followed by the colour without
// alpha.
struct MaterialTable {
    std::vector<MaterialEntry> Rows;
    std::unordered_map<uint64_t, int32_t> ByMaterial; // by the handle's value
    std::unordered_map<std::u16string, int32_t> BySource;
    std::unordered_map<std::u16string, int32_t> BySourceAndColor; // of rows with a texture file
};

// Returns the index of the new row.
int32_t AppendRow(MaterialTable& table, MaterialEntry entry);

// Returns the row of a material of the model, or NoRow. A null handle has none.
int32_t FindMaterial(const MaterialTable& table, MaterialHandle material);

// Returns the first row, of a material or an image, with this source texture name, ignoring the case of
// A to Z, or NoRow.
int32_t FindSource(const MaterialTable& table, std::u16string_view sourceTextureName);

// Returns the first row with a texture file, this source texture name and this red, green and blue, or
// NoRow. The texture file of that row is shared.
int32_t FindPicture(const MaterialTable& table, std::u16string_view sourceTextureName, uint32_t color);
