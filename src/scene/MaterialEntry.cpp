// Looking up material rows.
#include "scene/MaterialEntry.h"

int32_t FindMaterial(const MaterialRows& rows, MaterialHandle material) {
    const auto found = rows.ByMaterial.find(material.Value);
    return found == rows.ByMaterial.end() || IsNull(material) ? -1 : found->second;
}
