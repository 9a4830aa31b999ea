// Pools on which a mistake in welding shows: vertices within a few tolerances of each other, at the
// borders of cells, with floats of every kind.
#pragma once

#include "scene/SceneNode.h"

#include <cstdint>
#include <vector>

struct WeldCase {
    std::vector<Vertex> Vertices;
    std::vector<uint32_t> Indices;
    float Tolerance = 0;
};

// Always the same for the same number. All kinds of pools come round every few numbers.
WeldCase MakeWeldCase(uint32_t number);
