// Draws at twice the size and averages: opaque triangles in the order of the file, then blended ones
// from far to near. Before each kind, the large opaque or the blended triangles are entered from near
// to far without colours, so that what they hide is not drawn.
#include "inspect/drawing/ScenePicture.h"

#include "inspect/drawing/Rasteriser.h"
#include "inspect/drawing/View.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr uint32_t Oversampling = 2; // Along each side.

// The light on every surface, and the additional light on one that faces the light source.
constexpr double AmbientLight = 0.58;
constexpr double DirectLight = 0.52;
// In view space: from above, behind and left of the eye.
constexpr Vector LightInView = {-0.45, 0.75, -0.6};

constexpr std::array<float, 3> SkyAtTop = {0.62F, 0.74F, 0.86F};
constexpr std::array<float, 3> SkyAtBottom = {0.94F, 0.95F, 0.95F};

// Canvas pixels: opaque triangles that are larger along a side may hide much.
constexpr double LargeSide = 32;

struct DrawnMesh {
    const StoredMesh* Mesh;
    Surface Look;
};

struct ScreenPlace {
    double X; // As in ScreenCorner.
    double Y;
    double Nearness;
};

struct Drawing {
    Canvas Pixels;
    View FromEye;
    Vector Light; // In scene space, of unit length.
    std::map<const Texture*, Mipmaps> Pictures;
};

void FillBackground(Canvas& canvas) {
    for (uint32_t y = 0; y < canvas.Height; ++y) {
        const float weight = static_cast<float>(y) / static_cast<float>(canvas.Height);
        std::array<float, 3> colour{};
        for (size_t channel = 0; channel < 3; ++channel) {
            colour[channel] = SkyAtTop[channel] + (SkyAtBottom[channel] - SkyAtTop[channel]) * weight;
        }
        std::fill_n(canvas.Colours.begin() + static_cast<std::ptrdiff_t>(size_t{y} * canvas.Width),
                    canvas.Width, colour);
    }
}

double LightOn(const Drawing& drawing, const Vector& normal) {
    return AmbientLight + DirectLight * std::max(0.0, Dot(normal, drawing.Light));
}

Vector TriangleNormal(const std::array<const StoredVertex*, 3>& corners) {
    const Vector a = ToVector(corners[0]->Position);
    const Vector b = ToVector(corners[1]->Position);
    const Vector c = ToVector(corners[2]->Position);
    return Normalized(
        Cross({b[0] - a[0], b[1] - a[1], b[2] - a[2]}, {c[0] - a[0], c[1] - a[1], c[2] - a[2]}));
}

// The vertex's own normal, if it points to the triangle's side.
Vector CornerNormal(const StoredVertex& vertex, const Vector& triangleNormal) {
    const Vector normal = Normalized(ToVector(vertex.Normal));
    return Dot(normal, triangleNormal) > 0.0 ? normal : triangleNormal;
}

ScreenPlace ToScreen(const View& view, const StoredVertex& vertex) {
    const Vector place = ToView(view, vertex.Position);
    return {view.MiddleX + place[0] / place[2] * view.PixelsPerSlope,
            view.MiddleY - place[1] / place[2] * view.PixelsPerSlope, 1.0 / place[2]};
}

ScreenCorner MakeCorner(const Drawing& drawing, const StoredVertex& vertex, const ScreenPlace& place,
                        const Vector& triangleNormal) {
    const auto finiteOrZero = [](float value) {
        return std::isfinite(value) ? static_cast<double>(value) : 0.0;
    };
    return {place.X,
            place.Y,
            place.Nearness,
            finiteOrZero(vertex.U),
            finiteOrZero(vertex.V),
            LightOn(drawing, CornerNormal(vertex, triangleNormal))};
}

Surface SurfaceOf(Drawing& drawing, const StoredMaterial& material, TextureShelf& textures) {
    Surface surface;
    surface.BaseColour = material.Colour;
    const Texture* const texture = FindTexture(textures, material.TexturePath);
    if (texture != nullptr) {
        const auto [place, isNew] = drawing.Pictures.try_emplace(texture);
        if (isNew) {
            place->second = MakeMipmaps(*texture);
        }
        surface.Picture = &place->second;
    }
    surface.IsBlended = material.Colour[3] < 1.0F || (texture != nullptr && !texture->IsOpaque);
    return surface;
}

struct PlacedTriangle {
    const DrawnMesh* From;
    std::array<const StoredVertex*, 3> Vertices;
    std::array<ScreenPlace, 3> Places;
};

// Calls use(triangle) for all triangles of the mesh with finite corners.
template <typename Use> void ForEachTriangle(const View& view, const DrawnMesh& mesh, Use use) {
    const std::vector<StoredVertex>& vertices = mesh.Mesh->Vertices;
    std::vector<ScreenPlace> places;
    places.reserve(vertices.size());
    for (const StoredVertex& vertex : vertices) {
        places.push_back(ToScreen(view, vertex));
    }
    const std::vector<uint32_t>& indices = mesh.Mesh->Indices;
    for (size_t first = 0; first < indices.size(); first += 3) {
        PlacedTriangle triangle = {&mesh, {}, {}};
        bool isFinite = true;
        for (size_t corner = 0; corner < 3; ++corner) {
            const uint32_t index = indices[first + corner];
            triangle.Vertices[corner] = &vertices[index];
            triangle.Places[corner] = places[index];
            isFinite = isFinite && IsFinite(vertices[index].Position);
        }
        if (isFinite) {
            use(triangle);
        }
    }
}

