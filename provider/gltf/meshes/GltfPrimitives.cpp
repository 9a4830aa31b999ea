// Converts primitives to faces: separate triangles, with the vertices that they use.
#include "provider/gltf/meshes/GltfPrimitives.h"

#include "provider/gltf/meshes/PrimitiveData.h"
#include "provider/model/Mapping.h"
#include "provider/reading/NodeTree.h"

#include <algorithm>

namespace {

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

// Reads positions and normals in the pose, in the model's axes.
bool ReadVertices(PrimitiveReading& reading, const PrimitiveSource& source, const GltfPose& pose,
                  IndexRange range, FaceGeometry& geometry) {
    if (!ReadAttribute(source, GltfSemantic::Position, 0, range, geometry.Positions, reading.Error) ||
        !ReadAttribute(source, GltfSemantic::Normal, 0, range, geometry.Normals, reading.Error)) {
        return false;
    }
    for (Point3& position : geometry.Positions) {
        position = ToModelAxes(UpAxis::Y, position);
    }
    for (Point3& normal : geometry.Normals) {
        normal = ToModelAxes(UpAxis::Y, normal);
    }
    PoseVertices(source, pose, range, geometry.Positions, geometry.Normals, reading.Output.Remarks);
    for (Point3& normal : geometry.Normals) {
        if (!MakeUnit(normal, normal)) {
            normal = {0.0, 0.0, 1.0};
        }
    }
    return true;
}

bool ReadCoordinates(const PrimitiveSource& source, const GltfSurface& surface, IndexRange range,
                     std::vector<Point3>& coordinates, std::string& error) {
    if (!ReadAttribute(source, GltfSemantic::Coordinates, surface.CoordinateSet, range, coordinates,
                       error)) {
        return false;
    }
    const ModelSurface mapping = {surface.U, surface.V};
    for (Point3& point : coordinates) {
        point = CoordinatesOn(mapping, point.X, point.Y);
        if (!IsFinite(point)) {
            point = {0.0, 0.0, 1.0};
        }
    }
    return true;
}

void Clear(FaceGeometry& geometry) {
    geometry.Positions.clear();
    geometry.Normals.clear();
    geometry.FrontCoordinates.clear();
    geometry.BackCoordinates.clear();
    geometry.Indices.clear();
}

bool AddPrimitive(PrimitiveReading& reading, PrimitiveSource& source, const GltfPose& pose) {
    const GltfPrimitive& primitive = source.Primitive;
    const bool hasMaterial = primitive.Material != NoIndex;
    if (hasMaterial && primitive.Material >= reading.Surfaces.size()) {
        return FailIn(source, "material", "the material does not exist", reading.Error);
    }
    const GltfSurface surface = hasMaterial ? reading.Surfaces[primitive.Material] : GltfSurface();
    FaceGeometry& geometry = reading.Geometry;
    Clear(geometry);
    IndexRange range;
    if (!FindCompressedMesh(source, reading.Error) ||
        !ReadTriangles(source, geometry.Indices, range, reading.Error)) {
        return false;
    }
    if (geometry.Indices.empty()) {
        return true;
    }
    if (AddSingleFaces(reading.Output, source, pose, surface, {geometry.Indices, range},
                       reading.Singles)) {
        return true;
    }
    if (!ReadVertices(reading, source, pose, range, geometry) ||
        !ReadCoordinates(source, surface, range, geometry.FrontCoordinates, reading.Error)) {
        return false;
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
    CoverBothSides(reading.Output, firstFace, primitive.Material);
    return true;
}

} // namespace

bool AddMeshFaces(PrimitiveReading& reading, uint32_t mesh, const GltfPose& pose) {
    const std::vector<GltfPrimitive>& primitives = reading.Document.Records.Meshes[mesh].Primitives;
    for (size_t i = 0; i < primitives.size(); ++i) {
        PrimitiveSource source = {reading.Document, primitives[i], PlaceOfPrimitive(mesh, i)};
        if (HasTriangles(primitives[i]) && !AddPrimitive(reading, source, pose)) {
            return false;
        }
    }
    return true;
}

void ReserveFaces(GltfDocument& document, Model& model) {
    size_t indices = 0;
    size_t positions = 0;
    size_t coordinates = 0;
    for (const GltfMesh& mesh : document.Records.Meshes) {
        for (const GltfPrimitive& primitive : mesh.Primitives) {
            GltfElements vertices;
            GltfElements corners;
            std::string ignored;
            const GltfAttribute* attribute = FindAttribute(primitive.Attributes, GltfSemantic::Position);
            // Without data, the count can be anything.
            if (!HasTriangles(primitive) ||
                !FindElements(document, attribute->Accessor, vertices, ignored) ||
                (primitive.DracoView != NoIndex && !HasData(vertices))) {
                continue;
            }
            if (!FindElements(document, primitive.Indices, corners, ignored)) {
                corners = vertices;
            }
            // Primitives can share one array of vertices, of which each uses a few.
            const size_t used = std::min(vertices.Base.Count, corners.Base.Count);
            indices += corners.Base.Count;
            positions += used;
            coordinates +=
                FindAttribute(primitive.Attributes, GltfSemantic::Coordinates, 0) != nullptr ? used : 0;
        }
    }
    model.Indices.Reserve(indices);
    model.SinglePositions.Reserve(positions + positions / 8);
    model.SingleNormals.Reserve(positions + positions / 8);
    model.SingleCoordinates.Reserve(coordinates + coordinates / 8);
}
