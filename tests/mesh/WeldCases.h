// Pools that reveal mistakes in welding: vertices within a few tolerances of each other, at cell
// borders, with floats of every kind.
#pragma once

#include "scene/SceneNode.h"

#include <cstdint>
#include <vector>

struct WeldCase {
    std::vector<Vertex> Vertices;
    std::vector<uint32_t> Indices;
    float Tolerance = 0;
};

// A function of the number. Among 48 consecutive numbers are both kinds of pools, small and large ones.
WeldCase MakeWeldCase(uint32_t number);
