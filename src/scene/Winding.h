// The winding test of triangles.
#pragma once

#include "scene/Matrix.h"

#include <cmath>

// Whether a, b, c already turn by the right-hand rule about the plane normal. If not, or if
// undetermined, the triangle is stored as c, b, a. This is the definition, step by step, with two square
// roots.
bool KeepsOrderLiterally(const Vec3& a, const Vec3& b, const Vec3& c, const Vec3& planeNormal);

// The same without roots, where these cannot change the answer; otherwise literally.
//
// The definition scales the cross product n twice by positive factors, k in all, to a length of 1, which
// rounds each component twice, and takes the sign of its product with the plane normal p. Let S be the
// sum of the |n_i p_i|, and u = 2^-24 half a unit of the last place. Both ways use the same n.
//
// - A square of n above 1e-9 means a length above 3e-5, so both steps scale; one below 1e30, and no
//   |p_i| above 2, mean that nothing overflows, and that k is at least 1e-15.
// - The definition's result differs from k (n p) by at most 6 u k S for the roundings, and by less than
//   2^-144 for products too small for a normal float. The sum below differs from n p by at most 3 u S,
//   and by less than 2^-147.
// - If the sum exceeds 1e-5 S, then |n p| exceeds 9e-6 S, and k |n p| exceeds 9e-6 k S: more than
//   6 u k S = 4e-7 k S and, with S above 1e-20, by far more than 2^-144. So both have the sign of n p.
inline bool KeepsOrder(const Vec3& a, const Vec3& b, const Vec3& c, const Vec3& planeNormal) {
    const Vec3 e1 = {a.X - c.X, a.Y - c.Y, a.Z - c.Z};
    const Vec3 e2 = {c.X - b.X, c.Y - b.Y, c.Z - b.Z};
    const Vec3 n = {e1.Y * e2.Z - e1.Z * e2.Y, e1.Z * e2.X - e1.X * e2.Z, e1.X * e2.Y - e1.Y * e2.X};
    const Vec3& p = planeNormal;
    const Vec3 terms = {n.X * p.X, n.Y * p.Y, n.Z * p.Z};
    const float sum = (terms.Y + terms.X) + terms.Z;
    const float size = (std::fabs(terms.Y) + std::fabs(terms.X)) + std::fabs(terms.Z);
    const float square = (n.X * n.X + n.Y * n.Y) + n.Z * n.Z;
    const float planeSquare = (p.X * p.X + p.Y * p.Y) + p.Z * p.Z;
    // False for what is not a number.
    if (square > 1e-9f && square < 1e30f && planeSquare <= 4.0f && size > 1e-20f &&
        std::fabs(sum) > 1e-5f * size) {
        return sum < 0.0f;
    }
    return KeepsOrderLiterally(a, b, c, planeNormal);
}
