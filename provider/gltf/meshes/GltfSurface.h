// How materials map their pictures.
#pragma once

#include <array>
#include <cstdint>

// How a material maps its picture. The texture coordinates (u, v) of a set are transformed to
// u' = U[0] u + U[1] v + U[2], and v' by V in the same way.
struct GltfSurface {
    uint32_t CoordinateSet = 0;
    std::array<double, 3> U = {1.0, 0.0, 0.0};
    std::array<double, 3> V = {0.0, 1.0, 0.0};
};
