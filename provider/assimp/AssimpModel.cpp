// Reads models through assimp, with polygons as in the file. assimp converts most formats to Y up.
#include "provider/assimp/AssimpModel.h"

#include "platform/Files.h"
#include "platform/Text.h"
#include "provider/assimp/AssimpFiles.h"
#include "provider/assimp/AssimpMaterials.h"
#include "provider/reading/FaceBuilder.h"
#include "provider/reading/NodeTree.h"
#include "provider/reading/Triangulation.h"

#include <algorithm>
#include <array>
#include <assimp/cimport.h>
#include <assimp/commonMetaData.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <cmath>
#include <memory>

// Polygons with corners further off their plane, as a share of the polygon's size, are split into
// triangles between these corners.
constexpr double PlaneTolerance = 1e-4;
// Corners that turn less than this (sine of the angle) may turn either way.
constexpr double SmallestCorner = 1e-6;

// The largest deviation of a root that turns Z up to Y up, as a share of its scale.
constexpr double TurnTolerance = 1e-5;

// Formats with Z up that assimp does not convert.
constexpr std::array<std::string_view, 5> ZUpFormats = {
    "Stereolithography (STL) Importer", "Stanford Polygon Library (PLY) Importer", "3mf Importer",
    "Additive manufacturing file format(AMF) Importer",
    "Blender 3D Importer (http://www.blender3d.org)"};

namespace {

struct SceneReading {
    const aiScene& Scene;
    Model& Output;
    UpAxis Up;                            // below the root
    Transform Root;                       // of the root, from there into the model
    std::vector<uint32_t> CoordinateSets; // of each material
    PolygonTriangulation Polygon;         // kept to reuse its memory
    FaceGeometry PolygonGeometry;         // the same
};

Point3 PointOf(const aiVector3D& vector) {
    return {static_cast<double>(vector.x), static_cast<double>(vector.y), static_cast<double>(vector.z)};
}

Transform TransformOf(const aiMatrix4x4& m) {
    Transform transform;
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            transform[column * 4 + row] = static_cast<double>(m[row][column]);
        }
    }
    return transform;
}

// The vertices of a mesh in the model's axes.
FaceGeometry VerticesOf(const SceneReading& reading, const aiMesh& mesh) {
    FaceGeometry vertices;
    const uint32_t set = mesh.mMaterialIndex < reading.CoordinateSets.size()
                             ? reading.CoordinateSets[mesh.mMaterialIndex]
                             : 0;
    const bool hasSet = set < AI_MAX_NUMBER_OF_TEXTURECOORDS && mesh.HasTextureCoords(set);
    const aiVector3D* coordinates = mesh.mTextureCoords[hasSet ? set : 0];
    vertices.Positions.reserve(mesh.mNumVertices);
    for (uint32_t i = 0; i < mesh.mNumVertices; ++i) {
        vertices.Positions.push_back(ToModelAxes(reading.Up, PointOf(mesh.mVertices[i])));
        if (mesh.mNormals != nullptr) {
            Point3& normal =
                vertices.Normals.emplace_back(ToModelAxes(reading.Up, PointOf(mesh.mNormals[i])));
            if (!MakeUnit(normal, normal)) {
                normal = {0.0, 0.0, 1.0};
            }
        }
        if (coordinates != nullptr) {
            const Point3 point = PointOf(coordinates[i]);
            vertices.FrontCoordinates.push_back(IsFinite(point) ? Point3{point.X, point.Y, 1.0}
                                                                : Point3{0.0, 0.0, 1.0});
        }
    }
    return vertices;
}

// Reads the corners of a polygon into reading.Polygon. Returns false if the polygon is not plane.
bool TakePlanePolygon(SceneReading& reading, const FaceGeometry& vertices, const aiFace& face,
                      Point3& normal) {
    std::vector<Point3>& points = reading.Polygon.Points;
    points.clear();
    for (uint32_t i = 0; i < face.mNumIndices; ++i) {
        points.push_back(vertices.Positions[face.mIndices[i]]);
    }
    if (!NormalOfLoop(points, normal)) {
        return false;
    }
    double size = 0.0;
    for (const Point3& point : points) {
        size = std::max(size, Length(point - points[0]));
    }
    return std::ranges::all_of(points, [&](Point3 point) {
        return std::abs(Dot(normal, point - points[0])) <= PlaneTolerance * size;
    });
}

