// Triangulates plane polygons with holes: a fan for convex outlines, otherwise the sweep of the GLU
// tesselator, which needs no display.
#include "provider/reading/Triangulation.h"

#include <GL/glu.h>

#include <algorithm>
#include <memory>

// Edges that meet beside their common corners, per corner. The polygons of models meet nowhere.
constexpr size_t MostMeetingsPerCorner = 8;

// Twice the area of a loop over the square of its size. A smaller area is rounding error.
constexpr double SmallestRelativeArea = 1e-12;

bool NormalOfLoop(std::span<const Point3> loop, Point3& normal) {
    Point3 sum;
    double size = 0.0;
    for (size_t i = 0; i < loop.size(); ++i) {
        // Relative to the first corner, so that a face far from the origin keeps its precision.
        const Point3 a = loop[i] - loop[0];
        const Point3 b = loop[(i + 1) % loop.size()] - loop[0];
        sum = sum + Cross(a, b);
        size = std::max(size, Length(a));
    }
    if (!(Length(sum) > SmallestRelativeArea * size * size)) {
        return false;
    }
    return MakeUnit(sum, normal);
}

namespace {

double Turn(Point3 a, Point3 b, Point3 c, Point3 normal) {
    return Dot(Cross(b - a, c - b), normal);
}

// Convex, without collinear corners, and with a single turn.
bool IsConvex(std::span<const Point3> loop, Point3 normal) {
    const size_t count = loop.size();
    for (size_t i = 0; i < count; ++i) {
        if (!(Turn(loop[i], loop[(i + 1) % count], loop[(i + 2) % count], normal) > 0.0)) {
            return false;
        }
    }
    for (size_t i = 2; i < count; ++i) {
        if (!(Turn(loop[0], loop[1], loop[i], normal) > 0.0) ||
            !(Turn(loop[0], loop[i - 1], loop[i], normal) > 0.0)) {
            return false;
        }
    }
    return true;
}

// An edge in the plane of two axes.
struct FlatEdge {
    double X1, Y1, X2, Y2;
    double Left, Right; // the smaller and the larger of X1 and X2
};

// Above 0 if the point is to the left of the edge.
double SideOf(const FlatEdge& edge, double x, double y) {
    return (edge.X2 - edge.X1) * (y - edge.Y1) - (edge.Y2 - edge.Y1) * (x - edge.X1);
}

// Whether edges cross, or a corner of one is on the other.
bool Meet(const FlatEdge& a, const FlatEdge& b) {
    return std::max(a.Y1, a.Y2) >= std::min(b.Y1, b.Y2) &&
           std::max(b.Y1, b.Y2) >= std::min(a.Y1, a.Y2) &&
           SideOf(a, b.X1, b.Y1) * SideOf(a, b.X2, b.Y2) <= 0.0 &&
           SideOf(b, a.X1, a.Y1) * SideOf(b, a.X2, a.Y2) <= 0.0;
}

bool ShareCorner(const FlatEdge& a, const FlatEdge& b) {
    const auto isSame = [](double x1, double y1, double x2, double y2) {
        return x1 == x2 && y1 == y2;
    };
    return isSame(a.X1, a.Y1, b.X1, b.Y1) || isSame(a.X1, a.Y1, b.X2, b.Y2) ||
           isSame(a.X2, a.Y2, b.X1, b.Y1) || isSame(a.X2, a.Y2, b.X2, b.Y2);
}

// The edges of all loops, without the axis along which the normal is longest.
std::vector<FlatEdge> FlatEdgesOf(const PolygonTriangulation& polygon, Point3 normal) {
    const double x = std::abs(normal.X);
    const double y = std::abs(normal.Y);
    const double z = std::abs(normal.Z);
    const auto flat = [&](Point3 point) -> std::array<double, 2> {
        if (z >= x && z >= y) {
            return {point.X, point.Y};
        }
        return x >= y ? std::array{point.Y, point.Z} : std::array{point.Z, point.X};
    };
    std::vector<FlatEdge> edges;
    edges.reserve(polygon.Points.size());
    size_t first = 0;
    for (const size_t end : polygon.LoopEnds) {
        for (size_t i = first; i < end; ++i) {
            const auto [x1, y1] = flat(polygon.Points[i]);
            const auto [x2, y2] = flat(polygon.Points[i + 1 < end ? i + 1 : first]);
            edges.push_back({x1, y1, x2, y2, std::min(x1, x2), std::max(x1, x2)});
        }
        first = end;
    }
    return edges;
}

// Whether the edges meet so often that the tesselator would take far more time and memory than the
// corners. Stops at the limit; compares the edges whose ranges overlap.
bool IsTangled(const PolygonTriangulation& polygon, Point3 normal) {
    if (polygon.Points.size() <= 2 * MostMeetingsPerCorner) {
        return false; // they can't have so many
    }
    std::vector<FlatEdge> edges = FlatEdgesOf(polygon, normal);
    std::ranges::sort(edges, {}, &FlatEdge::Left);
    size_t left = MostMeetingsPerCorner * edges.size();
    for (size_t i = 0; i < edges.size(); ++i) {
        for (size_t j = i + 1; j < edges.size() && edges[j].Left <= edges[i].Right; ++j) {
            if (Meet(edges[i], edges[j]) && !ShareCorner(edges[i], edges[j]) && left-- == 0) {
                return true;
            }
        }
    }
    return false;
}

// The data of the tesselator's callbacks. Point indices pass through it as pointers, plus one so that
// none is null.
struct Sweep {
    PolygonTriangulation* Polygon = nullptr;
    bool Failed = false;
};

void* PointerOf(size_t index) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): it is never dereferenced.
    return reinterpret_cast<void*>(static_cast<uintptr_t>(index + 1));
}

