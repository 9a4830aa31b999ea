// Flattening the tree, and the bytes of the scene file.
#include "output/Recentre.h"
#include "output/SceneFile.h"
#include "scene/AnyMatrix.h"
#include "support/Files.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <gtest/gtest.h>

namespace {

using Row = std::array<double, 4>;

Row RowOf(const Vec3& vector, double w) {
    return {static_cast<double>(vector.X), static_cast<double>(vector.Y), static_cast<double>(vector.Z),
            w};
}

// The point in the model of a node, whose parents' matrices follow its own.
Row PlaceOf(const Vec3& point, const std::vector<Matrix4>& matrices) {
    Row place = RowOf(point, 1);
    for (const Matrix4& matrix : matrices) {
        Row next = {};
        for (size_t i = 0; i < 16; ++i) {
            next[i % 4] += place[i / 4] * static_cast<double>(matrix.M[i]);
        }
        place = next;
    }
    return {place[0] / place[3], place[1] / place[3], place[2] / place[3], 1};
}

void ExpectNear(const Vec3& actual, const Row& expected, double tolerance) {
    for (size_t axis = 0; axis < 3; ++axis) {
        EXPECT_NEAR(RowOf(actual, 1)[axis], expected[axis], tolerance) << axis;
    }
}

Vec3 Cross(const Vec3& a, const Vec3& b) {
    return {a.Y * b.Z - a.Z * b.Y, a.Z * b.X - a.X * b.Z, a.X * b.Y - a.Y * b.X};
}

// Towards the side on which the triangle's corners turn counterclockwise.
Vec3 NormalOf(const SceneMesh& mesh) {
    const auto edge = [&](size_t corner) {
        const Vec3& from = mesh.Vertices[mesh.Indices[0]].Position;
        const Vec3& to = mesh.Vertices[mesh.Indices[corner]].Position;
        return Vec3{to.X - from.X, to.Y - from.Y, to.Z - from.Z};
    };
    Vec3 normal = Cross(edge(1), edge(2));
    Normalize(normal);
    return normal;
}

MeshMemory meshMemory; // of all meshes

SceneMesh& AddMesh(SceneNode& node, const std::vector<Vertex>& vertices,
                   const std::vector<uint32_t>& indices) {
    SceneMesh& mesh = node.Meshes.Append(std::make_unique<SceneMesh>());
    mesh.Vertices = CopyInto(meshMemory, std::span(vertices));
    mesh.Indices = CopyInto(meshMemory, std::span(indices));
    return mesh;
}

SceneMesh& AddTriangle(SceneNode& node, const Vec3& a, const Vec3& b, const Vec3& c) {
    std::vector<Vertex> vertices;
    for (const Vec3& position : {a, b, c}) {
        vertices.push_back({.Position = position, .Normal = {}, .U = 0, .V = 0});
    }
    SceneMesh& mesh = AddMesh(node, vertices, {0, 1, 2});
    for (Vertex& vertex : mesh.Vertices) {
        vertex.Normal = NormalOf(mesh);
    }
    return mesh;
}

// Axes in any direction but not in one plane, and any homogeneous scale.
Matrix4 AnyPlacement(std::mt19937& random) {
    const Vec3 x = AnyVector(random);
    const Vec3 y = AnyVector(random);
    const Vec3 z = AnyVector(random);
    const Vec3 up = Cross(x, y);
    if (std::fabs(up.X * z.X + up.Y * z.Y + up.Z * z.Z) < 1) {
        return AnyPlacement(random);
    }
    return {{x.X, x.Y, x.Z, 0, y.X, y.Y, y.Z, 0, z.X, z.Y, z.Z, 0, 1, 2, -3, AnyFloat(random) + 3}};
}

std::string WriteToBytes(const SceneNode& root, const MaterialTable& materials) {
    const TempFolder folder;
    const std::filesystem::path path = folder.Path / "scene.bin";
    {
        OutputFile file;
        file.Open(path.u16string());
        ProgressLine progress;
        EXPECT_TRUE(WriteScene(file, root, materials, progress));
    }
    return ReadBytes(path);
}

} // namespace

