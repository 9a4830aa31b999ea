// Builds faces from triangulated geometry.
#include "provider/reading/FaceBuilder.h"

#include "provider/reading/FaceParts.h"

#include <algorithm>

namespace {

auto PositionsOf(const FaceGeometry& geometry) {
    return [&geometry](uint32_t vertex) {
        return geometry.Positions[vertex];
    };
}

Point3 NormalFrom(const FaceGeometry& geometry, size_t firstIndex) {
    return NormalOfTriangle(PositionsOf(geometry), &geometry.Indices[firstIndex]);
}

// Appends values to an array of the model. Returns the index of the first, or NoIndex if there are
// none.
uint32_t Append(LargeArray<Point3>& array, const std::vector<Point3>& values) {
    const uint32_t first = values.empty() ? NoIndex : static_cast<uint32_t>(array.Count);
    std::ranges::copy(values, array.Append(values.size()));
    return first;
}

// Appends triangles of one axis as a face with the vertices that they use. newIndices is NoIndex for
// each vertex, before and after.
void AddPart(Model& model, const FaceGeometry& whole, std::span<const uint32_t> triangles, size_t axis,
             std::vector<uint32_t>& newIndices) {
    ModelFace face;
    face.Normal = Axes[axis];
    face.Indices = {static_cast<uint32_t>(model.Indices.Count),
                    static_cast<uint32_t>(3 * triangles.size())};
    std::vector<uint32_t> used; // vertices in the order of their new indices
    used.reserve(std::min(whole.Positions.size(), 3 * triangles.size()));
    uint32_t* index = model.Indices.Append(3 * triangles.size());
    for (const uint32_t triangle : triangles) {
        for (size_t corner = 0; corner < 3; ++corner) {
            const uint32_t vertex = whole.Indices[3 * size_t{triangle} + corner];
            if (newIndices[vertex] == NoIndex) {
                newIndices[vertex] = static_cast<uint32_t>(used.size());
                used.push_back(vertex);
            }
            *index++ = newIndices[vertex];
        }
    }
    // Returns the index of the first, or NoIndex if there are none.
    const auto appendUsed = [&](const std::vector<Point3>& values, LargeArray<Point3>& array) {
        const size_t first = array.Count;
        Point3* value = array.Append(values.empty() ? 0 : used.size());
        for (size_t i = 0; i < array.Count - first; ++i) {
            *value++ = values[used[i]];
        }
        return values.empty() ? NoIndex : static_cast<uint32_t>(first);
    };
    face.Vertices = {appendUsed(whole.Positions, model.Positions), static_cast<uint32_t>(used.size())};
    face.Normals = appendUsed(whole.Normals, model.Normals);
    face.Front.Coordinates = appendUsed(whole.FrontCoordinates, model.Coordinates);
    face.Back.Coordinates = appendUsed(whole.BackCoordinates, model.Coordinates);
    for (const uint32_t vertex : used) {
        newIndices[vertex] = NoIndex;
    }
    face.Distance = -Dot(face.Normal, model.Positions[face.Vertices.First]);
    model.Faces.push_back(face);
}

} // namespace

void AddFace(Model& model, const FaceGeometry& geometry, Point3 normal) {
    ModelFace face;
    face.Normal = normal;
    face.Distance = -Dot(normal, geometry.Positions[0]);
    face.Vertices = {Append(model.Positions, geometry.Positions),
                     static_cast<uint32_t>(geometry.Positions.size())};
    face.Indices = {static_cast<uint32_t>(model.Indices.Count),
                    static_cast<uint32_t>(geometry.Indices.size())};
    std::ranges::copy(geometry.Indices, model.Indices.Append(geometry.Indices.size()));
    face.Normals = Append(model.Normals, geometry.Normals);
    face.Front.Coordinates = Append(model.Coordinates, geometry.FrontCoordinates);
    face.Back.Coordinates = Append(model.Coordinates, geometry.BackCoordinates);
    model.Faces.push_back(face);
}

