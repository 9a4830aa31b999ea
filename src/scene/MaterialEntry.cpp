// Looking up material rows.
#include "scene/MaterialEntry.h"

int32_t FindMaterial(const MaterialTable& table, MaterialHandle material) {
    if (IsNull(material)) {
        return -1;
    }
    for (size_t row = 0; row < table.size(); ++row) {
        if (table[row].Material.Value == material.Value) {
            return static_cast<int32_t>(row);
        }
    }
    return -1;
}
