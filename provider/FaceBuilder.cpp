// Faces of a model from ready geometry. A triangulation that turns to all sides is cut by the axis to
// which each triangle points most: simple, and never more than six faces.
#include "provider/FaceBuilder.h"

#include <algorithm>

// Cosine of the angle between a triangle's normal and the face's: triangles closer to edge-on than this
// could change sides when the coordinates are rounded.
constexpr double SmallestTurn = 1e-3;

constexpr size_t AxisCount = 6;
constexpr std::array<Point3, AxisCount> Axes = {Point3{1, 0, 0},  Point3{-1, 0, 0}, Point3{0, 1, 0},
                                                Point3{0, -1, 0}, Point3{0, 0, 1},  Point3{0, 0, -1}};

namespace {

// Has the length of twice the triangle's area.
Point3 NormalOfTriangle(const FaceGeometry& geometry, size_t firstIndex) {
    const Point3 a = geometry.Positions[geometry.Indices[firstIndex]];
    const Point3 b = geometry.Positions[geometry.Indices[firstIndex + 1]];
    const Point3 c = geometry.Positions[geometry.Indices[firstIndex + 2]];
    return Cross(b - a, c - a);
}

// The common normal of all triangles, if all of them turn to its side.
bool FindCommonNormal(const FaceGeometry& geometry, Point3& normal) {
    Point3 sum;
    for (size_t i = 0; i < geometry.Indices.size(); i += 3) {
        sum = sum + NormalOfTriangle(geometry, i);
    }
    if (!MakeUnit(sum, normal)) {
        return false;
    }
    for (size_t i = 0; i < geometry.Indices.size(); i += 3) {
        const Point3 own = NormalOfTriangle(geometry, i);
        if (Dot(own, normal) < SmallestTurn * Length(own)) {
            return false;
        }
    }
    return true;
}

size_t AxisOf(Point3 normal) {
    size_t best = 0;
    for (size_t axis = 1; axis < AxisCount; ++axis) {
        if (Dot(normal, Axes[axis]) > Dot(normal, Axes[best])) {
            best = axis;
        }
    }
    return best;
}

void AppendIfAny(const std::vector<Point3>& from, uint32_t index, std::vector<Point3>& to) {
    if (!from.empty()) {
        to.push_back(from[index]);
    }
}

// The part of a triangulation that has the given triangles, with the vertices that they use.
FaceGeometry PartOf(const FaceGeometry& whole, const std::vector<size_t>& firstIndices,
                    std::vector<uint32_t>& newIndices) {
    FaceGeometry part;
    for (const size_t first : firstIndices) {
        for (size_t i = first; i < first + 3; ++i) {
            const uint32_t vertex = whole.Indices[i];
            if (newIndices[vertex] == NoIndex) {
                newIndices[vertex] = static_cast<uint32_t>(part.Positions.size());
                part.Positions.push_back(whole.Positions[vertex]);
                AppendIfAny(whole.Normals, vertex, part.Normals);
                AppendIfAny(whole.FrontCoordinates, vertex, part.FrontCoordinates);
                AppendIfAny(whole.BackCoordinates, vertex, part.BackCoordinates);
            }
            part.Indices.push_back(newIndices[vertex]);
        }
    }
    return part;
}

// Appends values to an array of the model; gives the index of the first, or NoIndex where there are
// none.
uint32_t Append(std::vector<Point3>& array, const std::vector<Point3>& values) {
    const uint32_t first = values.empty() ? NoIndex : static_cast<uint32_t>(array.size());
    array.insert(array.end(), values.begin(), values.end());
    return first;
}

} // namespace

void AddFace(Model& model, const FaceGeometry& geometry, Point3 normal) {
    ModelFace face;
    face.Normal = normal;
    face.Distance = -Dot(normal, geometry.Positions[0]);
    face.Vertices = {Append(model.Positions, geometry.Positions),
                     static_cast<uint32_t>(geometry.Positions.size())};
    face.Indices = {static_cast<uint32_t>(model.Indices.size()),
                    static_cast<uint32_t>(geometry.Indices.size())};
    model.Indices.insert(model.Indices.end(), geometry.Indices.begin(), geometry.Indices.end());
    face.Normals = Append(model.Normals, geometry.Normals);
    face.Front.Coordinates = Append(model.Coordinates, geometry.FrontCoordinates);
    face.Back.Coordinates = Append(model.Coordinates, geometry.BackCoordinates);
    model.Faces.push_back(face);
}

void AddTriangulation(Model& model, const FaceGeometry& geometry) {
    Point3 normal;
    if (FindCommonNormal(geometry, normal)) {
        AddFace(model, geometry, normal);
        return;
    }
    std::array<std::vector<size_t>, AxisCount> triangles;
    size_t axis = AxisOf(normal);
    for (size_t i = 0; i < geometry.Indices.size(); i += 3) {
        // A triangle without area goes with the one before it.
        const Point3 own = NormalOfTriangle(geometry, i);
        axis = Length(own) > 0.0 ? AxisOf(own) : axis;
        triangles[axis].push_back(i);
    }
    std::vector<uint32_t> newIndices;
    for (axis = 0; axis < AxisCount; ++axis) {
        if (!triangles[axis].empty()) {
            newIndices.assign(geometry.Positions.size(), NoIndex);
            AddFace(model, PartOf(geometry, triangles[axis], newIndices), Axes[axis]);
        }
    }
}

void MakeSmoothNormals(FaceGeometry& geometry) {
    geometry.Normals.assign(geometry.Positions.size(), {});
    Point3 sum;
    for (size_t i = 0; i < geometry.Indices.size(); i += 3) {
        const Point3 own = NormalOfTriangle(geometry, i);
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
