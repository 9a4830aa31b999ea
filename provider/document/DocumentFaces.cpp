// The faces of a model document: polygons, triangulations and their sides.
#include "provider/document/DocumentFaces.h"

#include "provider/model/Mapping.h"
#include "provider/reading/FaceBuilder.h"

#include <algorithm>

// How far corners may be off the plane of their face, as a share of the diagonal of the outline's
// bounding box. Coordinates with three digits pass.
constexpr double PlaneTolerance = 1e-3;

namespace {

// A side as the document states it. Parts that depend on the face's geometry are nodes.
struct SideText {
    uint32_t Material = NoIndex;
    uint32_t Coordinates = 0;
    uint32_t Mapping = 0;
};

bool ReadSide(DocumentReader& reader, uint32_t node, SideText& side) {
    if (node == 0) {
        return true;
    }
    if (KindOf(reader.Json, node) == JsonKind::Text) {
        return ReadReference(reader, node, reader.Materials, "material", side.Material);
    }
    uint32_t material = 0;
    if (!ReadMembers(
            reader, node,
            {{"material", &material}, {"coordinates", &side.Coordinates}, {"mapping", &side.Mapping}})) {
        return false;
    }
    if (side.Coordinates != 0 && side.Mapping != 0) {
        return Fail(reader, node, "coordinates and mapping are mutually exclusive");
    }
    return ReadReference(reader, material, reader.Materials, "material", side.Material);
}

bool ReadCoordinates(DocumentReader& reader, uint32_t node, size_t count,
                     std::vector<Point3>& coordinates) {
    if (node == 0) {
        return true;
    }
    const bool read = ReadEach(reader, node, [&](uint32_t element) {
        const bool isArray = KindOf(reader.Json, element) == JsonKind::Array;
        const uint32_t numbers = isArray ? CountIn(reader.Json, element) : 0;
        if (numbers != 2 && numbers != 3) {
            return Fail(reader, element, "this must be an array of two or three numbers");
        }
        Point3 stq = {0.0, 0.0, 1.0};
        if (!ReadNumber(reader, ValueIn(reader.Json, element, 0), stq.X) ||
            !ReadNumber(reader, ValueIn(reader.Json, element, 1), stq.Y)) {
            return false;
        }
        if (numbers == 3) {
            const uint32_t q = ValueIn(reader.Json, element, 2);
            if (!ReadNumber(reader, q, stq.Z)) {
                return false;
            }
            if (stq.Z == 0.0) {
                return Fail(reader, q, "q must not be 0");
            }
        }
        coordinates.push_back(stq);
        return true;
    });
    return read && (coordinates.size() == count ||
                    Fail(reader, node,
                         "there must be " + std::to_string(count) + " texture coordinates, not " +
                             std::to_string(coordinates.size())));
}

bool ReadPoints(DocumentReader& reader, uint32_t node, std::vector<Point3>& points) {
    return ReadEach(reader, node, [&](uint32_t element) {
        Point3 point;
        if (!ReadPoint(reader, element, point)) {
            return false;
        }
        points.push_back(point);
        return true;
    });
}

bool ReadLoop(DocumentReader& reader, uint32_t node) {
    PolygonTriangulation& polygon = reader.Polygon;
    if (!ReadArray(reader, node, 3, " corners") || !ReadPoints(reader, node, polygon.Points)) {
        return false;
    }
    polygon.LoopEnds.push_back(static_cast<uint32_t>(polygon.Points.size()));
    return true;
}

bool CheckPlane(DocumentReader& reader, uint32_t outer, uint32_t holes, Point3 normal) {
    const PolygonTriangulation& polygon = reader.Polygon;
    const std::span<const Point3> outline(polygon.Points.data(), polygon.LoopEnds[0]);
    Point3 low = outline[0];
    Point3 high = outline[0];
    double height = 0.0; // above the first corner, on average
    for (const Point3& corner : outline) {
        low = {std::min(low.X, corner.X), std::min(low.Y, corner.Y), std::min(low.Z, corner.Z)};
        high = {std::max(high.X, corner.X), std::max(high.Y, corner.Y), std::max(high.Z, corner.Z)};
        height += Dot(normal, corner - outline[0]) / static_cast<double>(outline.size());
    }
    const double allowed = PlaneTolerance * Length(high - low);
    size_t loop = 0;
    for (size_t i = 0; i < polygon.Points.size(); ++i) {
        loop += i == polygon.LoopEnds[loop] ? 1 : 0;
        const double distance = std::abs(Dot(normal, polygon.Points[i] - outline[0]) - height);
        if (distance <= allowed) {
            continue;
        }
        const uint32_t first = loop == 0 ? 0 : polygon.LoopEnds[loop - 1];
        const uint32_t loopNode =
            loop == 0 ? outer : ValueIn(reader.Json, holes, static_cast<uint32_t>(loop - 1));
        return Fail(reader, ValueIn(reader.Json, loopNode, static_cast<uint32_t>(i) - first),
                    "the corner is off the plane of the face by " + NumberText(distance) +
                        ", more than the allowed " + NumberText(allowed));
    }
    return true;
}

// Appends the coordinates of the corners of holes and of points where outlines cross.
void CompleteCoordinates(const PolygonTriangulation& polygon, Point3 normal,
                         std::vector<Point3>& coordinates) {
    if (coordinates.empty()) {
        return;
    }
    ExtendCoordinates(std::span(polygon.Points).first(polygon.LoopEnds.back()), normal, coordinates);
    for (const CrossingPoint& crossing : polygon.Crossings) {
        Point3 sum;
        for (size_t i = 0; i < crossing.Points.size(); ++i) {
            sum = sum + crossing.Weights[i] * coordinates[crossing.Points[i]];
        }
        coordinates.push_back(sum);
    }
}

bool ReadPolygon(DocumentReader& reader, uint32_t outer, uint32_t holes, FaceGeometry& geometry,
                 const SideText& front, const SideText& back) {
    PolygonTriangulation& polygon = reader.Polygon;
    polygon.Points.clear();
    polygon.LoopEnds.clear();
    if (!ReadLoop(reader, outer) ||
        !ReadEach(reader, holes, [&](uint32_t hole) { return ReadLoop(reader, hole); })) {
        return false;
    }
    Point3 normal;
    if (!NormalOfLoop({polygon.Points.data(), polygon.LoopEnds[0]}, normal)) {
        return Fail(reader, outer, "the corners enclose no area");
    }
    if (!CheckPlane(reader, outer, holes, normal) ||
        !ReadCoordinates(reader, front.Coordinates, polygon.LoopEnds[0], geometry.FrontCoordinates) ||
        !ReadCoordinates(reader, back.Coordinates, polygon.LoopEnds[0], geometry.BackCoordinates)) {
        return false;
    }
    if (!TriangulatePolygon(polygon, normal)) {
        return Fail(reader, outer, "the face is empty or can't be triangulated");
    }
    CompleteCoordinates(polygon, normal, geometry.FrontCoordinates);
    CompleteCoordinates(polygon, normal, geometry.BackCoordinates);
    geometry.Positions.swap(polygon.Points);
    geometry.Indices.swap(polygon.Indices);
    AddFace(reader.Output, geometry, normal);
    geometry.Positions.swap(polygon.Points);
    geometry.Indices.swap(polygon.Indices);
    return true;
}

bool ReadTriangulation(DocumentReader& reader, uint32_t positions, uint32_t normals, uint32_t triangles,
                       FaceGeometry& geometry, const SideText& front, const SideText& back) {
    if (!ReadArray(reader, positions, 3, " points") ||
        !ReadPoints(reader, positions, geometry.Positions) ||
        !ReadArray(reader, triangles, 1, " triangle")) {
        return false;
    }
    const size_t count = geometry.Positions.size();
    const bool read = ReadEach(reader, triangles, [&](uint32_t triangle) {
        if (KindOf(reader.Json, triangle) != JsonKind::Array || CountIn(reader.Json, triangle) != 3) {
            return Fail(reader, triangle, "this must be an array of three indices");
        }
        return ReadEach(reader, triangle, [&](uint32_t corner) {
            return ReadWhole(reader, corner, static_cast<uint32_t>(count),
                             geometry.Indices.emplace_back());
        });
    });
    const auto readNormal = [&](uint32_t normal) {
        return ReadDirection(reader, normal, geometry.Normals.emplace_back());
    };
    if (!read || !ReadEach(reader, normals, readNormal) ||
        !ReadCoordinates(reader, front.Coordinates, count, geometry.FrontCoordinates) ||
        !ReadCoordinates(reader, back.Coordinates, count, geometry.BackCoordinates)) {
        return false;
    }
    if (normals == 0) {
        MakeSmoothNormals(geometry);
    } else if (geometry.Normals.size() != count) {
        return Fail(reader, normals,
                    "there must be " + std::to_string(count) + " normals, not " +
                        std::to_string(geometry.Normals.size()));
    }
    AddTriangulation(reader.Output, geometry);
    return true;
}

// The mapping of a side with the given normal.
bool ReadMapping(DocumentReader& reader, uint32_t node, uint32_t material, Point3 sideNormal,
                 ModelMapping& mapping) {
    uint32_t origin = 0;
    uint32_t right = 0;
    uint32_t up = 0;
    uint32_t width = 0;
    uint32_t height = 0;
    if (!ReadMembers(reader, node,
                     {{"origin", &origin},
                      {"right", &right},
                      {"up", &up},
                      {"width", &width},
                      {"height", &height}})) {
        return false;
    }
    Point3 start;
    SideAxes axes = AxesOfSide(sideNormal);
    double repeatWidth = 1.0;
    double repeatHeight = 1.0;
    if (material != NoIndex && reader.Output.Materials[material].Picture != NoIndex) {
        repeatWidth = reader.Output.Materials[material].Width;
        repeatHeight = reader.Output.Materials[material].Height;
    }
    if (!ReadPoint(reader, origin, start) || !ReadDirection(reader, right, axes.Right) ||
        !ReadDirection(reader, up, axes.Up) || !ReadLength(reader, width, repeatWidth) ||
        !ReadLength(reader, height, repeatHeight)) {
        return false;
    }
    if (right != 0 && up == 0) {
        axes.Up = Cross(sideNormal, axes.Right);
    } else if (right == 0 && up != 0) {
        axes.Right = Cross(axes.Up, sideNormal);
    }
    if (MakeMapping(start, axes, repeatWidth, repeatHeight, mapping)) {
        return true;
    }
    return Fail(reader, node,
                right != 0 && up != 0 ? "right and up are collinear"
                                      : "the direction is perpendicular to the face");
}

bool FinishSide(DocumentReader& reader, const SideText& text, Point3 sideNormal, ModelSide& side) {
    side.Material = text.Material;
    if (text.Mapping == 0) {
        return true;
    }
    ModelMapping mapping;
    if (!ReadMapping(reader, text.Mapping, text.Material, sideNormal, mapping)) {
        return false;
    }
    side.Mapping = static_cast<uint32_t>(reader.Output.Mappings.size());
    reader.Output.Mappings.push_back(mapping);
    return true;
}

} // namespace