// If all corners turn the same way, a diagonal splits the quadrilateral into its triangles.
bool IsConvexQuadrilateral(std::span<const Point3> points, Point3 normal) {
    if (points.size() != 4) {
        return false;
    }
    for (size_t i = 0; i < 4; ++i) {
        const Point3 in = points[(i + 1) % 4] - points[i];
        const Point3 out = points[(i + 2) % 4] - points[(i + 1) % 4];
        if (Dot(Cross(in, out), normal) < SmallestCorner * Length(in) * Length(out)) {
            return false;
        }
    }
    return true;
}

// Adds a plane polygon as one face. Returns false if it can't be triangulated with its own corners.
bool AddPolygon(SceneReading& reading, const FaceGeometry& vertices, const aiFace& face) {
    Point3 normal;
    if (!TakePlanePolygon(reading, vertices, face, normal)) {
        return false;
    }
    PolygonTriangulation& polygon = reading.Polygon;
    FaceGeometry& geometry = reading.PolygonGeometry;
    if (IsConvexQuadrilateral(polygon.Points, normal)) {
        geometry.Indices = {0, 1, 2, 0, 2, 3};
    } else {
        polygon.LoopEnds = {face.mNumIndices};
        if (!TriangulatePolygon(polygon, normal) || !polygon.Crossings.empty()) {
            return false;
        }
        geometry.Indices = polygon.Indices;
    }
    geometry.Positions = polygon.Points;
    geometry.Normals.clear();
    geometry.FrontCoordinates.clear();
    for (uint32_t i = 0; i < face.mNumIndices; ++i) {
        if (!vertices.Normals.empty()) {
            geometry.Normals.push_back(vertices.Normals[face.mIndices[i]]);
        }
        if (!vertices.FrontCoordinates.empty()) {
            geometry.FrontCoordinates.push_back(vertices.FrontCoordinates[face.mIndices[i]]);
        }
    }
    AddFace(reading.Output, geometry, normal);
    return true;
}

// Whether a face has at least three corners, all existing and finite.
bool IsUsable(const FaceGeometry& vertices, const aiFace& face) {
    return face.mNumIndices >= 3 &&
           std::all_of(face.mIndices, face.mIndices + face.mNumIndices, [&](uint32_t index) {
               return index < vertices.Positions.size() && IsFinite(vertices.Positions[index]);
           });
}

void AddMesh(SceneReading& reading, const aiMesh& mesh) {
    FaceGeometry vertices = VerticesOf(reading, mesh);
    const size_t firstFace = reading.Output.Faces.size();
    for (uint32_t i = 0; i < mesh.mNumFaces; ++i) {
        const aiFace& face = mesh.mFaces[i];
        if (!IsUsable(vertices, face) || (face.mNumIndices > 3 && AddPolygon(reading, vertices, face))) {
            continue;
        }
        for (uint32_t corner = 2; corner < face.mNumIndices; ++corner) {
            vertices.Indices.insert(vertices.Indices.end(), {face.mIndices[0], face.mIndices[corner - 1],
                                                             face.mIndices[corner]});
        }
    }
    if (!vertices.Indices.empty()) {
        DropUnusedVertices(vertices);
        if (vertices.Normals.empty()) {
            MakeFlatNormals(vertices);
        }
        AddTriangulation(reading.Output, vertices);
    }
    const bool hasMaterial = mesh.mMaterialIndex < reading.Output.Materials.size();
    CoverBothSides(reading.Output, firstFace, hasMaterial ? mesh.mMaterialIndex : NoIndex);
}

bool HasFaces(const aiMesh& mesh) {
    const aiFace* begin = mesh.mFaces;
    return mesh.mVertices != nullptr &&
           std::any_of(begin, begin + mesh.mNumFaces,
                       [](const aiFace& face) { return face.mNumIndices >= 3; });
}

// Reads the nodes level by level, without recursion, because trees can be deep.
void ReadNodes(const SceneReading& reading, ImportedTree& tree) {
    const UpAxis up = reading.Up;
    const aiScene& scene = reading.Scene;
    std::vector<const aiNode*> nodes = {scene.mRootNode};
    tree.Nodes.emplace_back();
    // A root without a transformation adds no group.
    if (reading.Root != IdentityTransform) {
        nodes.insert(nodes.begin(), nullptr);
        tree.Nodes[0].Children.push_back(1);
        tree.Nodes.emplace_back();
    }
    const size_t root = nodes.size() - 1;
    for (size_t i = root; i < nodes.size(); ++i) {
        const aiNode& node = *nodes[i];
        tree.Nodes[i].Name = Utf16FromUtf8({node.mName.data, node.mName.length});
        tree.Nodes[i].Placement =
            i == root ? reading.Root : ToModelAxes(up, TransformOf(node.mTransformation));
        for (uint32_t mesh = 0; mesh < node.mNumMeshes; ++mesh) {
            if (node.mMeshes[mesh] < scene.mNumMeshes && HasFaces(*scene.mMeshes[node.mMeshes[mesh]])) {
                tree.Nodes[i].Meshes.push_back(node.mMeshes[mesh]);
            }
        }
        for (uint32_t child = 0; child < node.mNumChildren; ++child) {
            tree.Nodes[i].Children.push_back(static_cast<uint32_t>(nodes.size()));
            tree.Nodes.emplace_back();
            nodes.push_back(node.mChildren[child]);
        }
    }
}

