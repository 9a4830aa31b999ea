// Compares welding with its definition: vertices and indices are equal to the last bit, on pools that
// reveal differences.
#include "mesh/LiteralWeld.h"
#include "mesh/WeldCases.h"
#include "mesh/WeldVertices.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

// Enough that each rule of the choice between matches decides many results.
constexpr uint32_t CaseCount = 12000;

} // namespace

TEST(WeldOracle, EqualsTheLiteralWeld) {
    size_t merged = 0;
    for (uint32_t number = 0; number < CaseCount; ++number) {
        WeldCase expected = MakeWeldCase(number);
        VertexPool pool = {.Vertices = expected.Vertices, .Welded = false};
        std::vector<uint32_t> indices = expected.Indices;
        WeldVertices(pool, indices, expected.Tolerance);
        const size_t before = expected.Vertices.size();
        WeldLiterally(expected.Vertices, expected.Indices, expected.Tolerance);
        merged += before - expected.Vertices.size();
        ASSERT_EQ(indices, expected.Indices) << "case " << number;
        ASSERT_EQ(pool.Vertices.size(), expected.Vertices.size()) << "case " << number;
        ASSERT_EQ(std::memcmp(pool.Vertices.data(), expected.Vertices.data(),
                              expected.Vertices.size() * sizeof(Vertex)),
                  0)
            << "case " << number;
    }
    EXPECT_GT(merged, size_t{CaseCount} * 30); // the pools contain enough matches
}
