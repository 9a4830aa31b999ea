// The transformations of a model document, as matrices for row vectors.
#pragma once

#include "provider/model/Model.h"

Transform ScaleTransform(Point3 factors);
// Counter-clockwise when the axis, of length 1, points at the viewer.
Transform RotateTransform(Point3 axis, double degrees);
Transform MoveTransform(Point3 offset);
