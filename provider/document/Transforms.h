// The transformations that a model document can state, as matrices for row vectors.
#pragma once

#include "provider/model/Model.h"

// p' = p * Multiply(first, second) applies first, then second.
Transform Multiply(const Transform& first, const Transform& second);

Transform ScaleTransform(Point3 factors);
// Counter-clockwise when looked at against the axis, which has length 1.
Transform RotateTransform(Point3 axis, double degrees);
Transform MoveTransform(Point3 offset);