void AddTriangulation(Model& model, const FaceGeometry& geometry) {
    Point3 normal;
    if (FindCommonNormal(PositionsOf(geometry), geometry.Indices, normal)) {
        AddFace(model, geometry, normal);
        return;
    }
    AxisOrder order;
    SortByAxis(PositionsOf(geometry), geometry.Indices, normal, order);
    std::vector<uint32_t> newIndices(geometry.Positions.size(), NoIndex);
    for (size_t axis = 0; axis < AxisCount; ++axis) {
        if (!order.Part(axis).empty()) {
            AddPart(model, geometry, order.Part(axis), axis, newIndices);
        }
    }
}

void CoverBothSides(Model& model, size_t firstFace, uint32_t material) {
    for (size_t i = firstFace; i < model.Faces.size(); ++i) {
        model.Faces[i].Front.Material = material;
        model.Faces[i].Back = model.Faces[i].Front;
    }
}

void DropUnusedVertices(FaceGeometry& geometry) {
    std::vector<uint32_t> newIndices(geometry.Positions.size(), NoIndex);
    for (const uint32_t vertex : geometry.Indices) {
        newIndices[vertex] = 0;
    }
    uint32_t kept = 0;
    for (size_t vertex = 0; vertex < newIndices.size(); ++vertex) {
        if (newIndices[vertex] == NoIndex) {
            continue;
        }
        const auto move = [&](std::vector<Point3>& values) {
            if (!values.empty()) {
                values[kept] = values[vertex];
            }
        };
        move(geometry.Positions);
        move(geometry.Normals);
        move(geometry.FrontCoordinates);
        move(geometry.BackCoordinates);
        newIndices[vertex] = kept++;
    }
    for (std::vector<Point3>* values : {&geometry.Positions, &geometry.Normals,
                                        &geometry.FrontCoordinates, &geometry.BackCoordinates}) {
        values->resize(values->empty() ? 0 : kept);
    }
    for (uint32_t& vertex : geometry.Indices) {
        vertex = newIndices[vertex];
    }
}

void MakeFlatNormals(FaceGeometry& geometry) {
    const auto expand = [&](std::vector<Point3>& values) {
        if (values.empty()) {
            return;
        }
        std::vector<Point3> corners;
        corners.reserve(geometry.Indices.size());
        for (const uint32_t vertex : geometry.Indices) {
            corners.push_back(values[vertex]);
        }
        values.swap(corners);
    };
    expand(geometry.Positions);
    expand(geometry.FrontCoordinates);
    expand(geometry.BackCoordinates);
    geometry.Normals.resize(geometry.Indices.size());
    Point3 normal = {0.0, 0.0, 1.0};
    for (size_t i = 0; i < geometry.Indices.size(); ++i) {
        geometry.Indices[i] = static_cast<uint32_t>(i);
        if (i % 3 == 2) {
            MakeUnit(NormalFrom(geometry, i - 2), normal);
            std::fill_n(geometry.Normals.begin() + static_cast<ptrdiff_t>(i - 2), 3, normal);
        }
    }
}

void MakeSmoothNormals(FaceGeometry& geometry) {
    geometry.Normals.assign(geometry.Positions.size(), {});
    Point3 sum;
    for (size_t i = 0; i < geometry.Indices.size(); i += 3) {
        const Point3 own = NormalFrom(geometry, i);
        sum = sum + own;
        for (size_t corner = i; corner < i + 3; ++corner) {
            Point3& normal = geometry.Normals[geometry.Indices[corner]];
            normal = normal + own;
        }
    }
    // Vertices whose triangles cancel out or have no area still need a direction.
    Point3 fallback = {0.0, 0.0, 1.0};
    MakeUnit(sum, fallback);
    for (Point3& normal : geometry.Normals) {
        if (!MakeUnit(normal, normal)) {
            normal = fallback;
        }
    }
}
