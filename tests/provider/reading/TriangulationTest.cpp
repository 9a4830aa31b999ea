// Polygons to triangles.
#include "provider/reading/Triangulation.h"
#include "provider/model/Mapping.h"
#include "provider/reading/FaceBuilder.h"

#include <gtest/gtest.h>

#include <numbers>

namespace {

using Loop = std::vector<Point3>;

struct PolygonCase {
    const char* Name;
    std::vector<Loop> Loops; // in the plane z = 0
    double Area;
};

Loop Square(double low, double high) {
    return {{low, low, 0}, {high, low, 0}, {high, high, 0}, {low, high, 0}};
}

Loop Reversed(Loop loop) {
    std::reverse(loop.begin(), loop.end());
    return loop;
}

// Teeth of one unit with gaps of one unit above a bar.
Loop Comb(int teeth) {
    Loop loop = {{0, 0, 0}, {2.0 * teeth - 1, 0, 0}};
    for (int i = teeth - 1; i >= 0; --i) {
        loop.insert(loop.end(), {{2.0 * i + 1, 5, 0}, {2.0 * i, 5, 0}});
        if (i > 0) {
            loop.insert(loop.end(), {{2.0 * i, 1, 0}, {2.0 * i - 1, 1, 0}});
        }
    }
    return loop;
}

Loop Circle(int corners) {
    Loop loop;
    for (int i = 0; i < corners; ++i) {
        const double angle = 2 * std::numbers::pi * i / corners;
        loop.push_back({std::cos(angle), std::sin(angle), 0});
    }
    return loop;
}

const std::vector<PolygonCase> PolygonCases = {
    {"triangle", {{{0, 0, 0}, {4, 0, 0}, {0, 4, 0}}}, 8},
    {"square", {Square(0, 10)}, 100},
    {"circle", {Circle(64)}, 32 * std::sin(2 * std::numbers::pi / 64)},
    {"concave", {{{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {2, 1, 0}, {0, 4, 0}}}, 10},
    {"concave at the first corner", {{{2, 1, 0}, {0, 4, 0}, {0, 0, 0}, {4, 0, 0}, {4, 4, 0}}}, 10},
    {"concave quadrangle", {{{0, 0, 0}, {4, 0, 0}, {1, 1, 0}, {0, 4, 0}}}, 4},
    {"comb", {Comb(20)}, 39 + 20 * 4},
    {"corners in line",
     {{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}, {0, 2, 0}}},
     16},
    {"corner in line in a triangle", {{{0, 0, 0}, {2, 0, 0}, {4, 0, 0}, {0, 4, 0}}}, 8},
    {"repeated corners", {{{0, 0, 0}, {4, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}, {0, 0, 0}}}, 16},
    {"hole", {Square(0, 10), Reversed(Square(2, 4))}, 96},
    {"hole turning like the outline", {Square(0, 10), Square(2, 4)}, 96},
    {"three holes", {Square(0, 10), Square(1, 2), Reversed(Square(3, 4)), Square(5, 9)}, 82},
    {"holes touching at a corner", {Square(0, 10), Square(2, 4), Square(4, 6)}, 92},
    {"hole touching a corner of the outline", {Square(0, 10), Square(0, 4)}, 84},
    {"hole touching an edge", {Square(0, 10), {{5, 0, 0}, {6, 2, 0}, {4, 2, 0}}}, 98},
    {"overlapping holes", {Square(0, 10), Square(2, 5), Square(4, 7)}, 100 - 17},
    {"hole across the outline", {Square(0, 10), Square(8, 12)}, 96},
    {"hole outside the outline", {Square(0, 10), Square(20, 30)}, 100},
};

// Twice the signed area of the triangle a, b, c; positive if it faces along the normal.
double DoubleArea(Point3 a, Point3 b, Point3 c, Point3 normal) {
    return Dot(Cross(b - a, c - a), normal);
}

bool IsInside(Point3 p, const std::vector<Loop>& loops, Point3 right, Point3 up) {
    const auto crosses = [&](const Loop& loop) {
        bool inside = false;
        for (size_t i = 0; i < loop.size(); ++i) {
            const Point3 a = loop[i] - p;
            const Point3 b = loop[(i + 1) % loop.size()] - p;
            const double ay = Dot(a, up);
            const double by = Dot(b, up);
            if ((ay > 0) != (by > 0)) {
                const double x = Dot(a, right) - ay * (Dot(b, right) - Dot(a, right)) / (by - ay);
                inside ^= x > 0;
            }
        }
        return inside;
    };
    return crosses(loops[0]) && std::none_of(loops.begin() + 1, loops.end(), crosses);
}

// Expects the orientation of every triangle, the total area, and at many points exactly one triangle
// inside and none outside.
void ExpectExactCover(const PolygonTriangulation& polygon, const std::vector<Loop>& loops, double area,
                      Point3 normal) {
    const SideAxes axes = AxesOfSide(normal);
    double sum = 0;
    for (size_t i = 0; i < polygon.Indices.size(); i += 3) {
        const double own =
            DoubleArea(polygon.Points[polygon.Indices[i]], polygon.Points[polygon.Indices[i + 1]],
                       polygon.Points[polygon.Indices[i + 2]], normal);
        EXPECT_GE(own, -1e-9);
        sum += own / 2;
    }
    // Crossings of outlines have single precision.
    EXPECT_NEAR(sum, area, (polygon.Crossings.empty() ? 1e-9 : 1e-6) * area);
    for (int x = -10; x < 130; x += 3) {
        for (int y = -10; y < 130; y += 3) {
            const Point3 p =
                loops[0][0] + (x / 10.0 + 0.0123) * axes.Right + (y / 10.0 + 0.0271) * axes.Up;
            int covering = 0;
            for (size_t i = 0; i < polygon.Indices.size(); i += 3) {
                const Point3 a = polygon.Points[polygon.Indices[i]];
                const Point3 b = polygon.Points[polygon.Indices[i + 1]];
                const Point3 c = polygon.Points[polygon.Indices[i + 2]];
                covering += DoubleArea(a, b, p, normal) > 0 && DoubleArea(b, c, p, normal) > 0 &&
                            DoubleArea(c, a, p, normal) > 0;
            }
            EXPECT_EQ(covering, IsInside(p, loops, axes.Right, axes.Up) ? 1 : 0) << x << " " << y;
        }
    }
}

} // namespace

