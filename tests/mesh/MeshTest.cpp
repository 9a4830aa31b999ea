// From polygons to meshes, compared with plain definitions: polygons are fans, each material is welded
// literally, and meshes are cut between triangles.
#include "mesh/AddMeshes.h"
#include "mesh/AddPolygons.h"
#include "mesh/LiteralWeld.h"
#include "mesh/WeldVertices.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <numeric>
#include <random>
#include <stdexcept>

namespace {

using Indices = std::vector<uint32_t>;

Indices UpTo(size_t count) {
    Indices indices(count);
    std::iota(indices.begin(), indices.end(), 0u);
    return indices;
}

Vertex At(float x, float y = 0) {
    return {.Position = {x, y, 0}, .Normal = {0, 1, 0}, .U = 0, .V = 0};
}

struct PlainMesh {
    Indices Corners;
    std::vector<Vertex> Vertices;
    int32_t MaterialIndex = 0;
};

VertexPool PoolWith(const std::vector<Vertex>& vertices, const Indices& corners) {
    VertexPool pool;
    LargeArray<uint32_t> numbers;
    AppendTriangles(pool, vertices, corners, numbers);
    return pool;
}

// Appends the meshes of one material: vertices in order of first use, a new mesh after 99997 vertices.
void CutLiterally(const std::vector<Vertex>& vertices, const Indices& indices, int32_t material,
                  std::vector<PlainMesh>& meshes) {
    std::vector<int64_t> numbers;
    for (size_t k = 0; k < indices.size(); ++k) {
        if (k == 0 || (k % 3 == 0 && meshes.back().Vertices.size() >= 99997)) {
            meshes.emplace_back().MaterialIndex = material;
            numbers.assign(vertices.size(), -1);
        }
        PlainMesh& mesh = meshes.back();
        int64_t& number = numbers[indices[k]];
        if (number < 0) {
            number = static_cast<int64_t>(mesh.Vertices.size());
            mesh.Vertices.push_back(vertices[indices[k]]);
        }
        mesh.Corners.push_back(static_cast<uint32_t>(number));
    }
}

void ExpectMeshes(const SceneNode& node, const std::vector<PlainMesh>& expected) {
    ASSERT_EQ(node.Meshes.Elements.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        const SceneMesh& mesh = *node.Meshes.Elements[i];
        EXPECT_EQ(mesh.MaterialIndex, expected[i].MaterialIndex);
        EXPECT_TRUE(std::ranges::equal(mesh.Indices, expected[i].Corners));
        ASSERT_EQ(mesh.Vertices.size(), expected[i].Vertices.size());
        EXPECT_EQ(std::memcmp(mesh.Vertices.data(), expected[i].Vertices.data(),
                              mesh.Vertices.size() * sizeof(Vertex)),
                  0);
    }
}

} // namespace

TEST(Weld, SkipsEmptyAndWeldedPools) {
    WeldScratch scratch;
    VertexPool pool;
    WeldVertices(pool, scratch, WeldTolerance);
    EXPECT_TRUE(pool.Welded);
    pool = PoolWith({At(0), At(0), At(1)}, {0, 1, 2});
    pool.Welded = true;
    WeldVertices(pool, scratch, WeldTolerance);
    EXPECT_EQ(pool.Vertices.Count, 3u);
}

// Pools around the limit, with vertices in order of first use and in the reverse order. One corner in
// sixteen uses an earlier vertex, and the last triangles use vertices of the first.
TEST(AddMeshes, CutsBetweenTrianglesAtTheLimit) {
    std::mt19937 random(1);
    for (const bool reversed : {false, true}) {
        for (size_t count = 99994; count <= 100002; ++count) {
            Indices indices;
            for (uint32_t used = 0; used < count || indices.size() % 3 != 0;) {
                const bool again = used == count || (used > 0 && random() % 16 == 0);
                indices.push_back(again ? static_cast<uint32_t>(random()) % used : used++);
            }
            indices.insert(indices.end(), {0, 1, 2, 0, 1, 1});
            std::vector<Vertex> vertices;
            for (size_t i = 0; i < count; ++i) {
                vertices.push_back(At(static_cast<float>(i)));
            }
            for (uint32_t& index : indices) {
                index = reversed ? static_cast<uint32_t>(count - 1) - index : index;
            }
            std::vector<PlainMesh> expected;
            CutLiterally(vertices, indices, 3, expected);
            MeshMemory memory;
            SceneNode node(u"");
            VertexPool pool;
            AddMeshes(node, pool, 3, memory);
            pool = PoolWith(vertices, indices);
            AddMeshes(node, pool, 3, memory);
            SCOPED_TRACE(count);
            ExpectMeshes(node, expected);
        }
    }
}

TEST(AddPolygons, EqualsTheLiteralWeldOfEachMaterial) {
    std::mt19937 random(2);
    PolygonList list;
    WeldScratch scratch;
    for (int round = 0; round < 60; ++round) {
        std::map<int32_t, std::vector<Vertex>> corners;
        for (auto polygons = random() % 60; polygons > 0; --polygons) {
            const auto material = static_cast<int32_t>(random() % 8);
            std::vector<Vertex> polygon(random() % 6);
            for (Vertex& vertex : polygon) {
                // Just within the tolerance of one another, or not.
                constexpr float heights[] = {0, 0.99e-5f, 1e-5f};
                vertex = At(static_cast<float>(random() % 4), heights[random() % 3]);
            }
            AppendPolygon(PoolOf(list, material), polygon);
            for (size_t k = 2; k < polygon.size(); ++k) {
                corners[material].insert(corners[material].end(),
                                         {polygon[0], polygon[k - 1], polygon[k]});
            }
        }
        std::vector<PlainMesh> expected;
        for (auto& [material, vertices] : corners) {
            Indices indices = UpTo(vertices.size());
            WeldLiterally(vertices, indices, 1e-5f);
            CutLiterally(vertices, indices, material, expected);
        }
        SceneNode node(u"");
        MeshMemory memory;
        AddPolygons(node, list, scratch, memory);
        EXPECT_TRUE(list.Pools.empty());
        ExpectMeshes(node, expected);
    }
}

// Their corners would not have 32-bit numbers. No corner is read before the count is checked.
TEST(AddPolygons, RejectsTooManyTriangles) {
    LargeArray<uint32_t> numbers;
    VertexPool pool = PoolWith({At(0), At(1), At(2)}, {0, 1, 2});
    const std::vector<Vertex> vertices(3);
    const Indices corner = {0};
    const std::span<const uint32_t> tooMany(corner.data(), size_t{2147483647} - 2);
    EXPECT_THROW(AppendTriangles(pool, vertices, tooMany, numbers), std::length_error);
    EXPECT_EQ(pool.Corners.Count, 3u);
}
