// Vector and matrix arithmetic: known values, and sums whose order changes the last bit.
#include "scene/Matrix.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>

namespace {

constexpr float NotANumber = std::numeric_limits<float>::quiet_NaN();

// Compares bits, to distinguish signed zeros.
void ExpectSame(const Vec3& actual, const Vec3& expected) {
    EXPECT_EQ(std::bit_cast<uint32_t>(actual.X), std::bit_cast<uint32_t>(expected.X));
    EXPECT_EQ(std::bit_cast<uint32_t>(actual.Y), std::bit_cast<uint32_t>(expected.Y));
    EXPECT_EQ(std::bit_cast<uint32_t>(actual.Z), std::bit_cast<uint32_t>(expected.Z));
}

void ExpectEqual(const Matrix4& actual, const Matrix4& expected) {
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(actual.M[i], expected.M[i]) << "element " << i;
    }
}

Vec3 Normalized(Vec3 v) {
    Normalize(v);
    return v;
}

Vec3 Transformed(const Matrix4& m, Vec3 p) {
    TransformPoint(m, p);
    return p;
}

Matrix4 Scaling(float x, float y, float z, float w = 1) {
    return {{x, 0, 0, 0, 0, y, 0, 0, 0, 0, z, 0, 0, 0, 0, w}};
}

Matrix4 Translation(float x, float y, float z) {
    return {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, y, z, 1}};
}

// A quarter turn about Z: x goes to y.
constexpr Matrix4 QuarterTurn = {{0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};

} // namespace

TEST(Matrix, NormalizeUsesOneReciprocalAndKeepsShortVectors) {
    ExpectSame(Normalized({3, 0, 4}), {3 * (1.0f / 5), 0, 4 * (1.0f / 5)});
    ExpectSame(Normalized({0, -0.0f, 0}), {0, -0.0f, 0});
    // The float nearest to 1e-5 is below the double threshold; the next one is above it.
    const float atThreshold = 1e-5f;
    ExpectSame(Normalized({atThreshold, 0, 0}), {atThreshold, 0, 0});
    EXPECT_NEAR(Normalized({std::nextafter(atThreshold, 1.0f), 0, 0}).X, 1.0f, 1e-6f);
}

TEST(Matrix, MultiplyPutsTheLeftFirstAndKeepsItsOrderOfSums) {
    Matrix4 turnThenMove = QuarterTurn;
    Multiply(turnThenMove, Translation(10, 0, 0));
    ExpectSame(Transformed(turnThenMove, {1, 0, 0}), {10, 1, 0});
    Matrix4 moveThenTurn = Translation(10, 0, 0);
    Multiply(moveThenTurn, QuarterTurn);
    ExpectSame(Transformed(moveThenTurn, {1, 0, 0}), {0, 11, 0});

    // 1e8 + 1 is 1e8 in floats, so only the order from left to right gives 0.
    const Matrix4 a = {{1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}};
    const Matrix4 b = {{1, 0, 0, 0, 1e8f, 0, 0, 0, -1e8f, 0, 0, 0, 0, 0, 0, 0}};
    Matrix4 product = a;
    Multiply(product, b);
    EXPECT_EQ(product.M[0], 0.0f);
}

TEST(Matrix, TransformPointDividesByW) {
    ExpectSame(Transformed(Scaling(1, 1, 1, 2), {2, 4, 6}), {1, 2, 3});
    Matrix4 projective = Identity;
    projective.M[3] = 1; // w = x + 1
    ExpectSame(Transformed(projective, {3, 8, 4}), {0.75f, 2, 1});
    const Vec3 lost = Transformed(Scaling(1, 1, 1, 0), {1, -1, 0});
    EXPECT_EQ(lost.X, std::numeric_limits<float>::infinity());
    EXPECT_EQ(lost.Y, -std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(lost.Z));
    // The reciprocal is a double: a float would give the next float.
    EXPECT_EQ(Transformed(Scaling(1, 1, 1, 3), {7, 0, 0}).X, 2.33333325f);
}

TEST(Matrix, TransformNormalIgnoresTranslationAndNormalizes) {
    Vec3 n = {0, 1, 0};
    TransformNormal(Translation(5, 6, 7), n);
    ExpectSame(n, {0, 1, 0});
    TransformNormal(Scaling(2, 2, 2), n);
    ExpectSame(n, {0, 1, 0});
    TransformNormal(Scaling(0, 0, 0), n);
    ExpectSame(n, {0, 0, 0});
}

TEST(Matrix, InvertGivesInversesAndKeepsSingularMatrices) {
    Matrix4 m = Identity;
    EXPECT_EQ(Invert(m), 0);
    ExpectEqual(m, Identity);
    m = Scaling(2, 4, 8);
    EXPECT_EQ(Invert(m), 0);
    ExpectEqual(m, Scaling(0.5f, 0.25f, 0.125f));

    // Needs exchanges of rows and of columns.
    const Matrix4 mixed = {{0, 0, 2, 0, 4, 0, 0, 0, 0, 8, 0, 0, 1, 2, 3, 1}};
    m = mixed;
    EXPECT_EQ(Invert(m), 0);
    Matrix4 product = mixed;
    Multiply(product, m);
    ExpectEqual(product, Identity);

    Matrix4 notNumbers;
    for (float& element : notNumbers.M) {
        element = NotANumber;
    }
    for (const Matrix4& singular : {Scaling(1, 0, 1), Scaling(0, 0, 0, 0), notNumbers}) {
        m = singular;
        const int result = Invert(m);
        for (int i = 0; i < 16; ++i) {
            EXPECT_EQ(std::bit_cast<uint32_t>(m.M[i]), std::bit_cast<uint32_t>(singular.M[i]));
        }
        EXPECT_EQ(result, 1);
    }
}

TEST(Matrix, IsMirroredDependsOnHandednessOnly) {
    EXPECT_FALSE(IsMirrored(Identity));
    EXPECT_FALSE(IsMirrored(QuarterTurn));
    EXPECT_FALSE(IsMirrored(Scaling(-1, -1, 1)));
    EXPECT_FALSE(IsMirrored(Scaling(-1, 0, 1)));
    EXPECT_TRUE(IsMirrored(Scaling(-1, 1, 1)));
    EXPECT_TRUE(IsMirrored(Scaling(-1e-3f, -1e-3f, -1e-3f)));
}

TEST(Matrix, BoxKeepsInitialLimitsThatNothingExceeds) {
    BoundingBox box = EmptyBox;
    ExtendBox(box, {NotANumber, 2e7f, 1});
    ExtendBox(box, {NotANumber, 3e7f, -1});
    ExpectSame(box.Min, {BoxLimit, BoxLimit, -1});
    ExpectSame(box.Max, {-BoxLimit, 3e7f, 1});
    EXPECT_EQ(std::bit_cast<uint32_t>(BoxLimit), 0x4B18967Fu);
}
