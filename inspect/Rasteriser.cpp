// Edge functions on whole numbers (Juan Pineda, 1988), with the rule of left and upper edges; values
// over the triangle are planes in screen space, divided by the nearness for perspective.
#include "inspect/Rasteriser.h"

#include <algorithm>
#include <cmath>

namespace {

// Corners lie on a grid of this many steps per pixel, so that edges are exact.
constexpr int64_t Steps = 256;
constexpr int64_t HalfPixel = Steps / 2;

struct GridPoint {
    int64_t X;
    int64_t Y;
};

GridPoint ToGrid(const ScreenCorner& corner) {
    return {std::llround(corner.X * Steps), std::llround(corner.Y * Steps)};
}

// Above 0 on the inner side of the edge from one corner to the next.
struct Edge {
    int64_t Value; // At the pixel centre looked at.
    int64_t StepX; // To the next pixel on the right.
    int64_t StepY; // To the next row.
};

Edge MakeEdge(GridPoint from, GridPoint to, GridPoint start) {
    const int64_t dx = to.X - from.X;
    const int64_t dy = to.Y - from.Y;
    int64_t value = dx * (start.Y - from.Y) - dy * (start.X - from.X);
    // Going clockwise with y down, upper edges go right and left edges go up: they keep their pixels.
    const bool keepsPixels = dy < 0 || (dy == 0 && dx > 0);
    value -= keepsPixels ? 0 : 1;
    return {value, -dy * Steps, dx * Steps};
}

// A value over the screen: At a pixel's centre, with steps to the next pixels.
struct Plane {
    double Start;
    double StepX;
    double StepY;
};

// The triangle's edges from its first corner, in pixels, and the middle of the first pixel from there.
struct Base {
    double X1, Y1, X2, Y2;
    double Area; // Twice the triangle's, above 0.
    double FromX, FromY;
};

Plane MakePlane(const Base& base, double value0, double value1, double value2) {
    const double rise1 = value1 - value0;
    const double rise2 = value2 - value0;
    const double stepX = (rise1 * base.Y2 - rise2 * base.Y1) / base.Area;
    const double stepY = (rise2 * base.X1 - rise1 * base.X2) / base.Area;
    return {value0 + stepX * base.FromX + stepY * base.FromY, stepX, stepY};
}

double ValueAt(const Plane& plane, double column, double row) {
    return plane.Start + plane.StepX * column + plane.StepY * row;
}

// All values that are needed over one triangle; U, V and Light are over the distance.
struct Planes {
    Plane Nearness;
    Plane U;
    Plane V;
    Plane Light;
};

// How many pixels of the picture lie along the longer side of one of the screen.
double TexelsPerPixel(const Planes& planes, const Mipmaps& picture, double u, double v,
                      double nearness) {
    const auto width = static_cast<double>(picture.Levels[0].Width);
    const auto height = static_cast<double>(picture.Levels[0].Height);
    const auto squared = [&](double uStep, double vStep, double nearnessStep) {
        const double du = (uStep - u * nearnessStep) / nearness * width;
        const double dv = (vStep - v * nearnessStep) / nearness * height;
        return du * du + dv * dv;
    };
    return std::sqrt(std::max(squared(planes.U.StepX, planes.V.StepX, planes.Nearness.StepX),
                              squared(planes.U.StepY, planes.V.StepY, planes.Nearness.StepY)));
}

void DrawPixel(const Planes& planes, const Surface& surface, double column, double row, double nearness,
               std::array<float, 3>& pixel) {
    Colour colour = surface.Base;
    if (surface.Picture != nullptr) {
        const double u = ValueAt(planes.U, column, row) / nearness;
        const double v = ValueAt(planes.V, column, row) / nearness;
        const Colour sample = SampleMipmaps(*surface.Picture, u, v,
                                            TexelsPerPixel(planes, *surface.Picture, u, v, nearness));
        for (size_t channel = 0; channel < 4; ++channel) {
            colour[channel] *= sample[channel];
        }
    }
    const auto light = static_cast<float>(ValueAt(planes.Light, column, row) / nearness);
    const float alpha = surface.IsBlended ? colour[3] : 1.0F;
    for (size_t channel = 0; channel < 3; ++channel) {
        pixel[channel] += (std::min(colour[channel] * light, 1.0F) - pixel[channel]) * alpha;
    }
}

// The first pixel whose centre isn't before the place.
int64_t FirstPixel(int64_t place) {
    return (place + HalfPixel - 1) / Steps;
}

} // namespace

