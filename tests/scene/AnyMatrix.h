// Random vectors and matrices.
#pragma once

#include "scene/Matrix.h"

#include <cstdint>
#include <random>

// From -2 to 2, with all bits of a float, so that each rounding shows.
inline float AnyFloat(std::mt19937& random) {
    return (static_cast<float>(static_cast<uint32_t>(random()) >> 8) - 0x1p23f) * 0x1p-22f;
}

inline Vec3 AnyVector(std::mt19937& random) {
    const float x = AnyFloat(random);
    const float y = AnyFloat(random);
    return {x, y, AnyFloat(random)};
}

inline Matrix4 AnyMatrix(std::mt19937& random) {
    Matrix4 matrix;
    for (float& element : matrix.M) {
        element = AnyFloat(random);
    }
    return matrix;
}
