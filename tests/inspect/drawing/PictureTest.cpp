// The pictures that scene-inspect draws: coverage of triangles, depth, texture sampling, and the view of
// a scene: framed, upright and not mirrored.
#include "inspect/drawing/Mipmaps.h"
#include "inspect/drawing/Rasteriser.h"
#include "inspect/drawing/ScenePicture.h"
#include "inspect/drawing/View.h"

#include "inspect/InspectTesting.h"

#include <cmath>
#include <limits>
#include <random>

namespace {

ScreenCorner Corner(double x, double y, double nearness = 1, double light = 1) {
    return {x, y, nearness, 0, 0, light};
}

// A triangle of half opacity shows how often each pixel is drawn.
TEST(InspectPicture, DrawsEachPixelOfAMeshOnce) {
    constexpr size_t cells = 12;
    constexpr double size = 48;
    std::mt19937 random(5);
    const auto jitter = [&](size_t line) {
        // Small enough that no triangle turns over.
        const bool isBorder = line == 0 || line == cells;
        const double shift = isBorder ? 0.0 : static_cast<double>(random() % 1000) / 1000 * 1.4 - 0.7;
        return static_cast<double>(line) * size / cells + shift;
    };
    ScreenCorner grid[cells + 1][cells + 1];
    for (size_t y = 0; y <= cells; ++y) {
        for (size_t x = 0; x <= cells; ++x) {
            // Some corners fall on pixel centres and edges, where the rule matters.
            const double snap = random() % 2 == 0 ? 2.0 : 256.0;
            grid[y][x] =
                Corner(std::round(jitter(x) * snap) / snap, std::round(jitter(y) * snap) / snap);
        }
    }
    Canvas canvas = BlackCanvas(48, 48);
    const Surface half = {{1, 1, 1, 0.5F}, nullptr, true};
    for (size_t y = 0; y < cells; ++y) {
        for (size_t x = 0; x < cells; ++x) {
            DrawTriangle(canvas, {grid[y][x], grid[y][x + 1], grid[y + 1][x]}, half);
            DrawTriangle(canvas, {grid[y][x + 1], grid[y + 1][x + 1], grid[y + 1][x]}, half);
            // The back isn't drawn.
            DrawTriangle(canvas, {grid[y][x], grid[y + 1][x], grid[y][x + 1]}, half);
        }
    }
    for (size_t pixel = 0; pixel < canvas.Colours.size(); ++pixel) {
        ASSERT_EQ(canvas.Colours[pixel][0], 0.5F) << pixel % 48 << " " << pixel / 48;
    }
}

TEST(InspectPicture, ShowsTheNearestSurfaceAndBlendsTransparentOnes) {
    const auto draw = [](Canvas& canvas, double nearness, const Colour& colour, bool isBlended) {
        DrawTriangle(canvas, {Corner(0, 0, nearness), Corner(8, 0, nearness), Corner(0, 8, nearness)},
                     {colour, nullptr, isBlended});
    };
    Canvas canvas = BlackCanvas(4, 4);
    draw(canvas, 0.5, {1, 0, 0, 1}, false);
    draw(canvas, 0.25, {0, 1, 0, 1}, false);
    draw(canvas, 0.25, {0, 1, 0, 0.5F}, true);
    EXPECT_EQ(canvas.Colours[5], (std::array<float, 3>{1, 0, 0})) << "the nearer one is visible";
    draw(canvas, 0.75, {0, 0, 1, 0.25F}, true);
    draw(canvas, 0.625, {0, 0, 1, 1}, true);
    EXPECT_EQ(canvas.Colours[5], (std::array<float, 3>{0, 0, 1})) << "transparent surfaces hide nothing";
}

// Compares drawing that skips hidden tiles, or hides triangles first, with each triangle drawn alone.
TEST(InspectPicture, HidesNoVisiblePixel) {
    std::mt19937 random(3);
    const auto upTo = [&](double most) {
        return static_cast<double>(random() % 1000) / 1000 * most;
    };
    const Surface opaque = {{1, 1, 1, 1}, nullptr, false};
    const Surface glass = {{1, 1, 1, 0.5F}, nullptr, true};
    Canvas canvas = BlackCanvas(70, 45);
    std::vector<float> nearest(canvas.Nearness.size(), 0);
    std::vector<std::array<ScreenCorner, 3>> triangles;
    for (int number = 0; number < 400; ++number) {
        const double nearness = 0.2 + number * 0.002;
        std::array<ScreenCorner, 3> corners;
        for (ScreenCorner& corner : corners) {
            corner = Corner(upTo(70), upTo(45), nearness + upTo(0.1), upTo(1));
        }
        triangles.push_back(corners);
        Canvas alone = BlackCanvas(70, 45);
        DrawTriangle(alone, corners, opaque);
        std::transform(nearest.begin(), nearest.end(), alone.Nearness.begin(), nearest.begin(),
                       [](float a, float b) { return std::max(a, b); });
    }
    Canvas plain = canvas;
    Canvas hidden = canvas;
    for (size_t near = triangles.size(); near-- > 0;) {
        HideBehindTriangle(canvas, triangles[near], opaque);
        HideBehindTriangle(hidden, triangles[near], glass);
    }
    EXPECT_NE(canvas.Nearness, plain.Nearness) << "opaque triangles hide others";
    for (const auto& corners : triangles) {
        DrawTriangle(canvas, corners, opaque);
        DrawTriangle(plain, corners, glass);
        DrawTriangle(hidden, corners, glass);
    }
    EXPECT_EQ(canvas.Nearness, nearest);
    EXPECT_NE(hidden.Nearness, plain.Nearness) << "some triangles are hidden";
    for (size_t pixel = 0; pixel < plain.Colours.size(); ++pixel) {
        ASSERT_NEAR(hidden.Colours[pixel][0], plain.Colours[pixel][0], 1.0 / 1024) << pixel;
    }
}

// Halfway on the screen between distances 1 and 4 is a fifth of the way in space.
TEST(InspectPicture, InterpolatesInPerspective) {
    Canvas canvas = BlackCanvas(101, 3);
    DrawTriangle(canvas, {Corner(0, 0, 1, 0), Corner(101, 0, 0.25, 1), Corner(0, 300, 1, 0)},
                 {{1, 1, 1, 1}, nullptr, false});
    EXPECT_NEAR(canvas.Colours[50][0], 0.2, 1e-5);
}

Texture FourColours() {
    Texture texture;
    texture.Width = 2;
    texture.Height = 2;
    texture.Pixels = {255, 0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255, 255, 255, 255, 255};
    return texture;
}

TEST(InspectPicture, SamplesTexturesAtTheRightPlace) {
    const Mipmaps mipmaps = MakeMipmaps(FourColours());
    ASSERT_EQ(mipmaps.Levels.size(), 2U);
    EXPECT_EQ(mipmaps.Levels[1].Pixels.size(), 4U);
    const Colour red = {1, 0, 0, 1};
    EXPECT_EQ(SampleMipmaps(mipmaps, 0.25, 0.25, 0), red) << "upper left";
    EXPECT_EQ(SampleMipmaps(mipmaps, -0.75, 5.25, 1), red) << "repeated";
    EXPECT_EQ(SampleMipmaps(mipmaps, 0.75, 0.25, 0), (Colour{0, 1, 0, 1})) << "u goes right";
    EXPECT_EQ(SampleMipmaps(mipmaps, 0.25, 0.75, 0), (Colour{0, 0, 1, 1})) << "v goes down";
    EXPECT_EQ(SampleMipmaps(mipmaps, 0.5, 0.25, 0), (Colour{0.5F, 0.5F, 0, 1}));
    EXPECT_NEAR(SampleMipmaps(mipmaps, 0.25, 0.25, 2)[0], 0.5, 0.01) << "the small level";
    for (const double odd : {1e300, -1e300, std::numeric_limits<double>::infinity(), std::nan("")}) {
        EXPECT_EQ(SampleMipmaps(mipmaps, odd, odd, odd)[3], 1.0F);
    }
}

TEST(InspectPicture, FramesScenesOfAnySize) {
    std::mt19937 random(7);
    for (const float size : {1e-30F, 1e-3F, 1.0F, 1e6F, 1e30F}) {
        for (const float offset : {0.0F, 50.0F, -50.0F}) {
            const uint32_t height = offset == 0.0F ? 300 : 40;
            StoredMesh mesh;
            mesh.Material.Colour = {1, 1, 1, 1};
            for (uint32_t vertex = 0; vertex < 30; ++vertex) {
                const auto coordinate = [&] {
                    return (static_cast<float>(random() % 100) / 100 + offset) * size;
                };
                mesh.Vertices.push_back(
                    {{coordinate(), coordinate() / 9, coordinate()}, {0, 1, 0}, 0, 0});
                mesh.Indices.push_back(vertex);
            }
            // An unused vertex, and one that is not finite.
            mesh.Vertices.push_back({{-1e35F, 0, 0}, {0, 1, 0}, 0, 0});
            mesh.Vertices.push_back({{std::nanf(""), 0, 0}, {0, 1, 0}, 0, 0});
            mesh.Indices.insert(mesh.Indices.end(), {31, 31, 31});
            const View view = FrameScene(SceneWith({mesh}), 400, height);
            double nearest = 400; // Pixels from an edge of the picture.
            for (size_t vertex = 0; vertex < 30; ++vertex) {
                const Vector place = ToView(view, mesh.Vertices[vertex].Position);
                ASSERT_GT(place[2], 0.0);
                const double x = view.MiddleX + place[0] / place[2] * view.PixelsPerSlope;
                const double y = view.MiddleY - place[1] / place[2] * view.PixelsPerSlope;
                nearest = std::min({nearest, x, 400 - x, y, height - y});
            }
            EXPECT_GT(nearest, 0.02 * height) << size << " " << offset;
            EXPECT_LT(nearest, 0.06 * (height == 300 ? 400 : height)) << size << " " << offset;
        }
    }
}

// The centre of the pixels with the hue of this channel; NaN if there are none.
std::array<double, 2> MiddleOf(const ScenePicture& picture, size_t channel) {
    double x = 0;
    double y = 0;
    double count = 0;
    for (size_t pixel = 0; pixel < picture.Pixels.size() / 3; ++pixel) {
        const uint8_t* const rgb = picture.Pixels.data() + pixel * 3;
        if (rgb[channel] > 60 && rgb[(channel + 1) % 3] < 30 && rgb[(channel + 2) % 3] < 30) {
            const size_t row = pixel / picture.Width;
            x += static_cast<double>(pixel % picture.Width);
            y += static_cast<double>(row);
            ++count;
        }
    }
    return {x / count, y / count};
}

StoredMesh Moved(StoredMesh mesh, float x, float y, float z) {
    for (StoredVertex& vertex : mesh.Vertices) {
        vertex.Position = {vertex.Position[0] + x, vertex.Position[1] + y, vertex.Position[2] + z};
    }
    return mesh;
}

TEST(InspectPicture, LooksFromTheFrontAndAbove) {
    TextureShelf shelf;
    const std::array<float, 4> red = {1, 0, 0, 1};
    const std::array<float, 4> green = {0, 1, 0, 1};
    const std::array<float, 4> blue = {0, 0, 1, 1};
    const auto draw = [&](std::vector<StoredMesh> meshes) {
        return DrawScene(SceneWith(std::move(meshes)), shelf, 120, 80);
    };
    const StoredMesh redMesh = TriangleMesh(u"", u"", red);
    const StoredMesh greenMesh = TriangleMesh(u"", u"", green);
    const StoredMesh blueBack = TriangleMesh(u"", u"", blue, true);
    ScenePicture picture = draw({redMesh, Moved(greenMesh, 5, 0, 0), blueBack});
    EXPECT_LT(MiddleOf(picture, 0)[0], MiddleOf(picture, 1)[0]) << "X goes right";
    EXPECT_TRUE(std::isnan(MiddleOf(picture, 2)[0])) << "lower sides aren't visible";
    picture = draw({redMesh, Moved(greenMesh, 0, 4, 0)});
    EXPECT_GT(MiddleOf(picture, 0)[1], MiddleOf(picture, 1)[1]) << "Y goes up";
    picture = draw({redMesh, Moved(greenMesh, 0, 0, 5)});
    EXPECT_GT(MiddleOf(picture, 0)[1], MiddleOf(picture, 1)[1]) << "Z goes away";
    picture = draw({Moved(greenMesh, 0, -0.1F, 0), redMesh});
    EXPECT_FALSE(std::isnan(MiddleOf(picture, 0)[0]));
    // Glass is drawn last, wherever it is in the file: red is visible through the blue above it.
    StoredMesh glass = Moved(TriangleMesh(u"", u"", {0, 0, 1, 0.5F}), 0, 0.001F, 0);
    picture = draw({glass, redMesh});
    const size_t middle = (size_t{40} * 120 + 60) * 3;
    EXPECT_GT(picture.Pixels[middle], 60);
    EXPECT_LT(picture.Pixels[middle + 1], 30);
    EXPECT_GT(picture.Pixels[middle + 2], 60);
    // Of two transparent surfaces, the nearer one is drawn last.
    glass.Material.Colour[3] = 0.8F;
    for (const float height : {-0.001F, 0.001F}) {
        picture = draw(
            {glass, Moved(TriangleMesh(u"", u"", {0, 1, 0, 0.8F}), 0, 0.001F + height, 0), redMesh});
        EXPECT_EQ(picture.Pixels[middle + 2] > picture.Pixels[middle + 1], height < 0);
    }
}

TEST(InspectPicture, SurvivesExtremeNumbers) {
    std::mt19937 random(11);
    const float odd[] = {
        std::nanf(""), std::numeric_limits<float>::infinity(), 3e38F, -3e38F, 1e-45F, 0};
    TextureShelf shelf;
    for (int round = 0; round < 300; ++round) {
        StoredMesh mesh = TriangleMesh(u"", u"", {1, 1, 1, round % 2 == 0 ? 1.0F : 0.5F});
        for (auto change = random() % 6 + 1; change > 0; --change) {
            StoredVertex& vertex = mesh.Vertices[random() % 3];
            float* const numbers[] = {&vertex.Position[random() % 3], &vertex.Normal[random() % 3],
                                      &vertex.U, &vertex.V};
            *numbers[random() % 4] = odd[random() % std::size(odd)];
        }
        EXPECT_EQ(DrawScene(SceneWith({mesh}), shelf, 9, 7).Pixels.size(), 9U * 7 * 3);
    }
    EXPECT_EQ(DrawScene(SceneWith({}), shelf, 1, 1).Pixels.size(), 3U) << "an empty scene";
}

} // namespace
