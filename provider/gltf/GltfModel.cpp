// Reads models in glTF 2. Right-handed, Y up, metres; v points down from the picture's upper edge.
#include "provider/gltf/GltfModel.h"

#include "platform/Text.h"
#include "provider/gltf/GltfAccessor.h"
#include "provider/gltf/GltfMaterials.h"
#include "provider/reading/FaceBuilder.h"
#include "provider/reading/NodeTree.h"

#include <algorithm>
#include <cmath>

namespace {

struct GltfReading {
    const GltfDocument& Document;
    Model& Output;
    std::string& Error;
    std::vector<GltfSurface> Surfaces; // of each material, which has the same index in Output
    ImportedTree Tree;
};

bool FailAt(GltfReading& reading, size_t mesh, size_t primitive, const std::string& reason) {
    reading.Error =
        "meshes[" + std::to_string(mesh) + "].primitives[" + std::to_string(primitive) + "]: " + reason;
    return false;
}

bool HasTriangles(const tinygltf::Primitive& primitive) {
    return primitive.mode >= TINYGLTF_MODE_TRIANGLES && primitive.mode <= TINYGLTF_MODE_TRIANGLE_FAN &&
           primitive.attributes.contains("POSITION");
}

// Converts strips and fans to separate triangles, in indices.
void SeparateTriangles(int mode, std::vector<uint32_t>& indices) {
    if (mode == TINYGLTF_MODE_TRIANGLES || indices.size() < 3) {
        indices.resize(indices.size() / 3 * 3);
        return;
    }
    std::vector<uint32_t> separate;
    separate.reserve((indices.size() - 2) * 3);
    for (size_t i = 2; i < indices.size(); ++i) {
        const bool isFan = mode == TINYGLTF_MODE_TRIANGLE_FAN;
        // Every second triangle of a strip turns the other way.
        const size_t odd = isFan ? 0 : i % 2;
        separate.push_back(isFan ? indices[0] : indices[i - 2 + odd]);
        separate.push_back(indices[i - 1 - odd]);
        separate.push_back(indices[i]);
    }
    indices.swap(separate);
}

bool IsFinite(Point3 point) {
    return std::isfinite(point.X) && std::isfinite(point.Y) && std::isfinite(point.Z);
}

// Removes triangles with a non-finite corner.
void DropNonFiniteTriangles(FaceGeometry& geometry) {
    if (std::ranges::all_of(geometry.Positions, IsFinite)) {
        return;
    }
    size_t kept = 0;
    for (size_t i = 0; i < geometry.Indices.size(); i += 3) {
        const auto triangle = geometry.Indices.begin() + static_cast<ptrdiff_t>(i);
        if (std::all_of(triangle, triangle + 3,
                        [&](uint32_t vertex) { return IsFinite(geometry.Positions[vertex]); })) {
            std::copy_n(triangle, 3, geometry.Indices.begin() + static_cast<ptrdiff_t>(kept));
            kept += 3;
        }
    }
    geometry.Indices.resize(kept);
}

// Reads the triangles of a primitive and the range of vertices that they use. Indices count from the
// first of the range.
const char* ReadTriangles(const GltfDocument& document, const tinygltf::Primitive& primitive,
                          std::vector<uint32_t>& indices, IndexRange& range) {
    uint32_t vertices = 0;
    if (!CountElements(document, primitive.attributes.at("POSITION"), vertices)) {
        return "the positions are missing or outside their buffer";
    }
    if (primitive.indices >= 0) {
        if (const char* reason = ReadIndices(document, primitive.indices, indices)) {
            return reason;
        }
    } else {
        indices.resize(vertices);
        for (uint32_t i = 0; i < vertices; ++i) {
            indices[i] = i;
        }
    }
    SeparateTriangles(primitive.mode, indices);
    if (indices.empty()) {
        return nullptr;
    }
    const auto [least, most] = std::ranges::minmax(indices);
    if (most >= vertices) {
        return "an index is not below the number of vertices";
    }
    range = {least, most - least + 1};
    for (uint32_t& index : indices) {
        index -= range.First;
    }
    return nullptr;
}

const char* ReadNormals(const GltfDocument& document, const tinygltf::Primitive& primitive,
                        IndexRange range, std::vector<Point3>& normals) {
    const auto attribute = primitive.attributes.find("NORMAL");
    if (attribute == primitive.attributes.end()) {
        return nullptr;
    }
    if (const char* reason = ReadPoints(document, attribute->second, range, normals)) {
        return reason;
    }
    for (Point3& normal : normals) {
        normal = ToModelAxes(UpAxis::Y, normal);
        if (!MakeUnit(normal, normal)) {
            normal = {0.0, 0.0, 1.0};
        }
    }
    return nullptr;
}

const char* ReadCoordinates(const GltfDocument& document, const tinygltf::Primitive& primitive,
                            const GltfSurface& surface, IndexRange range,
                            std::vector<Point3>& coordinates) {
    const auto attribute =
        primitive.attributes.find("TEXCOORD_" + std::to_string(surface.CoordinateSet));
    if (attribute == primitive.attributes.end()) {
        return nullptr;
    }
    if (const char* reason = ReadPoints(document, attribute->second, range, coordinates)) {
        return reason;
    }
    for (Point3& point : coordinates) {
        point = CoordinatesOn(surface, point.X, point.Y);
        if (!IsFinite(point)) {
            point = {0.0, 0.0, 1.0};
        }
    }
    return nullptr;
}

bool AddPrimitive(GltfReading& reading, size_t mesh, size_t number) {
    const tinygltf::Primitive& primitive = reading.Document.Records.meshes[mesh].primitives[number];
    if (!HasTriangles(primitive)) {
        return true;
    }
    const bool hasMaterial = primitive.material >= 0;
    const auto material = hasMaterial ? static_cast<uint32_t>(primitive.material) : NoIndex;
    if (hasMaterial && material >= reading.Surfaces.size()) {
        return FailAt(reading, mesh, number, "the material does not exist");
    }
    const GltfSurface surface = hasMaterial ? reading.Surfaces[material] : GltfSurface();
    FaceGeometry geometry;
    IndexRange range;
    const GltfDocument& document = reading.Document;
    const char* reason = ReadTriangles(document, primitive, geometry.Indices, range);
    if (reason == nullptr && range.Count > 0) {
        reason = ReadPoints(document, primitive.attributes.at("POSITION"), range, geometry.Positions);
    }
    if (reason == nullptr && range.Count > 0) {
        reason = ReadNormals(document, primitive, range, geometry.Normals);
    }
    if (reason == nullptr && range.Count > 0) {
        reason = ReadCoordinates(document, primitive, surface, range, geometry.FrontCoordinates);
    }
    if (reason != nullptr) {
        return FailAt(reading, mesh, number, reason);
    }
    for (Point3& position : geometry.Positions) {
        position = ToModelAxes(UpAxis::Y, position);
    }
    DropNonFiniteTriangles(geometry);
    if (geometry.Indices.empty()) {
        return true;
    }
    DropUnusedVertices(geometry);
    if (geometry.Normals.empty()) {
        MakeFlatNormals(geometry);
    }
    const size_t firstFace = reading.Output.Faces.size();
    AddTriangulation(reading.Output, geometry);
    CoverBothSides(reading.Output, firstFace, material);
    return true;
}

// Reserves memory for the least that all primitives need, and for seams.
void ReserveArrays(const GltfDocument& document, Model& model) {
    size_t indices = 0;
    size_t positions = 0;
    size_t coordinates = 0;
    for (const tinygltf::Mesh& mesh : document.Records.meshes) {
        for (const tinygltf::Primitive& primitive : mesh.primitives) {
            uint32_t vertexCount = 0;
            uint32_t indexCount = 0;
            if (!HasTriangles(primitive) ||
                !CountElements(document, primitive.attributes.at("POSITION"), vertexCount)) {
                continue;
            }
            if (!CountElements(document, primitive.indices, indexCount)) {
                indexCount = vertexCount;
            }
            // Primitives can share one array of vertices, of which each uses a few.
            const size_t used = std::min(vertexCount, indexCount);
            indices += indexCount;
            positions += used;
            coordinates += primitive.attributes.contains("TEXCOORD_0") ? used : 0;
        }
    }
    model.Indices.reserve(indices);
    model.Positions.reserve(positions + positions / 8);
    model.Normals.reserve(positions + positions / 8);
    model.Coordinates.reserve(coordinates + coordinates / 8);
}

bool ReadFactor(const std::vector<double>& values, size_t count) {
    return values.size() == count &&
           std::ranges::all_of(values, [](double value) { return std::isfinite(value); });
}

// The placement of a node in glTF's axes. A matrix for column vectors, stored by columns, equals one
// for row vectors, stored by rows.
Transform PlacementOf(const tinygltf::Node& node) {
    Transform transform = IdentityTransform;
    if (ReadFactor(node.matrix, transform.size())) {
        std::ranges::copy(node.matrix, transform.begin());
        return transform;
    }
    if (ReadFactor(node.rotation, 4)) {
        const double x = node.rotation[0];
        const double y = node.rotation[1];
        const double z = node.rotation[2];
        const double w = node.rotation[3];
        transform = {1 - 2 * (y * y + z * z),
                     2 * (x * y + z * w),
                     2 * (x * z - y * w),
                     0,
                     2 * (x * y - z * w),
                     1 - 2 * (x * x + z * z),
                     2 * (y * z + x * w),
                     0,
                     2 * (x * z + y * w),
                     2 * (y * z - x * w),
                     1 - 2 * (x * x + y * y),
                     0,
                     0,
                     0,
                     0,
                     1};
    }
    for (size_t axis = 0; axis < 3; ++axis) {
        for (size_t column = 0; column < 3 && ReadFactor(node.scale, 3); ++column) {
            transform[axis * 4 + column] *= node.scale[axis];
        }
        if (ReadFactor(node.translation, 3)) {
            transform[12 + axis] = node.translation[axis];
        }
    }
    return transform;
}

bool ReadNode(GltfReading& reading, size_t index) {
    const tinygltf::Node& node = reading.Document.Records.nodes[index];
    const std::string place = "nodes[" + std::to_string(index) + "]: ";
    ImportedNode imported;
    imported.Name = Utf16FromUtf8(node.name);
    imported.Placement = ToModelAxes(UpAxis::Y, PlacementOf(node));
    if (imported.Placement[15] == 0.0) {
        reading.Error = place + "the last number of the matrix must not be 0";
        return false;
    }
    for (const int child : node.children) {
        if (child < 0 || static_cast<size_t>(child) >= reading.Document.Records.nodes.size()) {
            reading.Error = place + "a child does not exist";
            return false;
        }
        imported.Children.push_back(static_cast<uint32_t>(child) + 1);
    }
    if (node.mesh >= 0) {
        const auto mesh = static_cast<size_t>(node.mesh);
        if (mesh >= reading.Document.Records.meshes.size()) {
            reading.Error = place + "the mesh does not exist";
            return false;
        }
        if (std::ranges::any_of(reading.Document.Records.meshes[mesh].primitives, HasTriangles)) {
            imported.Meshes.push_back(static_cast<uint32_t>(mesh));
        }
    }
    reading.Tree.Nodes.push_back(std::move(imported));
    return true;
}

// The nodes of the scene or, without a scene, those without a parent.
bool ReadRoots(GltfReading& reading) {
    const tinygltf::Model& records = reading.Document.Records;
    std::vector<uint32_t>& roots = reading.Tree.Nodes[0].Children;
    if (records.scenes.empty()) {
        std::vector<bool> isChild(records.nodes.size() + 1);
        for (const ImportedNode& node : reading.Tree.Nodes) {
            for (const uint32_t child : node.Children) {
                isChild[child] = true;
            }
        }
        for (uint32_t node = 1; node < isChild.size(); ++node) {
            if (!isChild[node]) {
                roots.push_back(node);
            }
        }
        return true;
    }
    const size_t scene = records.defaultScene >= 0 ? static_cast<size_t>(records.defaultScene) : 0;
    if (scene >= records.scenes.size()) {
        reading.Error = "the scene does not exist";
        return false;
    }
    for (const int node : records.scenes[scene].nodes) {
        if (node < 0 || static_cast<size_t>(node) >= records.nodes.size()) {
            reading.Error = "a node of the scene does not exist";
            return false;
        }
        roots.push_back(static_cast<uint32_t>(node) + 1);
    }
    return true;
}

} // namespace

bool ReadGltfModel(const GltfParts& parts, const JsonTape& json, const std::u16string& directory,
                   Model& model, std::string& error) {
    GltfDocument document;
    if (!ReadGltfDocument(parts, json, directory, document, error)) {
        return false;
    }
    GltfReading reading = {document, model, error, {}, {}};
    ReadGltfMaterials(document, directory, model, reading.Surfaces);

    // Node 0 holds the nodes of the scene; the document's nodes follow.
    reading.Tree.Nodes.emplace_back();
    for (size_t node = 0; node < document.Records.nodes.size(); ++node) {
        if (!ReadNode(reading, node)) {
            return false;
        }
    }
    for (const tinygltf::Mesh& mesh : document.Records.meshes) {
        reading.Tree.MeshNames.push_back(Utf16FromUtf8(mesh.name));
    }
    reading.Tree.AddFaces = [&](uint32_t mesh) {
        for (size_t i = 0; i < document.Records.meshes[mesh].primitives.size(); ++i) {
            if (!AddPrimitive(reading, mesh, i)) {
                return false;
            }
        }
        return true;
    };
    ReserveArrays(document, model);
    return ReadRoots(reading) && PlaceNodes(reading.Tree, model, error);
}