TEST(ProviderTriangulation, CoversEachPolygonOnceInAnyPlane) {
    // Rows: the X and Y axes of the plane, and its origin.
    const std::vector<std::array<Point3, 3>> planes = {{{{1, 0, 0}, {0, 1, 0}, {0, 0, 0}}},
                                                       {{{0, 1, 0}, {1, 0, 0}, {5, 6, 7}}},
                                                       {{{0, 0, 1}, {1, 0, 0}, {1e5, 0, -1e5}}},
                                                       {{{0.6, 0, 0.8}, {0, 1, 0}, {100, 0, 0}}},
                                                       {{{0.48, 0.6, 0.64}, {-0.8, 0, 0.6}, {0, 0, 0}}}};
    for (const PolygonCase& polygonCase : PolygonCases) {
        for (const auto& [x, y, origin] : planes) {
            SCOPED_TRACE(polygonCase.Name);
            PolygonTriangulation polygon;
            std::vector<Loop> loops;
            for (const Loop& loop : polygonCase.Loops) {
                loops.emplace_back();
                for (const Point3& corner : loop) {
                    loops.back().push_back(origin + corner.X * x + corner.Y * y);
                }
                polygon.Points.insert(polygon.Points.end(), loops.back().begin(), loops.back().end());
                polygon.LoopEnds.push_back(static_cast<uint32_t>(polygon.Points.size()));
            }
            Point3 normal;
            ASSERT_TRUE(NormalOfLoop(loops[0], normal));
            EXPECT_NEAR(Dot(normal, Cross(x, y)), 1.0, 1e-9);
            ASSERT_TRUE(TriangulatePolygon(polygon, normal));
            ExpectExactCover(polygon, loops, polygonCase.Area, normal);
        }
    }
}

TEST(ProviderTriangulation, KeepsCornersAndAddsPointsOnlyWhereOutlinesCross) {
    PolygonTriangulation plain;
    plain.Points = Square(0, 10);
    for (const Point3& corner : Square(2, 4)) {
        plain.Points.push_back(corner);
    }
    plain.LoopEnds = {4, 8};
    ASSERT_TRUE(TriangulatePolygon(plain, {0, 0, 1}));
    EXPECT_EQ(plain.Points.size(), 8U);
    EXPECT_TRUE(plain.Crossings.empty());

    // A bow tie whose larger half is counter-clockwise; the other half is left out.
    PolygonTriangulation crossing;
    crossing.Points = {{0, 0, 0}, {4, 0, 0}, {1, 6, 0}, {3, 6, 0}};
    crossing.LoopEnds = {4};
    ASSERT_TRUE(TriangulatePolygon(crossing, {0, 0, 1}));
    ASSERT_EQ(crossing.Points.size(), 5U);
    ASSERT_EQ(crossing.Crossings.size(), 1U);
    EXPECT_NEAR(Length(crossing.Points[4] - Point3{2, 4, 0}), 0.0, 1e-6);
    Point3 mixed;
    for (size_t i = 0; i < 4; ++i) {
        mixed =
            mixed + crossing.Crossings[0].Weights[i] * crossing.Points[crossing.Crossings[0].Points[i]];
    }
    EXPECT_NEAR(Length(mixed - crossing.Points[4]), 0.0, 1e-6);

    // Five left turns, twice around: not a convex polygon.
    PolygonTriangulation star;
    const Loop circle = Circle(5);
    star.Points = {circle[0], circle[2], circle[4], circle[1], circle[3]};
    star.LoopEnds = {5};
    ASSERT_TRUE(TriangulatePolygon(star, {0, 0, 1}));
    EXPECT_EQ(star.Crossings.size(), 5U);
}

