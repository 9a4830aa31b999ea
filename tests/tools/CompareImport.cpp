// Compares a scene file with assimp's triangulation of its model: compare-import MODEL SCENE. Expects
// twice the triangles, one for each side, and the same extents. Exit code 0: they agree; 1: they don't,
// or the scene file can't be read; 2: assimp can't read the model.
#include "inspect/stored/SceneReader.h"
#include "platform/Platform.h"

#include <algorithm>
#include <array>
#include <assimp/cimport.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <cmath>
#include <cstdio>
#include <limits>

constexpr double Tolerance = 1e-4; // relative to the largest extent

namespace {

struct Extents {
    size_t Triangles = 0;
    std::array<double, 3> Min;
    std::array<double, 3> Max;

    Extents() {
        Min.fill(std::numeric_limits<double>::max());
        Max.fill(std::numeric_limits<double>::lowest());
    }
};

void Take(Extents& extents, std::array<float, 3> position) {
    for (size_t axis = 0; axis < position.size(); ++axis) {
        const auto value = static_cast<double>(position[axis]);
        extents.Min[axis] = std::min(extents.Min[axis], value);
        extents.Max[axis] = std::max(extents.Max[axis], value);
    }
}

bool IsUsable(const aiMesh& mesh, const aiFace& face) {
    return face.mNumIndices == 3 && std::all_of(face.mIndices, face.mIndices + 3, [&](unsigned index) {
               return index < mesh.mNumVertices && std::isfinite(mesh.mVertices[index].x) &&
                      std::isfinite(mesh.mVertices[index].y) && std::isfinite(mesh.mVertices[index].z);
           });
}

void TakeNode(Extents& extents, const aiScene& scene, const aiNode& node, const aiMatrix4x4& parent) {
    const aiMatrix4x4 transform = parent * node.mTransformation;
    for (unsigned i = 0; i < node.mNumMeshes; ++i) {
        const aiMesh& mesh = *scene.mMeshes[node.mMeshes[i]];
        for (unsigned face = 0; face < mesh.mNumFaces; ++face) {
            if (!IsUsable(mesh, mesh.mFaces[face])) {
                continue;
            }
            ++extents.Triangles;
            for (unsigned corner = 0; corner < 3; ++corner) {
                const aiVector3D p = transform * mesh.mVertices[mesh.mFaces[face].mIndices[corner]];
                Take(extents, {p.x, p.y, p.z});
            }
        }
    }
    for (unsigned i = 0; i < node.mNumChildren; ++i) {
        TakeNode(extents, scene, *node.mChildren[i], transform);
    }
}

Extents ExtentsOf(const StoredScene& scene) {
    Extents extents;
    for (const StoredNode& node : scene.Nodes) {
        for (const StoredMesh& mesh : node.Meshes) {
            extents.Triangles += mesh.Indices.size() / 3;
            for (const uint32_t index : mesh.Indices) {
                Take(extents, mesh.Vertices[index].Position);
            }
        }
    }
    return extents;
}

// order: the axis of the model for each axis of the scene.
bool HaveSameSize(const Extents& model, const Extents& scene, std::array<size_t, 3> order) {
    double largest = 0;
    double difference = 0;
    for (size_t axis = 0; axis < order.size(); ++axis) {
        const double wanted = model.Max[order[axis]] - model.Min[order[axis]];
        largest = std::max(largest, wanted);
        difference = std::max(difference, std::abs(scene.Max[axis] - scene.Min[axis] - wanted));
    }
    return difference <= Tolerance * largest;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::puts("compare-import MODEL SCENE");
        return 1;
    }
    StoredScene stored;
    if (const auto fault = ReadStoredSceneFile(Utf16FromUtf8(argv[2]), stored)) {
        std::puts("the scene file is broken");
        return 1;
    }
    const aiScene* scene = aiImportFile(argv[1], aiProcess_Triangulate);
    if (scene == nullptr) {
        return 2;
    }
    Extents model;
    TakeNode(model, *scene, *scene->mRootNode, aiMatrix4x4());
    const Extents written = ExtentsOf(stored);
    const bool hasSameSize =
        HaveSameSize(model, written, {0, 1, 2}) || HaveSameSize(model, written, {0, 2, 1});
    if (written.Triangles != 2 * model.Triangles || !hasSameSize) {
        std::printf("%zu triangles of %zu, extents %s\n", written.Triangles, 2 * model.Triangles,
                    hasSameSize ? "agree" : "differ");
        return 1;
    }
    return 0;
}