// Finds the up axis below the root, and the root's transformation in the model's axes. STL and similar
// formats have Z up. An FBX file states its axis, and assimp does not convert it. For other formats
// with Z up, assimp sets a rotation to Y up at the root.
void FindUpAxis(SceneReading& reading) {
    const aiScene& scene = reading.Scene;
    Transform root = TransformOf(scene.mRootNode->mTransformation);
    const Point3 imageOfZ = {root[8], root[9], root[10]};
    if (imageOfZ.Y > 0.0 && std::abs(imageOfZ.X) + std::abs(imageOfZ.Z) < TurnTolerance * imageOfZ.Y) {
        for (size_t row = 0; row < root.size(); row += 4) {
            const Point3 turned =
                ToModelAxes(UpAxis::Y, Point3{root[row], root[row + 1], root[row + 2]});
            // Adding zero makes negative zeros positive.
            root[row] = turned.X + 0.0;
            root[row + 1] = turned.Y + 0.0;
            root[row + 2] = turned.Z + 0.0;
        }
        reading.Up = UpAxis::Z;
        reading.Root = root;
        return;
    }
    aiString format;
    int32_t axis = 1;
    if (scene.mMetaData != nullptr && scene.mMetaData->Get(AI_METADATA_SOURCE_FORMAT, format)) {
        const std::string_view name(format.data, format.length);
        const bool isZUp = std::ranges::find(ZUpFormats, name) != ZUpFormats.end() ||
                           (scene.mMetaData->Get("UpAxis", axis) && axis == 2);
        reading.Up = isZUp ? UpAxis::Z : UpAxis::Y;
    }
    reading.Root = ToModelAxes(reading.Up, root);
}

} // namespace

bool IsAssimpEnding(std::string_view ending) {
    // assimp reads out of bounds on valid files of this format.
    constexpr std::string_view unsafe = ".raw";
    return !ending.empty() && ending != unsafe &&
           aiIsExtensionSupported(std::string(ending).c_str()) != AI_FALSE;
}

bool ReadAssimpScene(const aiScene& scene, const std::u16string& directory, Model& model,
                     std::string& error) {
    SceneReading reading = {scene, model, UpAxis::Y, IdentityTransform, {}, {}, {}};
    FindUpAxis(reading);
    ReadAssimpMaterials(scene, directory, model, reading.CoordinateSets);
    ImportedTree tree;
    ReadNodes(reading, tree);
    for (uint32_t mesh = 0; mesh < scene.mNumMeshes; ++mesh) {
        const aiString& name = scene.mMeshes[mesh]->mName;
        tree.MeshNames.push_back(Utf16FromUtf8({name.data, name.length}));
    }
    tree.AddFaces = [&](uint32_t mesh) {
        AddMesh(reading, *scene.mMeshes[mesh]);
        return true;
    };
    return PlaceNodes(tree, model, error);
}

bool ReadAssimpModel(const std::u16string& path, std::string_view ending, Model& model,
                     std::string& error) {
    const std::u16string directory = DirectoryPart(path);
    AssimpFiles files = {path, Utf8FromUtf16(path), {}};
    files.ShownPath += ending;
    PrepareFiles(files);
    std::string reason;
    try {
        const std::unique_ptr<const aiScene, void (*)(const aiScene*)> scene(
            aiImportFileEx(files.ShownPath.c_str(), aiProcess_TransformUVCoords | aiProcess_GenUVCoords,
                           &files.Operations),
            aiReleaseImport);
        if (scene != nullptr && scene->mRootNode != nullptr) {
            return ReadAssimpScene(*scene, directory, model, error);
        }
        reason = aiGetErrorString();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& exception) {
        reason = exception.what();
    }
    error = "the file is broken or not supported";
    if (!reason.empty()) {
        error += " (" + reason.substr(0, reason.find('\n')) + ")";
    }
    return false;
}
