// Flattening the tree, and the bytes of the scene file.
#include "output/Recentre.h"
#include "output/SceneFile.h"
#include "support/Files.h"

#include <bit>
#include <gtest/gtest.h>

namespace {

SceneMesh& AddTriangle(SceneNode& node, const Vec3& a, const Vec3& b, const Vec3& c,
                       const Vec3& normal) {
    SceneMesh& mesh = node.Meshes.Append(std::make_unique<SceneMesh>());
    for (const Vec3& position : {a, b, c}) {
        mesh.Vertices.push_back({.Position = position, .Normal = normal, .U = 0, .V = 0});
    }
    mesh.Indices = {0, 1, 2};
    return mesh;
}

SceneNode& AddChild(SceneNode& parent, const Matrix4& matrix) {
    SceneNode& child = parent.Children.Append(std::make_unique<SceneNode>(u""));
    child.Matrix = matrix;
    return child;
}

Matrix4 Scaling(float x, float y, float z, float w = 1) {
    return {{x, 0, 0, 0, 0, y, 0, 0, 0, 0, z, 0, 0, 0, 0, w}};
}

void ExpectVector(const Vec3& actual, const Vec3& expected) {
    EXPECT_EQ(actual.X, expected.X);
    EXPECT_EQ(actual.Y, expected.Y);
    EXPECT_EQ(actual.Z, expected.Z);
}

// A mesh with one normal, transformed.
SceneMesh Transform(const Vec3& normal, const Matrix4& world) {
    SceneNode node(u"");
    SceneMesh mesh = AddTriangle(node, {1, 2, 3}, {2, 2, 3}, {1, 3, 3}, normal);
    TransformMesh(mesh, world);
    return mesh;
}

std::string WriteToBytes(const SceneNode& root, const MaterialTable& materials) {
    const TempFolder folder;
    const std::filesystem::path path = folder.Path / "scene.bin";
    {
        OutputFile file;
        file.Open(path.u16string());
        EXPECT_TRUE(WriteScene(file, root, materials));
    }
    return ReadBytes(path);
}

template <class Value> Value ValueAt(const std::string& bytes, size_t offset) {
    Value value;
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(offset), sizeof value,
                reinterpret_cast<char*>(&value));
    return value;
}

} // namespace

TEST(Recentre, CentresTheModelOnTheGround) {
    SceneNode root(u"");
    const SceneMesh& mesh = AddTriangle(root, {0, 10, 0}, {2, 10, 0}, {0, 13, 4}, {0, 1, 0});
    SceneNode& moved = AddChild(root, {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 100, 0, 0, 1}});
    const SceneMesh& far = AddTriangle(moved, {0, 10, 0}, {2, 10, 0}, {0, 13, 4}, {0, 1, 0});
    Recentre(root);
    ExpectVector(mesh.Vertices[0].Position, {-51, 0, -2});
    ExpectVector(mesh.Vertices[2].Position, {-51, 3, 2});
    ExpectVector(far.Vertices[1].Position, {51, 0, -2});
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(std::bit_cast<uint32_t>(moved.Matrix.M[i]), std::bit_cast<uint32_t>(Identity.M[i]));
    }
}

TEST(Recentre, ReversesTheWindingOncePerMirroring) {
    SceneNode root(u"");
    SceneNode& once = AddChild(root, Scaling(-1, 1, 1));
    SceneNode& twice = AddChild(once, Scaling(-1, 1, 1));
    const SceneMesh& onceMesh = AddTriangle(once, {1, 0, 0}, {2, 0, 0}, {1, 1, 0}, {1, 0, 0});
    const SceneMesh& twiceMesh = AddTriangle(twice, {1, 0, 0}, {2, 0, 0}, {1, 1, 0}, {1, 0, 0});
    Recentre(root);
    EXPECT_EQ(onceMesh.Indices, (std::vector<uint32_t>{2, 1, 0}));
    EXPECT_EQ(onceMesh.Vertices[0].Normal.X, -1.0f);
    EXPECT_EQ(twiceMesh.Indices, (std::vector<uint32_t>{0, 1, 2}));
    EXPECT_EQ(twiceMesh.Vertices[0].Normal.X, 1.0f);
}

TEST(Recentre, TransformsNormalsByTheInverseTranspose) {
    const SceneMesh stretched = Transform({0.70710678f, 0.70710678f, 0}, Scaling(2, 1, 1));
    EXPECT_NEAR(stretched.Vertices[0].Normal.Y / stretched.Vertices[0].Normal.X, 2.0f, 1e-5f);
    // A singular matrix uses its transpose, which makes this normal 0.
    const SceneMesh flat = Transform({0, 0, 1}, Scaling(1, 1, 0));
    ExpectVector(flat.Vertices[0].Normal, {0, 0, 0});
    EXPECT_EQ(flat.Vertices[0].Position.Z, 0.0f);
    const SceneMesh doubled = Transform({0, 1, 0}, Scaling(1, 1, 1, 0.5f));
    ExpectVector(doubled.Vertices[0].Position, {2, 4, 6});
    ExpectVector(doubled.Vertices[0].Normal, {0, 1, 0});
}

TEST(Recentre, KeepsMeshesUnderTheIdentity) {
    Matrix4 nearly = Identity;
    nearly.M[12] = 0.9e-8f;
    const Vec3 unnormalized = {0, 3, 0};
    ExpectVector(Transform(unnormalized, nearly).Vertices[0].Normal, unnormalized);
    nearly.M[12] = 1e-8f;
    ExpectVector(Transform(unnormalized, nearly).Vertices[0].Normal, {0, 1, 0});
}

TEST(SceneFile, WritesFourZeroBytesPerVertex) {
    constexpr size_t count = 2500;
    SceneNode root(u"");
    SceneMesh& mesh = root.Meshes.Append(std::make_unique<SceneMesh>());
    mesh.Vertices.assign(count, {.Position = {1, 1, 1}, .Normal = {1, 1, 1}, .U = 1, .V = 1});
    mesh.Indices = {7, 8, 9};
    MaterialTable materials;
    materials.Rows.resize(1);
    const std::string bytes = WriteToBytes(root, materials);
    const size_t zeros = 12 + 340 + 52 + 124 + 2 + 2 + count * sizeof(Vertex);
    ASSERT_EQ(bytes.size(), zeros + 4 * count + 12);
    EXPECT_EQ(bytes.find_first_not_of('\0', zeros), zeros + 4 * count);
    EXPECT_EQ(ValueAt<uint32_t>(bytes, zeros + 4 * count), 7u);
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
    EXPECT_FALSE(WriteScene(closed, SceneNode(u""), {}));
#ifdef __linux__
    // A file smaller than the stream's buffer fails at the flush.
    OutputFile full;
    full.Open(u"/dev/full");
    ASSERT_NE(full.Stream, nullptr);
    EXPECT_FALSE(WriteScene(full, SceneNode(u""), {}));
#endif
}
