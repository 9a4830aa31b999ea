// Texture coordinates of faces: mappings of pictures onto planes, and coordinates extended over a plane.
#pragma once

#include "provider/model/Model.h"

#include <span>
#include <vector>

// Right and up of a side with the given unit normal, seen by a viewer in front of that side.
struct SideAxes {
    Point3 Right;
    Point3 Up;
};
SideAxes AxesOfSide(Point3 sideNormal);

// The mapping with the picture's lower left corner at origin and one repeat, width by height model
// units, along right and up. Points are projected perpendicularly onto the plane of right and up.
// Returns false if right and up are collinear or have no length.
bool MakeMapping(Point3 origin, SideAxes axes, double width, double height, ModelMapping& mapping);

// Texture coordinates s, t, 1 for a file's u and v.
inline Point3 CoordinatesOn(const ModelSurface& surface, double u, double v) {
    return {surface.U[0] * u + surface.U[1] * v + surface.U[2],
            1.0 - (surface.V[0] * u + surface.V[1] * v + surface.V[2]), 1.0};
}

// The texture coordinates (s, t, q) of each vertex of a face, for its front or its back. count is at
// most the number of the face's vertices; coordinates has room for it.
void CoordinatesOfSide(const Model& model, const ModelFace& face, bool front, size_t count,
                       double coordinates[][3]);

// Appends coordinates for the points from coordinates.size() on: the values of the linear function that
// best fits the existing coordinates (least squares). normal is the unit normal of the plane of the
// points.
void ExtendCoordinates(std::span<const Point3> points, Point3 normal, std::vector<Point3>& coordinates);
