// The placements of nodes and instances, in glTF's axes. A matrix for column vectors, stored by columns,
// equals one for row vectors, stored by rows.
#pragma once

#include "provider/model/Model.h"
#include "provider/reading/JsonTape.h"

#include <span>

// x, y, z, w; of length 1 for a rotation.
Transform RotationOf(const std::array<double, 4>& quaternion);

// Multiplies the first three rows by a factor each.
void Scale(Transform& transform, std::span<const double> factors);

// The placement of a node: its matrix, or its scale, rotation and translation.
Transform ReadPlacement(const JsonTape& json, uint32_t node);
