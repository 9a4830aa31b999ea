// From polygons to meshes: batching, welding on both paths, splitting at the limit.
#include "mesh/AddMeshes.h"
#include "mesh/AddPolygons.h"
#include "mesh/WeldVertices.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <numeric>

namespace {

using Indices = std::vector<uint32_t>;

constexpr size_t GridSize = 90; // enough vertices for the grid

Vertex At(float x, float y = 0, float z = 0) {
    return {.Position = {x, y, z}, .Normal = {0, 1, 0}, .U = 0, .V = 0};
}

// Adds vertices far from those under test and from each other, so that the pool uses the grid.
std::vector<Vertex> WithFiller(std::vector<Vertex> vertices) {
    while (vertices.size() < GridSize) {
        vertices.push_back(At(40, 0, static_cast<float>(vertices.size())));
    }
    return vertices;
}

struct Welded {
    VertexPool Pool;
    Indices Result;
};

Welded Weld(std::vector<Vertex> vertices) {
    Welded welded;
    welded.Pool.Vertices = std::move(vertices);
    welded.Result.resize(welded.Pool.Vertices.size());
    std::iota(welded.Result.begin(), welded.Result.end(), 0u);
    WeldVertices(welded.Pool, welded.Result, WeldTolerance);
    return welded;
}

// Tests that apply to small pools and to pools that use the grid.
class WeldBothPaths : public testing::TestWithParam<bool> {
public:
    static Welded Weld(std::vector<Vertex> vertices) {
        return ::Weld(GetParam() ? WithFiller(std::move(vertices)) : std::move(vertices));
    }
    // The new numbers of the first vertices of the pool.
    static Indices Numbers(const std::vector<Vertex>& vertices) {
        Indices all = Weld(vertices).Result;
        all.resize(vertices.size());
        return all;
    }
};

std::vector<size_t> MeshSizes(const SceneNode& node) {
    std::vector<size_t> sizes;
    for (const SceneMesh* mesh : node.Meshes.Elements) {
        EXPECT_EQ(*std::ranges::max_element(mesh->Indices) + 1, mesh->Vertices.size());
        sizes.push_back(mesh->Vertices.size());
    }
    return sizes;
}

VertexPool PoolOf(size_t count) {
    VertexPool pool;
    for (size_t i = 0; i < count; ++i) {
        pool.Vertices.push_back(At(static_cast<float>(i)));
    }
    return pool;
}

Indices UpTo(size_t count) {
    Indices indices(count);
    std::iota(indices.begin(), indices.end(), 0u);
    return indices;
}

void Append(PolygonList& list, int32_t materialIndex, size_t cornerCount, float x) {
    std::vector<Vertex> corners;
    for (size_t i = 0; i < cornerCount; ++i) {
        corners.push_back(At(x, static_cast<float>(i)));
    }
    AppendPolygon(list[materialIndex], corners);
}

} // namespace

TEST_P(WeldBothPaths, KeepsTheFirstOfEachGroupAndItsValues) {
    const Welded welded = Weld({At(1), At(2), At(1 + 4e-6f), At(2), At(3)});
    EXPECT_EQ(Indices(welded.Result.begin(), welded.Result.begin() + 5), (Indices{0, 1, 0, 1, 2}));
    EXPECT_EQ(welded.Pool.Vertices[0].Position.X, 1.0f);
    EXPECT_EQ(welded.Pool.Vertices[2].Position.X, 3.0f);
    EXPECT_TRUE(welded.Pool.Welded);
}

TEST_P(WeldBothPaths, ComparesAllEightFloatsStrictly) {
    const Vertex base = {.Position = {0, 0, 0}, .Normal = {0, 0, 0}, .U = 0, .V = 0};
    for (size_t component = 0; component < 8; ++component) {
        const auto moved = [&](float distance) {
            Vertex vertex = base;
            std::memcpy(reinterpret_cast<char*>(&vertex) + component * sizeof(float), &distance,
                        sizeof distance);
            return vertex;
        };
        EXPECT_EQ(Numbers({base, moved(WeldTolerance)}), (Indices{0, 1})) << component;
        EXPECT_EQ(Numbers({base, moved(std::nextafter(WeldTolerance, 0.0f))}), (Indices{0, 0}))
            << component;
        EXPECT_EQ(Numbers({base, moved(std::numeric_limits<float>::quiet_NaN())}), (Indices{0, 1}))
            << component;
    }
}

TEST_P(WeldBothPaths, ComparesWithKeptVerticesOnly) {
    // The second merges with the first; the third matches the second but not the first.
    EXPECT_EQ(Numbers({At(1), At(1 + 8e-6f), At(1 + 14e-6f)}), (Indices{0, 0, 1}));
}

TEST_P(WeldBothPaths, KeepsNonFiniteVerticesApart) {
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(Numbers({At(infinity), At(infinity), At(-infinity), At(NAN), At(NAN)}),
              (Indices{0, 1, 2, 3, 4}));
}

INSTANTIATE_TEST_SUITE_P(Paths, WeldBothPaths, testing::Bool(),
                         [](const auto& path) { return path.param ? "Grid" : "BruteForce"; });