template <typename Draw> void DrawWith(Draw draw, Drawing& drawing, const PlacedTriangle& triangle) {
    const Vector normal = TriangleNormal(triangle.Vertices);
    const auto corner = [&](size_t number) {
        return MakeCorner(drawing, *triangle.Vertices[number], triangle.Places[number], normal);
    };
    draw(drawing.Pixels, {corner(0), corner(1), corner(2)}, triangle.From->Look);
}

// The triangles whose order matters.
struct WaitingTriangles {
    std::vector<PlacedTriangle> LargeOpaque;
    std::vector<PlacedTriangle> Blended;
};

void ListTriangles(const View& view, const DrawnMesh& mesh, WaitingTriangles& waiting) {
    ForEachTriangle(view, mesh, [&](const PlacedTriangle& triangle) {
        const auto& [a, b, c] = triangle.Places;
        const auto [left, right] = std::minmax({a.X, b.X, c.X});
        const auto [top, bottom] = std::minmax({a.Y, b.Y, c.Y});
        if (mesh.Look.IsBlended) {
            waiting.Blended.push_back(triangle);
        } else if (right - left > LargeSide || bottom - top > LargeSide) {
            waiting.LargeOpaque.push_back(triangle);
        }
    });
}

void SortFromFarToNear(std::vector<PlacedTriangle>& triangles) {
    const auto nearness = [](const PlacedTriangle& triangle) {
        const auto& [a, b, c] = triangle.Places;
        return a.Nearness + b.Nearness + c.Nearness;
    };
    std::stable_sort(
        triangles.begin(), triangles.end(),
        [&](const PlacedTriangle& a, const PlacedTriangle& b) { return nearness(a) < nearness(b); });
}

// Takes triangles sorted from far to near.
void HideBehind(Drawing& drawing, const std::vector<PlacedTriangle>& triangles) {
    for (auto triangle = triangles.rbegin(); triangle != triangles.rend(); ++triangle) {
        DrawWith(HideBehindTriangle, drawing, *triangle);
    }
}

uint8_t ToByte(float value) {
    return static_cast<uint8_t>(std::lround(std::clamp(value, 0.0F, 1.0F) * 255.0F));
}

ScenePicture Shrink(const Canvas& canvas) {
    ScenePicture picture;
    picture.Width = canvas.Width / Oversampling;
    picture.Height = canvas.Height / Oversampling;
    picture.Pixels.reserve(size_t{picture.Width} * picture.Height * 3);
    for (uint32_t y = 0; y < picture.Height; ++y) {
        for (uint32_t x = 0; x < picture.Width; ++x) {
            std::array<float, 3> sum{};
            for (uint32_t sample = 0; sample < Oversampling * Oversampling; ++sample) {
                const size_t row = size_t{y} * Oversampling + sample / Oversampling;
                const size_t column = size_t{x} * Oversampling + sample % Oversampling;
                for (size_t channel = 0; channel < 3; ++channel) {
                    sum[channel] += canvas.Colours[row * canvas.Width + column][channel];
                }
            }
            for (const float channel : sum) {
                picture.Pixels.push_back(ToByte(channel / (Oversampling * Oversampling)));
            }
        }
    }
    return picture;
}

} // namespace

ScenePicture DrawScene(const StoredScene& scene, TextureShelf& textures, uint32_t width,
                       uint32_t height) {
    Drawing drawing;
    drawing.Pixels = BlackCanvas(width * Oversampling, height * Oversampling);
    FillBackground(drawing.Pixels);
    const View& view = drawing.FromEye = FrameScene(scene, drawing.Pixels.Width, drawing.Pixels.Height);
    for (size_t axis = 0; axis < 3; ++axis) {
        drawing.Light[axis] = view.Right[axis] * LightInView[0] + view.Up[axis] * LightInView[1] +
                              view.Forward[axis] * LightInView[2];
    }
    drawing.Light = Normalized(drawing.Light);

    std::vector<DrawnMesh> meshes;
    for (const StoredNode& node : scene.Nodes) {
        for (const StoredMesh& mesh : node.Meshes) {
            meshes.push_back({&mesh, SurfaceOf(drawing, mesh.Material, textures)});
        }
    }
    WaitingTriangles waiting;
    for (const DrawnMesh& mesh : meshes) {
        ListTriangles(view, mesh, waiting);
    }
    SortFromFarToNear(waiting.LargeOpaque);
    HideBehind(drawing, waiting.LargeOpaque);
    for (const DrawnMesh& mesh : meshes) {
        if (!mesh.Look.IsBlended) {
            ForEachTriangle(view, mesh, [&](const PlacedTriangle& triangle) {
                DrawWith(DrawTriangle, drawing, triangle);
            });
        }
    }
    SortFromFarToNear(waiting.Blended);
    HideBehind(drawing, waiting.Blended);
    for (const PlacedTriangle& triangle : waiting.Blended) {
        DrawWith(DrawTriangle, drawing, triangle);
    }
    return Shrink(drawing.Pixels);
}
