// Texture coordinates of faces. A mapping is stored as two linear functions of space, for s and t, so
// that a coordinate costs two dot products.
#include "provider/model/Mapping.h"

#include <algorithm>

// A side whose normal is closer to the vertical than this (sine of the angle) has no reliable
// horizontal direction. Its right is +X.
constexpr double VerticalLimit = 1e-3;
// Directions are collinear if the squared sine of their angle is below this.
constexpr double OneLineLimit = 1e-12;

SideAxes AxesOfSide(Point3 sideNormal) {
    Point3 right = {1.0, 0.0, 0.0};
    if (std::hypot(sideNormal.X, sideNormal.Y) >= VerticalLimit) {
        MakeUnit({-sideNormal.Y, sideNormal.X, 0.0}, right);
    }
    Point3 up;
    MakeUnit(Cross(sideNormal, right), up);
    return {right, up};
}

bool MakeMapping(Point3 origin, SideAxes axes, double width, double height, ModelMapping& mapping) {
    Point3 right;
    Point3 up;
    if (!MakeUnit(axes.Right, right) || !MakeUnit(axes.Up, up)) {
        return false;
    }
    const double cosine = Dot(right, up);
    const double determinant = 1.0 - cosine * cosine;
    if (determinant < OneLineLimit) {
        return false;
    }
    mapping.S = (1.0 / (determinant * width)) * (right - cosine * up);
    mapping.T = (1.0 / (determinant * height)) * (up - cosine * right);
    mapping.S0 = -Dot(mapping.S, origin);
    mapping.T0 = -Dot(mapping.T, origin);
    return true;
}

// Texture coordinates s, t, 1.
static Point3 CoordinatesOn(const ModelSurface& surface, SingleCoordinates at) {
    const Point3 coordinates =
        CoordinatesOn(surface, static_cast<double>(at.U), static_cast<double>(at.V));
    return IsFinite(coordinates) ? coordinates : Point3{0.0, 0.0, 1.0};
}

void CoordinatesOfSide(const Model& model, const ModelFace& face, bool front, size_t count,
                       double coordinates[][3]) {
    const ModelSide& side = front ? face.Front : face.Back;
    if (side.Coordinates != NoIndex) {
        const ModelSurface* surface = side.Surface != NoIndex ? &model.Surfaces[side.Surface] : nullptr;
        for (size_t i = 0; i < count; ++i) {
            const size_t index = side.Coordinates + i;
            const Point3 stq = surface != nullptr
                                   ? CoordinatesOn(*surface, model.SingleCoordinates[index])
                                   : model.Coordinates[index];
            coordinates[i][0] = stq.X;
            coordinates[i][1] = stq.Y;
            coordinates[i][2] = stq.Z;
        }
        return;
    }
    ModelMapping mapping;
    if (side.Mapping != NoIndex) {
        mapping = model.Mappings[side.Mapping];
    } else {
        double width = 1.0;
        double height = 1.0;
        if (side.Material != NoIndex && model.Materials[side.Material].Picture != NoIndex) {
            width = model.Materials[side.Material].Width;
            height = model.Materials[side.Material].Height;
        }
        MakeMapping({}, AxesOfSide(front ? face.Normal : -1.0 * face.Normal), width, height, mapping);
    }
    for (size_t i = 0; i < count; ++i) {
        const Point3 position = PositionOf(model, face, i);
        coordinates[i][0] = Dot(mapping.S, position) + mapping.S0;
        coordinates[i][1] = Dot(mapping.T, position) + mapping.T0;
        coordinates[i][2] = 1.0;
    }
}

void ExtendCoordinates(std::span<const Point3> points, Point3 normal, std::vector<Point3>& coordinates) {
    const size_t known = coordinates.size();
    if (known == 0 || known >= points.size()) {
        return;
    }
    const SideAxes axes = AxesOfSide(normal);
    const double share = 1.0 / static_cast<double>(known);
    Point3 middle;
    Point3 mean;
    for (size_t i = 0; i < known; ++i) {
        middle = middle + share * points[i];
        mean = mean + share * coordinates[i];
    }
    // Normal equations of the fit, about the centre so that the constant term separates.
    double xx = 0.0;
    double xy = 0.0;
    double yy = 0.0;
    Point3 xv;
    Point3 yv;
    for (size_t i = 0; i < known; ++i) {
        const double x = Dot(axes.Right, points[i] - middle);
        const double y = Dot(axes.Up, points[i] - middle);
        xx += x * x;
        xy += x * y;
        yy += y * y;
        xv = xv + x * (coordinates[i] - mean);
        yv = yv + y * (coordinates[i] - mean);
    }
    const double determinant = xx * yy - xy * xy;
    Point3 slopeX;
    Point3 slopeY;
    if (determinant > 0.0) {
        slopeX = (1.0 / determinant) * (yy * xv - xy * yv);
        slopeY = (1.0 / determinant) * (xx * yv - xy * xv);
    }
    for (size_t i = known; i < points.size(); ++i) {
        const Point3 offset = points[i] - middle;
        coordinates.push_back(mean + Dot(axes.Right, offset) * slopeX + Dot(axes.Up, offset) * slopeY);
    }
}
