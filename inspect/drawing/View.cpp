// Frames a scene. For a given direction the picture's four edges are planes through the eye. The points
// push each plane outwards, and the nearest eye that sees all points is where the planes meet.
#include "inspect/drawing/View.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// From the scene to the eye: in front (-Z), to the right and above.
constexpr Vector TowardsEye = {0.62, 0.5, -0.9};
// Height of the picture over distance, for half the picture. 0.27 is a short telephoto lens.
constexpr double HalfSlope = 0.27;
// The share of the picture that stays free along each edge.
constexpr double Margin = 0.04;
// Share of the scene's size: keeps the nearest point away from the eye.
constexpr double NearDistance = 1e-3;

constexpr double Lowest = -std::numeric_limits<double>::infinity();

// How far the scene pushes each edge of the picture out, for edges of slopeX and slopeY.
struct Extents {
    double Right = Lowest;
    double Left = Lowest;
    double Top = Lowest;
    double Bottom = Lowest;
    double Near = -Lowest;
    double Far = Lowest;
};

template <typename Use> void ForEachUsedPosition(const StoredScene& scene, Use use) {
    for (const StoredNode& node : scene.Nodes) {
        for (const StoredMesh& mesh : node.Meshes) {
            std::vector<bool> isUsed(mesh.Vertices.size(), false);
            for (const uint32_t index : mesh.Indices) {
                isUsed[index] = true;
            }
            for (size_t vertex = 0; vertex < mesh.Vertices.size(); ++vertex) {
                if (isUsed[vertex] && IsFinite(mesh.Vertices[vertex].Position)) {
                    use(mesh.Vertices[vertex].Position);
                }
            }
        }
    }
}

void Extend(Extents& extents, const Vector& point, double slopeX, double slopeY) {
    const auto [x, y, z] = point;
    extents.Right = std::max(extents.Right, x - slopeX * z);
    extents.Left = std::max(extents.Left, -x - slopeX * z);
    extents.Top = std::max(extents.Top, y - slopeY * z);
    extents.Bottom = std::max(extents.Bottom, -y - slopeY * z);
    extents.Near = std::min(extents.Near, z);
    extents.Far = std::max(extents.Far, z);
}

} // namespace

double Dot(const Vector& a, const Vector& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Vector Cross(const Vector& a, const Vector& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Vector Normalized(const Vector& vector) {
    const double length = std::sqrt(Dot(vector, vector));
    if (!(length > 0.0) || !std::isfinite(length)) {
        return {0, 0, 0};
    }
    return {vector[0] / length, vector[1] / length, vector[2] / length};
}

Vector ToVector(const std::array<float, 3>& position) {
    return {static_cast<double>(position[0]), static_cast<double>(position[1]),
            static_cast<double>(position[2])};
}

bool IsFinite(const std::array<float, 3>& position) {
    return std::isfinite(position[0]) && std::isfinite(position[1]) && std::isfinite(position[2]);
}

View FrameScene(const StoredScene& scene, double width, double height) {
    View view;
    const Vector back = Normalized(TowardsEye);
    view.Forward = {-back[0], -back[1], -back[2]};
    view.Right = Normalized(Cross({0, 1, 0}, view.Forward));
    view.Up = Cross(view.Forward, view.Right);
    view.Eye = {0, 0, 0};
    view.MiddleX = width / 2;
    view.MiddleY = height / 2;
    // HalfSlope is that of the shorter side.
    view.PixelsPerSlope = std::min(width, height) / 2 / HalfSlope;

    const double slopeX = (1 - 2 * Margin) * width / 2 / view.PixelsPerSlope;
    const double slopeY = (1 - 2 * Margin) * height / 2 / view.PixelsPerSlope;
    Extents extents;
    ForEachUsedPosition(scene, [&](const std::array<float, 3>& position) {
        Extend(extents, ToView(view, position), slopeX, slopeY);
    });
    if (extents.Near > extents.Far) {
        return view;
    }
    const double width3 = extents.Right + extents.Left;
    const double height3 = extents.Top + extents.Bottom;
    const double size = std::max({extents.Far - extents.Near, width3, height3,
                                  std::abs(extents.Far) * 1e-6, std::numeric_limits<double>::min()});
    const double z =
        std::min({-width3 / (2 * slopeX), -height3 / (2 * slopeY), extents.Near}) - NearDistance * size;
    const double x = (extents.Right - extents.Left) / 2;
    const double y = (extents.Top - extents.Bottom) / 2;
    for (size_t axis = 0; axis < 3; ++axis) {
        view.Eye[axis] = view.Right[axis] * x + view.Up[axis] * y + view.Forward[axis] * z;
    }
    return view;
}

Vector ToView(const View& view, const std::array<float, 3>& position) {
    const Vector place = ToVector(position);
    const Vector fromEye = {place[0] - view.Eye[0], place[1] - view.Eye[1], place[2] - view.Eye[2]};
    return {Dot(fromEye, view.Right), Dot(fromEye, view.Up), Dot(fromEye, view.Forward)};
}
