// Reads each float where it is needed: nothing of the file is copied before its place in the model is
// known. Positions and coordinates keep their values; normals are made unit vectors in double precision
// and rounded, as everything that reads them does.
#include "provider/gltf/meshes/SingleFaces.h"

#include "provider/reading/FaceBuilder.h"
#include "provider/reading/NodeTree.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace {

// The floats of a range of vertices in the bytes of the file.
struct FloatView {
    const uint8_t* Bytes = nullptr;
    size_t Stride = 0;
};

struct SingleVertices {
    FloatView Positions;
    FloatView Normals;
    FloatView Coordinates; // without bytes if there are none
};

template <class Record> Record Load(const FloatView& view, size_t vertex) {
    Record record;
    std::memcpy(&record, view.Bytes + vertex * view.Stride, sizeof record);
    return record;
}

// Points the view at the floats of an attribute. Returns false if they can't be read like this.
bool FindFloats(const PrimitiveSource& source, GltfSemantic semantic, uint32_t set, IndexRange range,
                size_t components, FloatView& view) {
    const GltfAttribute* attribute = FindAttribute(source.Primitive.Attributes, semantic, set);
    GltfElements elements;
    std::string ignored;
    if (attribute == nullptr || !FindAttributeElements(source, *attribute, elements, ignored)) {
        return false;
    }
    const ElementView& base = elements.Base;
    if (base.Bytes == nullptr || base.Type != GltfType::Float || base.Components != components ||
        elements.Places.Count > 0 || range.First > base.Count ||
        range.Count > base.Count - range.First) {
        return false;
    }
    view = {base.Bytes + range.First * base.Stride, base.Stride};
    return true;
}

bool IsPosed(const PrimitiveSource& source, const GltfPose& pose) {
    const size_t targets = std::min(pose.Weights.size(), source.Primitive.Targets.size());
    return pose.Joints != nullptr ||
           std::any_of(pose.Weights.begin(), pose.Weights.begin() + static_cast<ptrdiff_t>(targets),
                       [](double weight) { return weight != 0.0; });
}

bool FindVertices(const PrimitiveSource& source, const GltfSurface& surface, IndexRange range,
                  SingleVertices& vertices) {
    if (!FindFloats(source, GltfSemantic::Position, 0, range, 3, vertices.Positions) ||
        !FindFloats(source, GltfSemantic::Normal, 0, range, 3, vertices.Normals)) {
        return false;
    }
    const uint32_t set = surface.CoordinateSet;
    if (FindAttribute(source.Primitive.Attributes, GltfSemantic::Coordinates, set) != nullptr &&
        !FindFloats(source, GltfSemantic::Coordinates, set, range, 2, vertices.Coordinates)) {
        return false;
    }
    for (size_t i = 0; i < range.Count; ++i) {
        if (!IsFinite(ToDouble(Load<SinglePoint>(vertices.Positions, i)))) {
            return false;
        }
    }
    return true;
}

// In the model's axes.
Point3 PositionAt(const SingleVertices& vertices, uint32_t vertex) {
    return ToModelAxes(UpAxis::Y, ToDouble(Load<SinglePoint>(vertices.Positions, vertex)));
}

VertexBits BitsOf(const SingleVertices& vertices, uint32_t vertex) {
    VertexBits bits = {};
    auto* bytes = reinterpret_cast<uint8_t*>(bits.data());
    std::memcpy(bytes, vertices.Positions.Bytes + vertex * vertices.Positions.Stride, 12);
    std::memcpy(bytes + 12, vertices.Normals.Bytes + vertex * vertices.Normals.Stride, 12);
    if (vertices.Coordinates.Bytes != nullptr) {
        std::memcpy(bytes + 24, vertices.Coordinates.Bytes + vertex * vertices.Coordinates.Stride, 8);
    }
    return bits;
}

// The building of one face.
struct SingleFace {
    Model& Output;
    const SingleVertices& Vertices;
    const SingleTriangles& Triangles;
    SingleScratch& Scratch;
    ModelFace Face;
    int SlotShift = 0; // of a hash, to the number of a slot; 0 if equal vertices are not searched for
    SinglePoint FormerNormal; // and its unit vector: neighbours often have the same
    SinglePoint FormerUnit;
};

constexpr uint32_t FreeSlot = 0xFFFFFFFF;

// Vertices of a primitive that shares most of them are hardly ever equal. [Units: vertices per corner]
constexpr double SharedAlready = 0.75;

