// The winding test by its definition.
#include "scene/Winding.h"

namespace {

// Returns the normal on the side from which a, b, c turn clockwise: (a - c) x (c - b), the reverse of
// the right-hand rule. It is normalised twice because Normalize leaves a short vector unchanged: a
// triangle almost without area gets (0, 1, 0), and one exactly at the threshold stays short. The second
// sum has an order of its own. Every rounding can affect the sign of a product near zero, so neither
// step can replace the other.
Vec3 ReversedNormal(const Vec3& a, const Vec3& b, const Vec3& c) {
    const Vec3 e1 = {a.X - c.X, a.Y - c.Y, a.Z - c.Z};
    const Vec3 e2 = {c.X - b.X, c.Y - b.Y, c.Z - b.Z};
    Vec3 n = {e1.Y * e2.Z - e1.Z * e2.Y, e1.Z * e2.X - e1.X * e2.Z, e1.X * e2.Y - e1.Y * e2.X};
    Normalize(n);
    const float length = std::sqrt((n.Y * n.Y + n.X * n.X) + n.Z * n.Z);
    if (static_cast<double>(length) > LengthThreshold) {
        const float inverse = 1.0f / length;
        n = {n.X * inverse, n.Y * inverse, n.Z * inverse};
    } else if (static_cast<double>(length) < LengthThreshold) {
        n = {0, 1, 0};
    }
    return n;
}

} // namespace

bool KeepsOrderLiterally(const Vec3& a, const Vec3& b, const Vec3& c, const Vec3& planeNormal) {
    const Vec3 n = ReversedNormal(a, b, c);
    const Vec3& p = planeNormal;
    return (n.Y * p.Y + n.X * p.X) + n.Z * p.Z < 0.0f;
}
