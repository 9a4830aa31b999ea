// Appends rows, and finds them by hashed keys.
#include "run/MaterialTable.h"

#include "platform/Text.h"

namespace {

// Red, green and blue of a colour.
constexpr uint32_t ColorBytes = 0x00FFFFFF;

std::u16string SourceAndColor(std::u16string_view sourceTextureName, uint32_t color) {
    std::u16string key = FoldCase(std::u16string(sourceTextureName));
    key += static_cast<char16_t>((color & ColorBytes) >> 16);
    key += static_cast<char16_t>(color & 0xFFFF);
    return key;
}

template <class Map, class Key> int32_t Find(const Map& rows, const Key& key) {
    const auto found = rows.find(key);
    return found == rows.end() ? NoRow : found->second;
}

} // namespace

int32_t AppendRow(MaterialTable& table, MaterialEntry entry) {
    const auto row = static_cast<int32_t>(table.Rows.size());
    // The maps keep the first row of each key.
    table.ByMaterial.emplace(entry.Material.Value, row);
    table.BySource.emplace(FoldCase(entry.SourceTextureName), row);
    if (!entry.OutputPath.empty()) {
        table.BySourceAndColor.emplace(SourceAndColor(entry.SourceTextureName, entry.Color), row);
    }
    table.Rows.push_back(std::move(entry));
    return row;
}

int32_t FindMaterial(const MaterialTable& table, MaterialHandle material) {
    return IsNull(material) ? NoRow : Find(table.ByMaterial, material.Value);
}

int32_t FindSource(const MaterialTable& table, std::u16string_view sourceTextureName) {
    return Find(table.BySource, FoldCase(std::u16string(sourceTextureName)));
}

int32_t FindPicture(const MaterialTable& table, std::u16string_view sourceTextureName, uint32_t color) {
    return Find(table.BySourceAndColor, SourceAndColor(sourceTextureName, color));
}