// Groups inside each other, each with a triangle.
TEST(Recentre, PutsEveryTriangleInItsPlace) {
    std::mt19937 random(1);
    for (int round = 0; round < 300; ++round) {
        SceneNode root(u"");
        SceneNode* node = &root;
        std::vector<Matrix4> matrices;
        std::vector<const SceneMesh*> meshes;
        std::vector<Row> places;
        for (int level = 0; level < 4; ++level) {
            meshes.push_back(
                &AddTriangle(*node, AnyVector(random), AnyVector(random), AnyVector(random)));
            for (const Vertex& vertex : meshes.back()->Vertices) {
                places.push_back(PlaceOf(vertex.Position, matrices));
            }
            node = &node->Children.Append(std::make_unique<SceneNode>(u""));
            node->Matrix = AnyPlacement(random);
            matrices.insert(matrices.begin(), node->Matrix);
        }
        Recentre(root);
        const auto range = [&](size_t axis) {
            const auto [low, high] = std::ranges::minmax_element(
                places, {}, [axis](const Row& place) { return place[axis]; });
            return std::pair((*low)[axis], (*high)[axis]);
        };
        const Row origin = {(range(0).first + range(0).second) / 2, range(1).first,
                            (range(2).first + range(2).second) / 2, 0};
        for (size_t i = 0; i < places.size(); ++i) {
            const SceneMesh& mesh = *meshes[i / 3];
            const Row& place = places[i];
            ExpectNear(mesh.Vertices[i % 3].Position,
                       {place[0] - origin[0], place[1] - origin[1], place[2] - origin[2]}, 1e-3);
            ExpectNear(mesh.Vertices[i % 3].Normal, RowOf(NormalOf(mesh), 0), 1e-2);
        }
        EXPECT_EQ((std::bit_cast<std::array<uint32_t, 16>>(node->Matrix)),
                  (std::bit_cast<std::array<uint32_t, 16>>(Identity)));
    }
}

TEST(Recentre, KeepsMeshesUnderTheIdentityAndPointsOfFlatGroups) {
    const auto normalUnder = [](const Matrix4& world) {
        SceneNode node(u"");
        SceneMesh& mesh = AddTriangle(node, {}, {}, {});
        mesh.Vertices[0].Normal = {0, 3, 0};
        TransformMesh(mesh, world);
        EXPECT_EQ(mesh.Vertices[0].Position.Y, 0);
        return mesh.Vertices[0].Normal.Y;
    };
    Matrix4 world = Identity;
    world.M[12] = 0.9e-8f;
    EXPECT_EQ(normalUnder(world), 3);
    world.M[12] = 1e-8f;
    EXPECT_EQ(normalUnder(world), 1);
    // A singular matrix uses its transpose.
    world.M[5] = 0;
    EXPECT_EQ(normalUnder(world), 0);
}

TEST(SceneFile, WritesFourZeroBytesPerVertex) {
    constexpr size_t count = 2500;
    SceneNode root(u"");
    AddMesh(root,
            std::vector<Vertex>(count, {.Position = {1, 1, 1}, .Normal = {1, 1, 1}, .U = 1, .V = 1}),
            {7, 8, 9});
    MaterialTable materials;
    materials.Rows.resize(1);
    const std::string bytes = WriteToBytes(root, materials);
    const size_t zeros = 12 + 340 + 52 + 124 + 2 + 2 + count * sizeof(Vertex);
    ASSERT_EQ(bytes.size(), zeros + 4 * count + 12);
    EXPECT_EQ(bytes.find_first_not_of('\0', zeros), zeros + 4 * count);
    EXPECT_EQ(bytes.substr(zeros + 4 * count, 4), std::string("\7\0\0\0", 4));
}

TEST(SceneFile, CutsNodeNamesAt255UnitsOfTheCodePage) {
    const auto nameOf = [](const std::u16string& name) {
        return WriteToBytes(SceneNode(name), {}).substr(16, 256);
    };
    EXPECT_EQ(nameOf(std::u16string(300, u'a')), std::string(255, 'a') + '\0');
    EXPECT_EQ(nameOf(u"K\u00FCche"), std::string("K\xFC"
                                                 "che") +
                                         std::string(251, '\0'));
#ifndef _WIN32 // the code page of Windows depends on the machine
    EXPECT_EQ(nameOf(u"\u20AC \u65E5 \U0001F3E0 \u0081").substr(0, 8), "\x80 ? ?? ?");
#endif
}

TEST(SceneFile, ReportsIncompleteWrites) {
    OutputFile closed;
    ProgressLine progress;
    EXPECT_FALSE(WriteScene(closed, SceneNode(u""), {}, progress));
#ifdef __linux__
    // A file smaller than the stream's buffer fails at the flush.
    OutputFile full;
    full.Open(u"/dev/full");
    ASSERT_NE(full.Stream, nullptr);
    EXPECT_FALSE(WriteScene(full, SceneNode(u""), {}, progress));
#endif
}