// Makes room for the vertices of so many corners.
void ClearSlots(SingleFace& face, size_t corners) {
    const size_t vertices = face.Triangles.Vertices.Count;
    if (static_cast<double>(vertices) <
        SharedAlready * static_cast<double>(face.Triangles.Corners.size())) {
        return;
    }
    const size_t most = std::min(vertices, corners);
    const size_t count = std::bit_ceil(2 * most);
    face.Scratch.Different.Resize(most);
    face.Scratch.Slots.Resize(count);
    std::ranges::fill(face.Scratch.Slots, FreeSlot);
    face.SlotShift = 64 - std::countr_zero(count);
}

// Returns the index in the face of an earlier vertex with the same bits, or enters this one and returns
// the next index.
uint32_t FindEqual(SingleFace& face, uint32_t vertex) {
    const uint32_t next = face.Face.Vertices.Count;
    if (face.SlotShift == 0) {
        return next;
    }
    const VertexBits bits = BitsOf(face.Vertices, vertex);
    uint64_t hash = 0;
    for (const uint64_t part : bits) {
        hash = (hash ^ part) * 0x9E3779B97F4A7C15;
        hash ^= hash >> 32;
    }
    hash *= 0xD1B54A32D192ED03;
    const size_t mask = face.Scratch.Slots.Count - 1;
    for (size_t slot = hash >> face.SlotShift;; slot = (slot + 1) & mask) {
        uint32_t& other = face.Scratch.Slots[slot];
        if (other == FreeSlot) {
            other = next;
            face.Scratch.Different[next] = bits;
            return next;
        }
        const VertexBits& old = face.Scratch.Different[other];
        if (((old[0] ^ bits[0]) | (old[1] ^ bits[1]) | (old[2] ^ bits[2]) | (old[3] ^ bits[3])) == 0) {
            return other;
        }
    }
}

std::array<uint32_t, 3> BitsOf(SinglePoint point) {
    return std::bit_cast<std::array<uint32_t, 3>>(point);
}

SinglePoint UnitNormal(SingleFace& face, uint32_t vertex) {
    const auto normal = Load<SinglePoint>(face.Vertices.Normals, vertex);
    if (BitsOf(normal) != BitsOf(face.FormerNormal)) {
        Point3 unit = {0.0, 0.0, 1.0};
        MakeUnit(ToModelAxes(UpAxis::Y, ToDouble(normal)), unit);
        face.FormerNormal = normal;
        face.FormerUnit = ToSingle(unit);
    }
    return face.FormerUnit;
}

void AppendVertex(SingleFace& face, uint32_t vertex) {
    face.Output.SinglePositions.Push(ToSingle(PositionAt(face.Vertices, vertex)));
    face.Output.SingleNormals.Push(UnitNormal(face, vertex));
    if (face.Vertices.Coordinates.Bytes != nullptr) {
        face.Output.SingleCoordinates.Push(Load<SingleCoordinates>(face.Vertices.Coordinates, vertex));
    }
    ++face.Face.Vertices.Count;
}

// Returns the index of a vertex in the face, which it joins if it is new there.
uint32_t PlaceVertex(SingleFace& face, uint32_t vertex) {
    uint32_t& place = face.Scratch.Places[vertex];
    if (place <= face.Face.Vertices.First) {
        const uint32_t index = FindEqual(face, vertex);
        if (index == face.Face.Vertices.Count) {
            AppendVertex(face, vertex);
        }
        place = face.Face.Vertices.First + 1 + index;
    }
    return place - 1 - face.Face.Vertices.First;
}

// A face with fewer than three vertices counts as unreadable. If it has so few only because equal ones
// became one, it gets copies that no triangle uses.
void KeepThreeVertices(SingleFace& face, std::span<const uint32_t> triangles) {
    std::array<uint32_t, 3> different = {};
    size_t count = 0;
    for (size_t i = 0; i < 3 * triangles.size() && count < different.size(); ++i) {
        const uint32_t vertex = face.Triangles.Corners[3 * size_t{triangles[i / 3]} + i % 3];
        if (std::find(different.begin(), different.begin() + count, vertex) ==
            different.begin() + count) {
            different[count++] = vertex;
        }
    }
    while (face.Face.Vertices.Count < count) {
        AppendVertex(face, different[0]);
    }
}

// How far ahead of its use a vertex is loaded: the triangles of one axis are scattered over the file.
constexpr size_t TrianglesAhead = 8;

