// Recentring and baking: two walks over the tree, one for the box, one for the vertices.
#include "output/Recentre.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <utility>

namespace {

// Elements that differ by less than this from the identity's count as equal.
constexpr float IdentityTolerance = 1e-8f;

bool IsIdentity(const Matrix4& m) {
    for (int i = 0; i < 16; ++i) {
        if (!(std::fabs(m.M[i] - Identity.M[i]) < IdentityTolerance)) {
            return false;
        }
    }
    return true;
}

// The inverse transpose of the linear part keeps normals perpendicular to their surface.
Matrix4 NormalMatrix(const Matrix4& world) {
    Matrix4 m = world;
    m.M[12] = 0.0f;
    m.M[13] = 0.0f;
    m.M[14] = 0.0f;
    Invert(m); // leaves a singular matrix unchanged
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < row; ++column) {
            std::swap(m.M[4 * row + column], m.M[4 * column + row]);
        }
    }
    return m;
}

std::array<uint32_t, 3> BitsOf(const Vec3& v) {
    return std::bit_cast<std::array<uint32_t, 3>>(v);
}

Matrix4 WorldMatrix(const SceneNode& node, const Matrix4& parentWorld) {
    Matrix4 world = node.Matrix;
    Multiply(world, parentWorld);
    return world;
}

} // namespace

void TransformMesh(SceneMesh& mesh, const Matrix4& world) {
    if (IsIdentity(world)) {
        return;
    }
    const Matrix4 normalMatrix = NormalMatrix(world);
    // Neighbours often have one normal: the same bits give the same result.
    Vec3 former = {};
    Vec3 result = {};
    TransformNormal(normalMatrix, result);
    for (Vertex& vertex : mesh.Vertices) {
        TransformPoint(world, vertex.Position);
        if (BitsOf(vertex.Normal) != BitsOf(former)) {
            former = result = vertex.Normal;
            TransformNormal(normalMatrix, result);
        }
        vertex.Normal = result;
    }
    if (IsMirrored(world)) {
        for (size_t k = 0; k + 2 < mesh.Indices.size(); k += 3) {
            std::swap(mesh.Indices[k], mesh.Indices[k + 2]);
        }
    }
}

void AccumulateBounds(const SceneNode& node, const Matrix4& parentWorld, BoundingBox& box) {
    const Matrix4 world = WorldMatrix(node, parentWorld);
    for (const SceneNode* child : node.Children.Elements) {
        AccumulateBounds(*child, world, box);
    }
    BoundingBox inRegisters = box;
    for (const SceneMesh* mesh : node.Meshes.Elements) {
        for (const Vertex& vertex : mesh->Vertices) {
            Vec3 position = vertex.Position;
            TransformPoint(world, position);
            ExtendBox(inRegisters, position);
        }
    }
    box = inRegisters;
}

void BakeTransforms(SceneNode& node, const Matrix4& parentWorld) {
    const Matrix4 world = WorldMatrix(node, parentWorld);
    for (SceneNode* child : node.Children.Elements) {
        BakeTransforms(*child, world);
    }
    for (SceneMesh* mesh : node.Meshes.Elements) {
        TransformMesh(*mesh, world);
    }
    node.Matrix = Identity;
}

void Recentre(SceneNode& root) {
    Matrix4 toScene = Identity;
    BoundingBox box = EmptyBox;
    AccumulateBounds(root, toScene, box);
    const float centreX = (box.Max.X + box.Min.X) * 0.5f;
    const float centreZ = (box.Max.Z + box.Min.Z) * 0.5f;
    Matrix4 recentreMatrix = Identity;
    recentreMatrix.M[12] = -centreX;
    recentreMatrix.M[13] = -box.Min.Y;
    recentreMatrix.M[14] = -centreZ;
    Multiply(toScene, recentreMatrix);
    BakeTransforms(root, toScene);
}
