// Points and vectors in double precision. Pure arithmetic: no units, no limits.
#pragma once

#include <cmath>

struct Point3 {
    double X = 0.0;
    double Y = 0.0;
    double Z = 0.0;
};

// A point in single precision, for numbers that a file has in no other.
struct SinglePoint {
    float X = 0.0F;
    float Y = 0.0F;
    float Z = 0.0F;
};

constexpr Point3 ToDouble(SinglePoint a) {
    return {static_cast<double>(a.X), static_cast<double>(a.Y), static_cast<double>(a.Z)};
}

// Rounds, unless the numbers are floats already.
constexpr SinglePoint ToSingle(Point3 a) {
    return {static_cast<float>(a.X), static_cast<float>(a.Y), static_cast<float>(a.Z)};
}

constexpr Point3 operator+(Point3 a, Point3 b) {
    return {a.X + b.X, a.Y + b.Y, a.Z + b.Z};
}

constexpr Point3 operator-(Point3 a, Point3 b) {
    return {a.X - b.X, a.Y - b.Y, a.Z - b.Z};
}

constexpr Point3 operator*(double factor, Point3 a) {
    return {factor * a.X, factor * a.Y, factor * a.Z};
}

constexpr bool operator==(Point3 a, Point3 b) {
    return a.X == b.X && a.Y == b.Y && a.Z == b.Z;
}

constexpr double Dot(Point3 a, Point3 b) {
    return a.X * b.X + a.Y * b.Y + a.Z * b.Z;
}

constexpr Point3 Cross(Point3 a, Point3 b) {
    return {a.Y * b.Z - a.Z * b.Y, a.Z * b.X - a.X * b.Z, a.X * b.Y - a.Y * b.X};
}

// For lengths between 1e-150 and 1e150, which include all normals of single-precision triangles.
inline double Length(Point3 a) {
    return std::sqrt(Dot(a, a));
}

// The unit vector in the direction of a. Returns false, and leaves unit unchanged, if the length of a
// is 0 or not finite.
inline bool MakeUnit(Point3 a, Point3& unit) {
    const double length = Length(a);
    if (!(length > 0.0) || !std::isfinite(length)) {
        return false;
    }
    unit = {a.X / length, a.Y / length, a.Z / length};
    return true;
}

inline bool IsFinite(Point3 a) {
    return std::isfinite(a.X) && std::isfinite(a.Y) && std::isfinite(a.Z);
}