void DrawTriangle(Canvas& canvas, const std::array<ScreenCorner, 3>& corners, const Surface& surface) {
    const GridPoint a = ToGrid(corners[0]);
    const GridPoint b = ToGrid(corners[1]);
    const GridPoint c = ToGrid(corners[2]);
    const int64_t area = (b.X - a.X) * (c.Y - a.Y) - (b.Y - a.Y) * (c.X - a.X);
    if (area <= 0) {
        return;
    }
    const int64_t left = std::max<int64_t>(FirstPixel(std::min({a.X, b.X, c.X})), 0);
    const int64_t top = std::max<int64_t>(FirstPixel(std::min({a.Y, b.Y, c.Y})), 0);
    const int64_t right = std::min<int64_t>(FirstPixel(std::max({a.X, b.X, c.X}) + 1), canvas.Width);
    const int64_t bottom = std::min<int64_t>(FirstPixel(std::max({a.Y, b.Y, c.Y}) + 1), canvas.Height);
    if (left >= right || top >= bottom) {
        return;
    }
    const GridPoint start = {left * Steps + HalfPixel, top * Steps + HalfPixel};
    std::array<Edge, 3> edges = {MakeEdge(a, b, start), MakeEdge(b, c, start), MakeEdge(c, a, start)};

    const auto pixels = [](int64_t from, int64_t to) {
        return static_cast<double>(to - from) / static_cast<double>(Steps);
    };
    const Base base = {pixels(a.X, b.X),
                       pixels(a.Y, b.Y),
                       pixels(a.X, c.X),
                       pixels(a.Y, c.Y),
                       static_cast<double>(area) / static_cast<double>(Steps * Steps),
                       pixels(a.X, start.X),
                       pixels(a.Y, start.Y)};
    const auto& [p, q, r] = corners;
    const Planes planes = {
        MakePlane(base, p.Nearness, q.Nearness, r.Nearness),
        MakePlane(base, p.U * p.Nearness, q.U * q.Nearness, r.U * r.Nearness),
        MakePlane(base, p.V * p.Nearness, q.V * q.Nearness, r.V * r.Nearness),
        MakePlane(base, p.Light * p.Nearness, q.Light * q.Nearness, r.Light * r.Nearness)};

    for (int64_t y = top; y < bottom; ++y) {
        const auto row = static_cast<double>(y - top);
        std::array<int64_t, 3> values = {edges[0].Value, edges[1].Value, edges[2].Value};
        for (int64_t x = left; x < right; ++x) {
            if (values[0] >= 0 && values[1] >= 0 && values[2] >= 0) {
                const auto column = static_cast<double>(x - left);
                const double nearness = ValueAt(planes.Nearness, column, row);
                const auto place = static_cast<size_t>(y) * canvas.Width + static_cast<size_t>(x);
                if (static_cast<float>(nearness) > canvas.Nearness[place]) {
                    DrawPixel(planes, surface, column, row, nearness, canvas.Colours[place]);
                    if (!surface.IsBlended) {
                        canvas.Nearness[place] = static_cast<float>(nearness);
                    }
                }
            }
            for (size_t edge = 0; edge < 3; ++edge) {
                values[edge] += edges[edge].StepX;
            }
        }
        for (Edge& edge : edges) {
            edge.Value += edge.StepY;
        }
    }
}
