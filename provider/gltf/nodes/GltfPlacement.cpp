// Placements from the numbers of a document.
#include "provider/gltf/nodes/GltfPlacement.h"

#include "provider/gltf/records/GltfFields.h"

#include <algorithm>

Transform RotationOf(const std::array<double, 4>& quaternion) {
    const auto [x, y, z, w] = quaternion;
    return {1 - 2 * (y * y + z * z),
            2 * (x * y + z * w),
            2 * (x * z - y * w),
            0,
            2 * (x * y - z * w),
            1 - 2 * (x * x + z * z),
            2 * (y * z + x * w),
            0,
            2 * (x * z + y * w),
            2 * (y * z - x * w),
            1 - 2 * (x * x + y * y),
            0,
            0,
            0,
            0,
            1};
}

void Scale(Transform& transform, std::span<const double> factors) {
    for (size_t i = 0; i < 9; ++i) {
        transform[i / 3 * 4 + i % 3] *= factors[i / 3];
    }
}

Transform ReadPlacement(const JsonTape& json, uint32_t node) {
    Transform transform = IdentityTransform;
    if (ArrayMember(json, node, "matrix") != 0) {
        ReadNumbers(json, node, "matrix", transform);
        return transform;
    }
    std::array<double, 4> rotation = {};
    std::array<double, 3> scale = {};
    std::array<double, 3> translation = {};
    if (ReadNumbers(json, node, "rotation", rotation)) {
        transform = RotationOf(rotation);
    }
    if (ReadNumbers(json, node, "scale", scale)) {
        Scale(transform, scale);
    }
    if (ReadNumbers(json, node, "translation", translation)) {
        std::ranges::copy(translation, transform.begin() + 12);
    }
    return transform;
}
