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

// Appends values to an array of the model; gives the index of the first, or NoIndex where there are
// none.
uint32_t Append(std::vector<Point3>& array, const std::vector<Point3>& values) {
    const uint32_t first = values.empty() ? NoIndex : static_cast<uint32_t>(array.size());
    array.insert(array.end(), values.begin(), values.end());
    return first;
}

// Appends the values of the chosen vertices of a face, each at its new index.
uint32_t AppendChosen(std::vector<Point3>& array, const std::vector<Point3>& values,
                      const std::vector<uint32_t>& newIndices, const ModelFace& face) {
    if (values.empty()) {
        return NoIndex;
    }
    const size_t first = array.size();
    array.resize(first + face.Vertices.Count);
    for (size_t vertex = 0; vertex < newIndices.size(); ++vertex) {
        if (newIndices[vertex] != NoIndex) {
            array[first + newIndices[vertex]] = values[vertex];
        }
    }
    return static_cast<uint32_t>(first);
}

// Appends the triangles of one axis as a face with the vertices that they use. newIndices is memory that
// is used again.
void AddPart(Model& model, const FaceGeometry& whole, const std::vector<uint8_t>& axes, size_t axis,
             std::vector<uint32_t>& newIndices) {
    newIndices.assign(whole.Positions.size(), NoIndex);
    ModelFace face;
    face.Normal = Axes[axis];
    face.Vertices.First = static_cast<uint32_t>(model.Positions.size());
    face.Indices.First = static_cast<uint32_t>(model.Indices.size());
    face.Normals = whole.Normals.empty() ? NoIndex : static_cast<uint32_t>(model.Normals.size());
    for (size_t i = 0; i < whole.Indices.size(); ++i) {
        if (axes[i / 3] != axis) {
            continue;
        }
        const uint32_t vertex = whole.Indices[i];
        if (newIndices[vertex] == NoIndex) {
            newIndices[vertex] = face.Vertices.Count++;
            model.Positions.push_back(whole.Positions[vertex]);
            if (!whole.Normals.empty()) {
                model.Normals.push_back(whole.Normals[vertex]);
            }
        }
        model.Indices.push_back(newIndices[vertex]);
    }
    face.Indices.Count = static_cast<uint32_t>(model.Indices.size()) - face.Indices.First;
    face.Distance = -Dot(face.Normal, model.Positions[face.Vertices.First]);
    face.Front.Coordinates = AppendChosen(model.Coordinates, whole.FrontCoordinates, newIndices, face);
    face.Back.Coordinates = AppendChosen(model.Coordinates, whole.BackCoordinates, newIndices, face);
    model.Faces.push_back(face);
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
    std::vector<uint8_t> axes(geometry.Indices.size() / 3);
    std::array<uint32_t, AxisCount> counts = {};
    size_t axis = AxisOf(normal);
    for (size_t triangle = 0; triangle < axes.size(); ++triangle) {
        // A triangle without area goes with the one before it.
        const Point3 own = NormalOfTriangle(geometry, 3 * triangle);
        axis = Length(own) > 0.0 ? AxisOf(own) : axis;
        axes[triangle] = static_cast<uint8_t>(axis);
        ++counts[axis];
    }
    std::vector<uint32_t> newIndices;
    for (axis = 0; axis < AxisCount; ++axis) {
        if (counts[axis] > 0) {
            AddPart(model, geometry, axes, axis, newIndices);
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
            MakeUnit(NormalOfTriangle(geometry, i - 2), normal);
            std::fill_n(geometry.Normals.begin() + static_cast<ptrdiff_t>(i - 2), 3, normal);
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