uint32_t IndexOf(const void* pointer) {
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(pointer) - 1);
}

// No exception may leave a callback: its caller is C.
void OnVertex(void* vertex, void* data) {
    Sweep& sweep = *static_cast<Sweep*>(data);
    try {
        sweep.Polygon->Indices.push_back(IndexOf(vertex));
    } catch (const std::bad_alloc&) {
        sweep.Failed = true;
    }
}

void OnCombine(GLdouble[3], void* points[4], GLfloat weights[4], void** result, void* data) {
    Sweep& sweep = *static_cast<Sweep*>(data);
    *result = points[0];
    if (points[2] == nullptr) {
        return; // coincident corners: one of them represents both
    }
    try {
        // The tesselator's position is a sum with weights in single precision. As steps from one of the
        // points it keeps its precision far from the origin.
        std::vector<Point3>& corners = sweep.Polygon->Points;
        CrossingPoint crossing;
        Point3 position = corners[IndexOf(points[0])];
        for (size_t i = 0; i < 4; ++i) {
            if (points[i] != nullptr) {
                crossing.Points[i] = IndexOf(points[i]);
                crossing.Weights[i] = static_cast<double>(weights[i]);
                position = position + crossing.Weights[i] *
                                          (corners[crossing.Points[i]] - corners[crossing.Points[0]]);
            }
        }
        sweep.Polygon->Crossings.push_back(crossing);
        corners.push_back(position);
        *result = PointerOf(sweep.Polygon->Points.size() - 1);
    } catch (const std::bad_alloc&) {
        sweep.Failed = true;
    }
}

// With this callback the tesselator returns separate triangles, no strips and fans.
void OnEdgeFlag(GLboolean, void*) {
}

void OnError(GLenum, void* data) {
    static_cast<Sweep*>(data)->Failed = true;
}

// The type in which the tesselator takes all callbacks.
template <class Function> auto Callback(Function function) {
    return reinterpret_cast<void (*)()>(function);
}

void AddLoop(GLUtesselator* tesselator, std::span<const Point3> points, size_t first, size_t end,
             bool reversed) {
    gluTessBeginContour(tesselator);
    for (size_t i = first; i < end; ++i) {
        const size_t index = reversed ? end - 1 - (i - first) : i;
        GLdouble position[3] = {points[index].X, points[index].Y, points[index].Z};
        gluTessVertex(tesselator, position, PointerOf(index));
    }
    gluTessEndContour(tesselator);
}

} // namespace

bool TriangulatePolygon(PolygonTriangulation& polygon, Point3 normal) {
    polygon.Indices.clear();
    polygon.Crossings.clear();
    if (polygon.LoopEnds.size() == 1 && IsConvex(polygon.Points, normal)) {
        for (uint32_t i = 2; i < polygon.Points.size(); ++i) {
            polygon.Indices.insert(polygon.Indices.end(), {0, i - 1, i});
        }
        return true;
    }
    if (IsTangled(polygon, normal)) {
        return false;
    }

    const std::unique_ptr<GLUtesselator, void (*)(GLUtesselator*)> tesselator(
        gluNewTess(), [](GLUtesselator* owned) { gluDeleteTess(owned); });
    if (tesselator == nullptr) {
        return false;
    }
    Sweep sweep = {&polygon, false};
    gluTessCallback(tesselator.get(), GLU_TESS_VERTEX_DATA, Callback(OnVertex));
    gluTessCallback(tesselator.get(), GLU_TESS_COMBINE_DATA, Callback(OnCombine));
    gluTessCallback(tesselator.get(), GLU_TESS_EDGE_FLAG_DATA, Callback(OnEdgeFlag));
    gluTessCallback(tesselator.get(), GLU_TESS_ERROR_DATA, Callback(OnError));
    // With holes wound against the outline, this is the outline minus all that the holes cover, even if
    // holes overlap or cross the outline.
    gluTessProperty(tesselator.get(), GLU_TESS_WINDING_RULE, GLU_TESS_WINDING_POSITIVE);
    gluTessNormal(tesselator.get(), normal.X, normal.Y, normal.Z);

    // The sweep appends crossings to Points, but only after all loops are added.
    gluTessBeginPolygon(tesselator.get(), &sweep);
    uint32_t first = 0;
    for (const uint32_t end : polygon.LoopEnds) {
        const std::span<const Point3> loop(polygon.Points.data() + first, end - first);
        Point3 loopNormal;
        const bool reversed =
            first > 0 && NormalOfLoop(loop, loopNormal) && Dot(loopNormal, normal) > 0.0;
        AddLoop(tesselator.get(), polygon.Points, first, end, reversed);
        first = end;
    }
    gluTessEndPolygon(tesselator.get());
    return !sweep.Failed && !polygon.Indices.empty() && polygon.Indices.size() % 3 == 0;
}