TEST(ProviderTriangulation, RejectsPolygonsWithoutAreaAndTangledOnes) {
    // Stars whose edges cross three and fifteen times per corner.
    for (const size_t step : {size_t{4}, size_t{16}}) {
        const Loop circle = Circle(33);
        PolygonTriangulation star;
        for (size_t i = 0; i < circle.size(); ++i) {
            star.Points.push_back(circle[i * step % circle.size()]);
        }
        star.LoopEnds = {33};
        EXPECT_EQ(TriangulatePolygon(star, {0, 0, 1}), step == 4);
    }

    Point3 normal;
    EXPECT_FALSE(NormalOfLoop(Loop{{0, 0, 0}, {1, 1, 1}, {2, 2, 2}}, normal));
    EXPECT_FALSE(NormalOfLoop(Loop{{1, 1, 1}, {1, 1, 1}, {1, 1, 1}}, normal));
    EXPECT_FALSE(NormalOfLoop(Loop{{0, 0, 0}, {1e200, 0, 0}, {0, 1e200, 0}}, normal));
    EXPECT_TRUE(NormalOfLoop(Loop{{0, 0, 0}, {1, 0, 0}, {0, 3e-12, 0}}, normal));

    PolygonTriangulation nothingLeft;
    nothingLeft.Points = Square(2, 4);
    for (const Point3& corner : Square(0, 10)) {
        nothingLeft.Points.push_back(corner);
    }
    nothingLeft.LoopEnds = {4, 8};
    EXPECT_FALSE(TriangulatePolygon(nothingLeft, {0, 0, 1}));

    // The tesselator complains about a corner this far out, but gives triangles.
    PolygonTriangulation endless;
    endless.Points = {{0, 0, 0}, {4, 0, 0}, {1, 1, 0}, {0, 1e151, 0}};
    endless.LoopEnds = {4};
    EXPECT_FALSE(TriangulatePolygon(endless, {0, 0, 1}));
    EXPECT_FALSE(endless.Indices.empty());
}

TEST(ProviderTriangulation, SplitsOnlyTriangulationsThatFaceAllDirections) {
    // A tetrahedron seen from outside.
    FaceGeometry body;
    body.Positions = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    body.Indices = {0, 2, 1, 0, 1, 3, 0, 3, 2, 1, 2, 3};
    body.FrontCoordinates = {{0, 0, 1}, {1, 0, 1}, {2, 0, 1}, {3, 0, 1}};
    MakeSmoothNormals(body);
    Model model;
    AddTriangulation(model, body);
    ASSERT_GT(model.Faces.size(), 1U);
    ASSERT_LE(model.Faces.size(), 6U);
    uint32_t triangles = 0;
    for (const ModelFace& face : model.Faces) {
        EXPECT_EQ(Length(face.Normal), 1.0);
        EXPECT_EQ(face.Distance, -Dot(face.Normal, model.Positions[face.Vertices.First]));
        triangles += face.Indices.Count / 3;
        for (uint32_t i = 0; i < face.Indices.Count; i += 3) {
            std::array<Point3, 3> corners;
            for (uint32_t corner = 0; corner < 3; ++corner) {
                const uint32_t vertex = model.Indices[face.Indices.First + i + corner];
                ASSERT_LT(vertex, face.Vertices.Count);
                corners[corner] = model.Positions[face.Vertices.First + vertex];
                // Attributes belong to their vertex.
                const double number = model.Coordinates[face.Front.Coordinates + vertex].X;
                EXPECT_TRUE(body.Positions[static_cast<size_t>(number)] == corners[corner]);
                EXPECT_TRUE(body.Normals[static_cast<size_t>(number)] ==
                            model.Normals[face.Normals + vertex]);
            }
            EXPECT_GT(DoubleArea(corners[0], corners[1], corners[2], face.Normal), 0);
        }
    }
    EXPECT_EQ(triangles, 4U);

    // Three of its sides face a common direction.
    FaceGeometry cap = body;
    cap.Indices.resize(9);
    Model single;
    AddTriangulation(single, cap);
    EXPECT_EQ(single.Faces.size(), 1U);
}