void Prefetch(const SingleFace& face, uint32_t vertex) {
    __builtin_prefetch(face.Vertices.Positions.Bytes + vertex * face.Vertices.Positions.Stride);
    __builtin_prefetch(face.Vertices.Normals.Bytes + vertex * face.Vertices.Normals.Stride);
    if (face.Vertices.Coordinates.Bytes != nullptr) {
        __builtin_prefetch(face.Vertices.Coordinates.Bytes + vertex * face.Vertices.Coordinates.Stride);
    }
}

// Appends the triangles as a face with the normal and the vertices that they use.
void AddPart(SingleFace& face, Point3 normal, std::span<const uint32_t> triangles, uint32_t surface) {
    Model& model = face.Output;
    face.Face = {};
    face.Face.IsSingle = true;
    face.Face.Normal = normal;
    face.Face.Vertices.First = static_cast<uint32_t>(model.SinglePositions.Count);
    face.Face.Normals = static_cast<uint32_t>(model.SingleNormals.Count);
    if (face.Vertices.Coordinates.Bytes != nullptr) {
        face.Face.Front.Coordinates = static_cast<uint32_t>(model.SingleCoordinates.Count);
        face.Face.Front.Surface = surface;
    }
    face.Face.Indices = {static_cast<uint32_t>(model.Indices.Count),
                         static_cast<uint32_t>(3 * triangles.size())};
    ClearSlots(face, 3 * triangles.size());
    uint32_t* index = model.Indices.Append(3 * triangles.size());
    for (size_t i = 0; i < triangles.size(); ++i) {
        const uint32_t* corners = &face.Triangles.Corners[3 * size_t{triangles[i]}];
        if (i + TrianglesAhead < triangles.size()) {
            Prefetch(face, face.Triangles.Corners[3 * size_t{triangles[i + TrianglesAhead]}]);
        }
        for (size_t corner = 0; corner < 3; ++corner) {
            *index++ = PlaceVertex(face, corners[corner]);
        }
    }
    if (face.Face.Vertices.Count < 3) {
        KeepThreeVertices(face, triangles);
    }
}

// Adds the finished face, whose plane goes through a position.
void AddFace(SingleFace& face, Point3 position) {
    face.Face.Distance = -Dot(face.Face.Normal, position);
    face.Output.Faces.push_back(face.Face);
}

} // namespace

bool AddSingleFaces(Model& model, const PrimitiveSource& source, const GltfPose& pose,
                    const GltfSurface& surface, const SingleTriangles& triangles,
                    SingleScratch& scratch) {
    SingleVertices vertices;
    if (IsPosed(source, pose) || !FindVertices(source, surface, triangles.Vertices, vertices)) {
        return false;
    }
    const size_t firstFace = model.Faces.size();
    const auto surfaceNumber = static_cast<uint32_t>(model.Surfaces.size());
    model.Surfaces.push_back({surface.U, surface.V});
    if (scratch.Places.Count < triangles.Vertices.Count) {
        const size_t more = triangles.Vertices.Count - scratch.Places.Count;
        std::fill_n(scratch.Places.Append(more), more, 0);
    }
    const auto at = [&](uint32_t vertex) {
        return PositionAt(vertices, vertex);
    };
    SingleFace face = {.Output = model,
                       .Vertices = vertices,
                       .Triangles = triangles,
                       .Scratch = scratch,
                       .Face = {},
                       .FormerNormal = {},
                       .FormerUnit = {0.0F, 0.0F, 1.0F}};
    Point3 normal;
    if (FindCommonNormal(at, triangles.Corners, normal)) {
        scratch.Order.Triangles.Resize(triangles.Corners.size() / 3);
        std::iota(scratch.Order.Triangles.begin(), scratch.Order.Triangles.end(), 0U);
        AddPart(face, normal, scratch.Order.Triangles, surfaceNumber);
        AddFace(face, at(0));
    } else {
        SortByAxis(at, triangles.Corners, normal, scratch.Order);
        for (size_t axis = 0; axis < AxisCount; ++axis) {
            if (!scratch.Order.Part(axis).empty()) {
                AddPart(face, Axes[axis], scratch.Order.Part(axis), surfaceNumber);
                AddFace(face, ToDouble(model.SinglePositions[face.Face.Vertices.First]));
            }
        }
    }
    CoverBothSides(model, firstFace, source.Primitive.Material);
    return true;
}
