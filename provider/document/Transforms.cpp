// The transformations of a model document, as matrices for row vectors.
#include "provider/document/Transforms.h"

#include <numbers>

constexpr double DegreesOfHalfTurn = 180.0;

// Rounds values between -1 and 1 to multiples of 2^-40. Quarter turns are then exact, so that a rotated
// box stays a box. Systems whose sines differ in the last bits get the same result.
static double RoundToGrid(double value) {
    constexpr double steps = 1099511627776.0;
    return std::round(value * steps) / steps;
}

Transform ScaleTransform(Point3 factors) {
    return {factors.X, 0, 0, 0, 0, factors.Y, 0, 0, 0, 0, factors.Z, 0, 0, 0, 0, 1};
}

Transform RotateTransform(Point3 axis, double degrees) {
    const double radians = degrees / DegreesOfHalfTurn * std::numbers::pi;
    const double sine = RoundToGrid(std::sin(radians));
    const double cosine = RoundToGrid(std::cos(radians));
    const double rest = 1.0 - cosine;
    const auto [x, y, z] = axis;
    return {cosine + rest * x * x,
            rest * x * y + sine * z,
            rest * x * z - sine * y,
            0,
            rest * x * y - sine * z,
            cosine + rest * y * y,
            rest * y * z + sine * x,
            0,
            rest * x * z + sine * y,
            rest * y * z - sine * x,
            cosine + rest * z * z,
            0,
            0,
            0,
            0,
            1};
}

Transform MoveTransform(Point3 offset) {
    return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, offset.X, offset.Y, offset.Z, 1};
}
