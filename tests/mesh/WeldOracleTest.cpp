// Compares welding with its definition: vertices and indices are equal to the last bit, on pools that
// reveal differences.
#include "mesh/LiteralWeld.h"
#include "mesh/WeldCases.h"
#include "mesh/WeldVertices.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <numeric>

namespace {

// Enough that each rule of the choice between matches decides many results.
constexpr uint32_t CaseCount = 12000;

} // namespace

TEST(WeldOracle, EqualsTheLiteralWeld) {
    size_t merged = 0;
    WeldScratch scratch;
    LargeArray<uint32_t> numbers;
    for (uint32_t number = 0; number < CaseCount; ++number) {
        const WeldCase weld = MakeWeldCase(number);
        VertexPool pool;
        AppendTriangles(pool, weld.Vertices, weld.Indices, numbers);
        WeldVertices(pool, scratch, weld.Tolerance);
        // By the definition, each corner has a vertex of its own.
        std::vector<Vertex> expected;
        for (const uint32_t index : weld.Indices) {
            expected.push_back(weld.Vertices[index]);
        }
        const size_t before = expected.size();
        std::vector<uint32_t> indices(before);
        std::iota(indices.begin(), indices.end(), 0u);
        WeldLiterally(expected, indices, weld.Tolerance);
        merged += before - expected.size();
        ASSERT_TRUE(std::ranges::equal(pool.Corners, indices)) << "case " << number;
        ASSERT_EQ(pool.Vertices.Count, expected.size()) << "case " << number;
        ASSERT_EQ(std::memcmp(pool.Vertices.begin(), expected.data(), expected.size() * sizeof(Vertex)),
                  0)
            << "case " << number;
    }
    EXPECT_GT(merged, size_t{CaseCount} * 30); // the pools contain enough matches
}
