// Vectors, matrices and boxes in single precision.
//
// Each operation fixes the order of its sums. Every product and every sum is rounded separately, so
// results are identical to the last bit on every system. Double precision is used only where stated.
#pragma once

#include <algorithm>

struct Vec3 {
    float X = 0;
    float Y = 0;
    float Z = 0;
};

// Row-major: element [4 * row + column]. Points are row vectors to the left of the matrix, p' = p * M.
// Rows 0 to 2 are the images of the axes, elements 12 to 14 the translation, element 15 the homogeneous
// scale.
struct Matrix4 {
    float M[16] = {};
};

constexpr Matrix4 Identity = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};

// Minimum and maximum per axis.
struct BoundingBox {
    Vec3 Min;
    Vec3 Max;
};

// Beyond any model, in model units. Every box starts with it and keeps it on an axis without points.
constexpr float BoxLimit = 9999999.0f;

constexpr BoundingBox EmptyBox = {{BoxLimit, BoxLimit, BoxLimit}, {-BoxLimit, -BoxLimit, -BoxLimit}};

// Normalize leaves a vector of this length or less unchanged. Compared in double precision.
constexpr double LengthThreshold = 1e-5;

// Scales v to unit length, with one reciprocal and three products.
void Normalize(Vec3& v);

// Replaces a by a * b: the transformation a, followed by b.
void Multiply(Matrix4& a, const Matrix4& b);

// Transforms the point p by m and divides it by w, the reciprocal and the three products in double
// precision. A w of 0 follows IEEE arithmetic. A w of 1, that of nearly all points, divides nothing.
inline void TransformPoint(const Matrix4& m, Vec3& p) {
    const float x = ((p.X * m.M[0] + p.Y * m.M[4]) + p.Z * m.M[8]) + m.M[12];
    const float y = ((p.X * m.M[1] + p.Y * m.M[5]) + p.Z * m.M[9]) + m.M[13];
    const float z = ((p.X * m.M[2] + p.Y * m.M[6]) + p.Z * m.M[10]) + m.M[14];
    const float w = ((p.X * m.M[3] + p.Y * m.M[7]) + p.Z * m.M[11]) + m.M[15];
    p = {x, y, z};
    if (w != 1.0f) {
        const double reciprocal = 1.0 / static_cast<double>(w);
        p.X = static_cast<float>(static_cast<double>(x) * reciprocal);
        p.Y = static_cast<float>(static_cast<double>(y) * reciprocal);
        p.Z = static_cast<float>(static_cast<double>(z) * reciprocal);
    }
}

// Transforms the direction n by the upper 3 x 3 part of m and normalises it.
void TransformNormal(const Matrix4& m, Vec3& n);

// Replaces m by its inverse and returns 0. Leaves a singular m unchanged and returns 1.
int Invert(Matrix4& m);

// Whether the upper 3 x 3 part of m reverses handedness. False if a row is zero.
bool IsMirrored(const Matrix4& m);

// Extends the box by p. A coordinate that is equal or not a number changes nothing.
inline void ExtendBox(BoundingBox& box, const Vec3& p) {
    box.Min = {std::min(box.Min.X, p.X), std::min(box.Min.Y, p.Y), std::min(box.Min.Z, p.Z)};
    box.Max = {std::max(box.Max.X, p.X), std::max(box.Max.Y, p.Y), std::max(box.Max.Z, p.Z)};
}