TEST(Weld, PathsDifferWhereAVertexMatchesTwo) {
    const std::vector<Vertex> vertices = {At(1), At(1 + 12e-6f), At(1 + 6e-6f)};
    EXPECT_EQ(Weld(vertices).Result[2], 0u);             // the oldest
    EXPECT_EQ(Weld(WithFiller(vertices)).Result[2], 1u); // the newest of the cell
}

TEST(Weld, GridMissesMatchesAcrossTheMargin) {
    // 128 units along X: half a cell per unit, a margin of 1e-5 cells. A vertex in the margin above the
    // border at x = 10 is stored in the cell below, which a vertex just beyond the margin does not
    // search.
    std::vector<Vertex> vertices = {At(0), At(128), At(10 + 19e-6f), At(10 + 24e-6f)};
    EXPECT_LT(vertices[3].Position.X - vertices[2].Position.X, WeldTolerance);
    const Indices numbers = Weld(WithFiller(vertices)).Result;
    EXPECT_NE(numbers[2], numbers[3]);
}

TEST(Weld, SkipsEmptyIndicesAndWeldedPools) {
    VertexPool pool = PoolOf(2);
    Indices none;
    WeldVertices(pool, none, WeldTolerance);
    EXPECT_TRUE(pool.Welded);
    EXPECT_EQ(pool.Vertices.size(), 2u);
    pool.Vertices[1] = pool.Vertices[0];
    Indices indices = {0, 1, 1};
    WeldVertices(pool, indices, WeldTolerance);
    EXPECT_EQ(indices, (Indices{0, 1, 1}));
}

TEST(AddMeshes, NumbersVerticesByFirstUseAndKeepsDegenerateTriangles) {
    SceneNode node(u"");
    AddMeshes(node, {5, 6, 7, 7, 6, 8, 8, 8, 8}, PoolOf(9), 3);
    ASSERT_EQ(node.Meshes.Elements.size(), 1u);
    const SceneMesh& mesh = *node.Meshes.Elements[0];
    EXPECT_EQ(mesh.Indices, (Indices{0, 1, 2, 2, 1, 3, 3, 3, 3}));
    EXPECT_EQ(mesh.Vertices[0].Position.X, 5.0f);
    EXPECT_EQ(mesh.Vertices[3].Position.X, 8.0f);
    EXPECT_EQ(mesh.MaterialIndex, 3);
    AddMeshes(node, {}, PoolOf(9), 3);
    AddMeshes(node, {0, 0, 0}, VertexPool(), 3);
    EXPECT_EQ(node.Meshes.Elements.size(), 1u);
}

TEST(AddMeshes, SplitsBetweenTrianglesAtTheLimit) {
    const auto sizes = [](size_t poolSize, const Indices& indices) {
        SceneNode node(u"");
        AddMeshes(node, indices, PoolOf(poolSize), 0);
        return MeshSizes(node);
    };
    using Sizes = std::vector<size_t>;
    EXPECT_EQ(sizes(99996, UpTo(99996)), (Sizes{99996}));
    EXPECT_EQ(sizes(99999, UpTo(99999)), (Sizes{99999}));
    EXPECT_EQ(sizes(100002, UpTo(100002)), (Sizes{99999, 3}));
    // One new vertex fills the mesh; the next triangle starts a new one and copies vertex 0.
    Indices indices = UpTo(99996);
    indices.insert(indices.end(), {0, 1, 99996, 0, 1, 2});
    EXPECT_EQ(sizes(99997, indices), (Sizes{99997, 3}));
    // With two degenerate triangles first, 99995 vertices plus one stay below the limit.
    indices = UpTo(99993);
    indices.insert(indices.end(), {0, 99993, 99994, 0, 1, 99995, 0, 1, 2});
    EXPECT_EQ(sizes(99996, indices), (Sizes{99996}));
}

TEST(AddPolygons, MakesOneMeshPerMaterialInAscendingOrder) {
    PolygonList list;
    for (const auto& [material, x] : {std::pair(4, 0.0f), {0, 1.0f}, {4, 2.0f}, {2, 3.0f}}) {
        Append(list, material, 3, x);
    }
    Append(list, 7, 2, 0); // too few corners for a triangle
    Append(list, 2, 5, 9);
    SceneNode node(u"");
    AddPolygons(node, list);
    std::vector<int32_t> materials;
    for (const SceneMesh* mesh : node.Meshes.Elements) {
        materials.push_back(mesh->MaterialIndex);
    }
    EXPECT_EQ(materials, (std::vector<int32_t>{0, 2, 4}));
    EXPECT_EQ(node.Meshes.Elements[1]->Indices, (Indices{0, 1, 2, 3, 4, 5, 3, 5, 6, 3, 6, 7}));
}

TEST(AddPolygons, KeepsTheOrderWithinAMaterialInLongLists) {
    PolygonList list;
    constexpr size_t count = 1000;
    for (size_t i = 0; i < count; ++i) {
        Append(list, i % 3 == 0 ? 1 : 0, 3, static_cast<float>(i));
    }
    SceneNode node(u"");
    AddPolygons(node, list);
    for (const SceneMesh* mesh : node.Meshes.Elements) {
        EXPECT_TRUE(
            std::ranges::is_sorted(mesh->Vertices, {}, [](const Vertex& v) { return v.Position.X; }));
    }
}
