// Converts primitives to faces: separate triangles, with the vertices that they use.
#include "provider/gltf/GltfPrimitives.h"

#include "provider/gltf/data/GltfElements.h"
#include "provider/reading/FaceBuilder.h"
#include "provider/reading/NodeTree.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

// One primitive, and where the messages place it.
struct PrimitiveSource {
    PrimitiveReading& Reading;
    const GltfPrimitive& Primitive;
    uint32_t Mesh;
    size_t Number;
};

// member is a member of the primitive, such as "indices".
bool Fail(const PrimitiveSource& source, const std::string& member, const std::string& reason) {
    source.Reading.Error = PlaceIn("meshes", source.Mesh) + "." + PlaceIn("primitives", source.Number) +
                           (member.empty() ? "" : ".") + member + ": " + reason;
    return false;
}

// Converts strips and fans to separate triangles, in indices.
void SeparateTriangles(GltfMode mode, std::vector<uint32_t>& indices) {
    if (mode == GltfMode::Triangles || indices.size() < 3) {
        indices.resize(indices.size() / 3 * 3);
        return;
    }
    std::vector<uint32_t> separate;
    separate.reserve((indices.size() - 2) * 3);
    for (size_t i = 2; i < indices.size(); ++i) {
        const bool isFan = mode == GltfMode::Fan;
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

std::string NameOf(const GltfAttribute& attribute) {
    switch (attribute.Semantic) {
    case GltfSemantic::Position:
        return "attributes.POSITION";
    case GltfSemantic::Normal:
        return "attributes.NORMAL";
    default:
        return "attributes.TEXCOORD_" + std::to_string(attribute.Set);
    }
}

// An explanation for an accessor without data, if an extension that is not supported can have it.
std::string MissingData(const PrimitiveSource& source, uint32_t accessor) {
    const GltfRecords& records = source.Reading.Document.Records;
    uint32_t extension = source.Primitive.Extension;
    if (accessor < records.Accessors.size()) {
        const GltfAccessor& record = records.Accessors[accessor];
        const bool hasView = record.View < records.BufferViews.size();
        if (hasView || record.Sparse != NoIndex) {
            extension = hasView ? records.BufferViews[record.View].Extension : NoIndex;
        } else if (record.Extension != NoIndex) {
            extension = record.Extension;
        }
    }
    return extension == NoIndex ? std::string()
                                : "the data is only in the glTF extension \"" +
                                      records.Extensions[extension] + "\", which is not supported";
}

bool FindData(const PrimitiveSource& source, const std::string& member, uint32_t accessor,
              GltfElements& elements) {
    std::string reason;
    const bool isFound = FindElements(source.Reading.Document, accessor, elements, reason);
    if (isFound && HasData(elements)) {
        return true;
    }
    const std::string missing = MissingData(source, accessor);
    if (isFound && missing.empty()) {
        return true; // all are zero
    }
    return Fail(source, member, missing.empty() ? reason : missing);
}

// Reads an attribute. Without it there are no points.
bool ReadAttribute(const PrimitiveSource& source, GltfSemantic semantic, uint32_t set, IndexRange range,
                   std::vector<Point3>& points) {
    const GltfAttribute* attribute = FindAttribute(source.Primitive, semantic, set);
    if (attribute == nullptr) {
        return true;
    }
    GltfElements elements;
    if (!FindData(source, NameOf(*attribute), attribute->Accessor, elements)) {
        return false;
    }
    const char* reason = ReadPoints(elements, range, points);
    return reason == nullptr || Fail(source, NameOf(*attribute), reason);
}

// Reads the triangles of a primitive and the range of vertices that they use. Indices count from the
// first of the range.
bool ReadTriangles(const PrimitiveSource& source, std::vector<uint32_t>& indices, IndexRange& range) {
    const GltfPrimitive& primitive = source.Primitive;
    const GltfAttribute& positions = *FindAttribute(primitive, GltfSemantic::Position);
    GltfElements elements;
    if (!FindData(source, NameOf(positions), positions.Accessor, elements)) {
        return false;
    }
    const size_t vertices = elements.Base.Count;
    if (vertices >= NoIndex) {
        return Fail(source, NameOf(positions), "there are too many vertices");
    }
    if (primitive.Indices == NoIndex) {
        indices.resize(vertices);
        std::iota(indices.begin(), indices.end(), 0U);
    } else {
        if (!FindData(source, "indices", primitive.Indices, elements)) {
            return false;
        }
        const char* reason = HasData(elements) ? ReadIndices(elements, indices) : "the data is missing";
        if (reason != nullptr) {
            return Fail(source, "indices", reason);
        }
    }
    SeparateTriangles(primitive.Mode, indices);
    if (indices.empty()) {
        return true;
    }
    const auto [least, most] = std::ranges::minmax(indices);
    if (most >= vertices) {
        return Fail(source, "indices", "an index is not below the number of vertices");
    }
    range = {least, most - least + 1};
    if (least > 0) {
        for (uint32_t& index : indices) {
            index -= range.First;
        }
    }
    return true;
}

bool ReadNormals(const PrimitiveSource& source, IndexRange range, std::vector<Point3>& normals) {
    if (!ReadAttribute(source, GltfSemantic::Normal, 0, range, normals)) {
        return false;
    }
    for (Point3& normal : normals) {
        normal = ToModelAxes(UpAxis::Y, normal);
        if (!MakeUnit(normal, normal)) {
            normal = {0.0, 0.0, 1.0};
        }
    }
    return true;
}

bool ReadCoordinates(const PrimitiveSource& source, const GltfSurface& surface, IndexRange range,
                     std::vector<Point3>& coordinates) {
    if (!ReadAttribute(source, GltfSemantic::Coordinates, surface.CoordinateSet, range, coordinates)) {
        return false;
    }
    for (Point3& point : coordinates) {
        point = CoordinatesOn(surface, point.X, point.Y);
        if (!IsFinite(point)) {
            point = {0.0, 0.0, 1.0};
        }
    }
    return true;
}

bool ReadPositions(const PrimitiveSource& source, IndexRange range, std::vector<Point3>& positions) {
    if (!ReadAttribute(source, GltfSemantic::Position, 0, range, positions)) {
        return false;
    }
    for (Point3& position : positions) {
        position = ToModelAxes(UpAxis::Y, position);
    }
    return true;
}

bool AddPrimitive(const PrimitiveSource& source) {
    const GltfPrimitive& primitive = source.Primitive;
    const std::vector<GltfSurface>& surfaces = source.Reading.Surfaces;
    Model& model = source.Reading.Output;
    if (!HasTriangles(primitive)) {
        return true;
    }
    if (primitive.Material != NoIndex && primitive.Material >= surfaces.size()) {
        return Fail(source, "material", "the material does not exist");
    }
    FaceGeometry geometry;
    IndexRange range;
    if (!ReadTriangles(source, geometry.Indices, range)) {
        return false;
    }
    if (geometry.Indices.empty()) {
        return true;
    }
    if (!ReadPositions(source, range, geometry.Positions) ||
        !ReadNormals(source, range, geometry.Normals) ||
        !ReadCoordinates(source,
                         primitive.Material != NoIndex ? surfaces[primitive.Material] : GltfSurface(),
                         range, geometry.FrontCoordinates)) {
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
    const size_t firstFace = model.Faces.size();
    AddTriangulation(model, geometry);
    CoverBothSides(model, firstFace, primitive.Material);
    return true;
}

} // namespace

bool AddMeshFaces(PrimitiveReading& reading, uint32_t mesh) {
    const std::vector<GltfPrimitive>& primitives = reading.Document.Records.Meshes[mesh].Primitives;
    for (size_t i = 0; i < primitives.size(); ++i) {
        if (!AddPrimitive({reading, primitives[i], mesh, i})) {
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
            if (!HasTriangles(primitive) ||
                !FindElements(document, FindAttribute(primitive, GltfSemantic::Position)->Accessor,
                              vertices, ignored)) {
                continue;
            }
            if (!FindElements(document, primitive.Indices, corners, ignored)) {
                corners = vertices;
            }
            // Primitives can share one array of vertices, of which each uses a few.
            const size_t used = std::min(vertices.Base.Count, corners.Base.Count);
            indices += corners.Base.Count;
            positions += used;
            coordinates += FindAttribute(primitive, GltfSemantic::Coordinates, 0) != nullptr ? used : 0;
        }
    }
    model.Indices.reserve(indices);
    model.Positions.reserve(positions + positions / 8);
    model.Normals.reserve(positions + positions / 8);
    model.Coordinates.reserve(coordinates + coordinates / 8);
}
