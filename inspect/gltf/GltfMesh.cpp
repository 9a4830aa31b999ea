// Copies the triangles that glTF allows and repairs their normals.
#include "inspect/gltf/GltfMesh.h"

#include <cmath>
#include <limits>
#include <span>

namespace {

using Vector = std::array<double, 3>;

constexpr uint32_t NotUsed = std::numeric_limits<uint32_t>::max();
// The largest deviation from 1 of a unit normal's length.
constexpr double UnitTolerance = 1e-3;

bool IsFinite(const StoredVertex& vertex) {
    bool finite = std::isfinite(vertex.U) && std::isfinite(vertex.V);
    for (size_t axis = 0; axis < 3; ++axis) {
        finite = finite && std::isfinite(vertex.Position[axis]) && std::isfinite(vertex.Normal[axis]);
    }
    return finite;
}

double Length(const Vector& vector) {
    return std::sqrt(vector[0] * vector[0] + vector[1] * vector[1] + vector[2] * vector[2]);
}

// Points to the visible side of the triangle, in glTF's axes. Has no length if the triangle has no
// area.
Vector TriangleNormal(const GltfMesh& mesh, std::span<const uint32_t> triangle) {
    const auto edge = [&](size_t corner) {
        Vector result{};
        for (size_t axis = 0; axis < 3; ++axis) {
            result[axis] = static_cast<double>(mesh.Vertices[triangle[corner]].Position[axis]) -
                           static_cast<double>(mesh.Vertices[triangle[0]].Position[axis]);
        }
        return result;
    };
    const Vector a = edge(1);
    const Vector b = edge(2);
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

// Returns false for a vector without length.
bool SetNormal(const Vector& direction, StoredVertex& vertex) {
    const double length = Length(direction);
    if (!(length > 0.0) || !std::isfinite(length)) {
        return false;
    }
    for (size_t axis = 0; axis < 3; ++axis) {
        vertex.Normal[axis] = static_cast<float>(direction[axis] / length);
    }
    return true;
}

void RepairNormals(GltfMesh& mesh) {
    std::vector<bool> isMissing(mesh.Vertices.size(), false);
    bool anyMissing = false;
    for (size_t position = 0; position < mesh.Vertices.size(); ++position) {
        StoredVertex& vertex = mesh.Vertices[position];
        const Vector normal = {static_cast<double>(vertex.Normal[0]),
                               static_cast<double>(vertex.Normal[1]),
                               static_cast<double>(vertex.Normal[2])};
        if (std::abs(Length(normal) - 1.0) > UnitTolerance && !SetNormal(normal, vertex)) {
            isMissing[position] = true;
            anyMissing = true;
            vertex.Normal = {0, 1, 0};
        }
    }
    if (!anyMissing) {
        return;
    }
    for (size_t first = 0; first < mesh.Indices.size(); first += 3) {
        const auto triangle = std::span<const uint32_t>(mesh.Indices).subspan(first, 3);
        for (const uint32_t corner : triangle) {
            if (isMissing[corner] && SetNormal(TriangleNormal(mesh, triangle), mesh.Vertices[corner])) {
                isMissing[corner] = false;
            }
        }
    }
}

} // namespace

GltfMesh MakeGltfMesh(const StoredMesh& mesh) {
    GltfMesh result;
    std::vector<uint32_t> newPosition(mesh.Vertices.size(), NotUsed);
    const auto copy = [&](uint32_t position) {
        if (newPosition[position] == NotUsed) {
            newPosition[position] = static_cast<uint32_t>(result.Vertices.size());
            StoredVertex vertex = mesh.Vertices[position];
            // Keeps zeros positive.
            vertex.Position[2] = 0.0F - vertex.Position[2];
            vertex.Normal[2] = 0.0F - vertex.Normal[2];
            result.Vertices.push_back(vertex);
        }
        return newPosition[position];
    };
    for (size_t first = 0; first < mesh.Indices.size(); first += 3) {
        const uint32_t a = mesh.Indices[first];
        const uint32_t b = mesh.Indices[first + 1];
        const uint32_t c = mesh.Indices[first + 2];
        if (!IsFinite(mesh.Vertices[a]) || !IsFinite(mesh.Vertices[b]) || !IsFinite(mesh.Vertices[c])) {
            ++result.TrianglesLeftOut;
            continue;
        }
        for (const uint32_t corner : {a, c, b}) {
            result.Indices.push_back(copy(corner));
        }
    }
    RepairNormals(result);
    return result;
}
