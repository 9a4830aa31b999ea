// Vector and matrix arithmetic: its roundings, inverses, and borders. Recentring is compared with double
// precision.
#include "scene/Matrix.h"

#include "scene/AnyMatrix.h"
#include "scene/Winding.h"

#include <array>
#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <iterator>
#include <limits>

namespace {

constexpr float NotANumber = std::numeric_limits<float>::quiet_NaN();

template <class Numbers> auto Bits(const Numbers& numbers) {
    return std::bit_cast<std::array<uint32_t, sizeof numbers / sizeof(float)>>(numbers);
}

// Any other bit in any of the numbers changes the sum.
template <class Numbers> void AddTo(uint64_t& checksum, const Numbers& numbers) {
    for (const uint32_t bits : Bits(numbers)) {
        checksum = (checksum ^ bits) * 0x9E3779B97F4A7C15;
    }
}

Vec3 Normalized(Vec3 v) {
    Normalize(v);
    return v;
}

} // namespace

// The checksums change with the order of a sum, and with a product or a quotient in another precision.
TEST(Matrix, RoundsInAFixedOrder) {
    std::mt19937 random(1);
    uint64_t products = 0;
    uint64_t points = 0;
    uint64_t normals = 0;
    uint64_t inverses = 0;
    for (int round = 0; round < 1000; ++round) {
        const Matrix4 a = AnyMatrix(random);
        Matrix4 b = AnyMatrix(random);
        Vec3 point = AnyVector(random);
        Vec3 normal = point;
        TransformPoint(a, point);
        TransformNormal(a, normal);
        AddTo(points, point);
        AddTo(normals, normal);
        EXPECT_EQ(Invert(b), 0);
        AddTo(inverses, b);
        Multiply(b, a);
        AddTo(products, b);
    }
    EXPECT_EQ(products, 9863470802513764966u);
    EXPECT_EQ(points, 2718455949067877717u);
    EXPECT_EQ(normals, 4529108419762170013u);
    EXPECT_EQ(inverses, 4524049703946637509u);
}

// With elements -1, 0 and 1 several can be the pivot, and many matrices are singular. Every fourth has
// elements that are not numbers.
TEST(Matrix, InvertsAndKeepsSingularMatrices) {
    std::mt19937 random(2);
    int singular = 0;
    for (int round = 0; round < 1000; ++round) {
        Matrix4 m = AnyMatrix(random);
        for (float& element : m.M) {
            element = std::round(element * 0.7f);
        }
        const bool isNumber = round % 4 != 0;
        for (auto count = isNumber ? 0 : 1 + random() % 16; count > 0; --count) {
            m.M[random() % 16] = NotANumber;
        }
        Matrix4 product = m;
        if (Invert(product) != 0) {
            EXPECT_EQ(Bits(product), Bits(m));
            ++singular;
            continue;
        }
        Multiply(product, m);
        for (size_t i = 0; i < 16 && isNumber; ++i) {
            EXPECT_NEAR(product.M[i], Identity.M[i], 1e-5f);
        }
    }
    EXPECT_EQ(singular, 506);
}

TEST(Matrix, KeepsShortVectors) {
    EXPECT_EQ(Bits(Normalized({0, -0.0f, 0})), Bits(Vec3{0, -0.0f, 0}));
    // The float nearest to 1e-5 is below the double threshold; the next one is above it.
    EXPECT_EQ(Normalized({1e-5f, 0, 0}).X, 1e-5f);
    EXPECT_NEAR(Normalized({std::nextafter(1e-5f, 1.0f), 0, 0}).X, 1.0f, 1e-6f);
    EXPECT_FALSE(IsMirrored({{-1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}})) << "a flat matrix";
}

TEST(Matrix, BoxKeepsInitialLimitsThatNothingExceeds) {
    BoundingBox box = EmptyBox;
    ExtendBox(box, {NotANumber, 2e7f, 1});
    ExtendBox(box, {NotANumber, 3e7f, -1});
    EXPECT_EQ(Bits(box), Bits(BoundingBox{{9999999, 9999999, -1}, {-9999999, 3e7f, 1}}));
}

// Triangles of every size, also without area, edge-on to the plane and beyond the range of floats. Both
// ways of the test are taken often.
TEST(Winding, EqualsTheDefinition) {
    std::mt19937 random(3);
    const float odd[] = {0.0f, -0.0f, 1e-45f, 1e-5f, 3.1e-5f, 1e20f, -3e38f, NotANumber, 2.5f};
    size_t kept = 0;
    for (int round = 0; round < 400000; ++round) {
        const float size = std::ldexp(1.0f, static_cast<int>(random() % 150) - 100);
        std::array<Vec3, 4> points; // the corners, and the plane normal
        for (Vec3& point : points) {
            point = AnyVector(random);
        }
        Vec3& normal = points[3];
        if (random() % 2 == 0) {
            // Nearly in the plane, or exactly.
            const float height = random() % 4 == 0 ? 0.0f : std::ldexp(AnyFloat(random), -18);
            points[2] = points[0];
            points[2].Y += height;
            normal = random() % 2 == 0 ? Vec3{0, 0, 1} : Normalized(normal);
        }
        for (size_t i = 0; i < 3; ++i) {
            points[i] = {points[i].X * size, points[i].Y * size, points[i].Z * size};
        }
        if (random() % 8 == 0) {
            Vec3& changed = points[random() % 4];
            (random() % 2 == 0 ? changed.X : changed.Z) = odd[random() % std::size(odd)];
        }
        const bool expected = KeepsOrderLiterally(points[0], points[1], points[2], normal);
        ASSERT_EQ(KeepsOrder(points[0], points[1], points[2], normal), expected) << round;
        kept += expected ? 1 : 0;
    }
    EXPECT_GT(kept, 100000u);
    EXPECT_LT(kept, 300000u);
}
