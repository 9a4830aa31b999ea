// Vectors, matrices and boxes in single precision.
//
// Each operation fixes the order of its sums: every product and every sum is rounded on its own, so that
// results are the same to the last bit on every system. Double precision occurs only where it is told.
#pragma once

struct Vec3 {
    float X = 0;
    float Y = 0;
    float Z = 0;
};

// Row-major: element [4 * row + column]. Points are row vectors to the left of the matrix, p' = p * M,
// so rows 0 to 2 are the images of the axes, elements 12 to 14 the translation and element 15 the
// homogeneous scale.
struct Matrix4 {
    float M[16] = {};
};

constexpr Matrix4 Identity = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};

// Minimum and maximum per axis.
struct BoundingBox {
    Vec3 Min;
    Vec3 Max;
};

// Beyond any model, in model units: the start of every box, and what it keeps on an axis without a
// point.
constexpr float BoxLimit = 9999999.0f;

constexpr BoundingBox EmptyBox = {{BoxLimit, BoxLimit, BoxLimit}, {-BoxLimit, -BoxLimit, -BoxLimit}};

// A vector whose length is this or less is left as it is by Normalize. Compared in double precision.
constexpr double LengthThreshold = 1e-5;

// Scales v to unit length, by one reciprocal and three products.
void Normalize(Vec3& v);

// a becomes a * b: what a does, followed by what b does.
void Multiply(Matrix4& a, const Matrix4& b);

// Sends the point p through m and divides it by its w, the reciprocal and the three products in double
// precision. A w of 0 gives what IEEE arithmetic gives.
void TransformPoint(const Matrix4& m, Vec3& p);

// Sends the direction n through the upper 3 x 3 part of m and normalises it.
void TransformNormal(const Matrix4& m, Vec3& n);

// m becomes its inverse, and the result is 0; or m is singular, stays as it is, and the result is 1.
int Invert(Matrix4& m);

// Whether the upper 3 x 3 part of m reverses handedness. False where a row is zero.
bool IsMirrored(const Matrix4& m);

// Takes p into the box. A coordinate that is not a number changes nothing.
void ExtendBox(BoundingBox& box, const Vec3& p);