bool ReadFace(DocumentReader& reader, uint32_t node) {
    uint32_t outer = 0;
    uint32_t holes = 0;
    uint32_t positions = 0;
    uint32_t normals = 0;
    uint32_t triangles = 0;
    uint32_t front = 0;
    uint32_t back = 0;
    uint32_t layer = 0;
    uint32_t hidden = 0;
    if (!ReadMembers(reader, node,
                     {{"outer", &outer},
                      {"holes", &holes},
                      {"positions", &positions},
                      {"normals", &normals},
                      {"triangles", &triangles},
                      {"front", &front},
                      {"back", &back},
                      {"layer", &layer},
                      {"hidden", &hidden}})) {
        return false;
    }
    const bool isPolygon = outer != 0 && positions == 0 && triangles == 0 && normals == 0;
    const bool isTriangulation = positions != 0 && triangles != 0 && outer == 0 && holes == 0;
    if (!isPolygon && !isTriangulation) {
        return Fail(reader, node, "a face has either outer, or positions and triangles");
    }

    ModelFace common;
    SideText frontText;
    SideText backText;
    if (!ReadReference(reader, layer, reader.Layers, "layer", common.Layer) ||
        !ReadFlag(reader, hidden, common.Hidden) || !ReadSide(reader, front, frontText) ||
        !ReadSide(reader, back, backText)) {
        return false;
    }

    const size_t firstFace = reader.Output.Faces.size();
    FaceGeometry geometry;
    const bool read = isPolygon ? ReadPolygon(reader, outer, holes, geometry, frontText, backText)
                                : ReadTriangulation(reader, positions, normals, triangles, geometry,
                                                    frontText, backText);
    if (!read) {
        return false;
    }
    for (size_t i = firstFace; i < reader.Output.Faces.size(); ++i) {
        ModelFace& face = reader.Output.Faces[i];
        face.Layer = common.Layer;
        face.Hidden = common.Hidden;
        if (!FinishSide(reader, frontText, face.Normal, face.Front) ||
            !FinishSide(reader, backText, -1.0 * face.Normal, face.Back)) {
            return false;
        }
    }
    return true;
}
