// Transformations as matrices.
#pragma once

#include <array>
#include <cstddef>

// A 4 by 4 matrix for row vectors, stored by rows: translation in 12 to 14, homogeneous scale in 15.
using Transform = std::array<double, 16>;
constexpr Transform IdentityTransform = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

// p' = p * Multiply(first, second) applies first, then second.
constexpr Transform Multiply(const Transform& first, const Transform& second) {
    Transform result = {};
    for (size_t row = 0; row < 4; ++row) {
        for (size_t column = 0; column < 4; ++column) {
            double sum = 0.0;
            for (size_t i = 0; i < 4; ++i) {
                sum += first[row * 4 + i] * second[i * 4 + column];
            }
            result[row * 4 + column] = sum;
        }
    }
    return result;
}
