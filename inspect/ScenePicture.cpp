// Draws at twice the size and averages: opaque triangles as they come, then the others from far to near.
#include "inspect/ScenePicture.h"

#include "inspect/Rasteriser.h"
#include "inspect/View.h"

#include <algorithm>
#include <cmath>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#include <stb_image_write.h>

namespace {

constexpr uint32_t Oversampling = 2; // Along each side.

// What a surface gets from everywhere, and what it gets besides when it faces the light.
constexpr double AmbientLight = 0.58;
constexpr double DirectLight = 0.52;
// In view space: from above the eye's left shoulder.
constexpr Vector LightInView = {-0.45, 0.75, -0.6};

constexpr std::array<float, 3> SkyAtTop = {0.62F, 0.74F, 0.86F};
constexpr std::array<float, 3> SkyAtBottom = {0.94F, 0.95F, 0.95F};

struct Drawing {
    Canvas Pixels;
    View FromEye;
    Vector Light; // In scene space, of unit length.
    std::map<const Texture*, Mipmaps> Pictures;
};

// A triangle that waits for its turn.
struct BlendedTriangle {
    std::array<ScreenCorner, 3> Corners;
    Surface Look;
    double Nearness = 0;
};

void FillBackground(Canvas& canvas) {
    canvas.Nearness.assign(size_t{canvas.Width} * canvas.Height, 0.0F);
    canvas.Colours.reserve(canvas.Nearness.size());
    for (uint32_t y = 0; y < canvas.Height; ++y) {
        const float weight = static_cast<float>(y) / static_cast<float>(canvas.Height);
        std::array<float, 3> colour{};
        for (size_t channel = 0; channel < 3; ++channel) {
            colour[channel] = SkyAtTop[channel] + (SkyAtBottom[channel] - SkyAtTop[channel]) * weight;
        }
        canvas.Colours.insert(canvas.Colours.end(), canvas.Width, colour);
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

// The vertex's own normal, if it has one that points to the triangle's side.
Vector CornerNormal(const StoredVertex& vertex, const Vector& triangleNormal) {
    const Vector normal = Normalized(ToVector(vertex.Normal));
    return Dot(normal, triangleNormal) > 0.0 ? normal : triangleNormal;
}

ScreenCorner ToScreen(const Drawing& drawing, const StoredVertex& vertex, const Vector& triangleNormal) {
    const View& view = drawing.FromEye;
    const Vector place = ToView(view, vertex.Position);
    const auto finiteOrZero = [](float value) {
        return std::isfinite(value) ? static_cast<double>(value) : 0.0;
    };
    return {view.MiddleX + place[0] / place[2] * view.PixelsPerSlope,
            view.MiddleY - place[1] / place[2] * view.PixelsPerSlope,
            1.0 / place[2],
            finiteOrZero(vertex.U),
            finiteOrZero(vertex.V),
            LightOn(drawing, CornerNormal(vertex, triangleNormal))};
}

Surface SurfaceOf(Drawing& drawing, const StoredMaterial& material, TextureShelf& textures) {
    Surface surface;
    surface.Base = material.Colour;
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

void DrawMesh(Drawing& drawing, const StoredMesh& mesh, const Surface& surface,
              std::vector<BlendedTriangle>& blended) {
    for (size_t first = 0; first < mesh.Indices.size(); first += 3) {
        std::array<const StoredVertex*, 3> vertices{};
        bool isSomewhere = true;
        for (size_t corner = 0; corner < 3; ++corner) {
            vertices[corner] = &mesh.Vertices[mesh.Indices[first + corner]];
            isSomewhere = isSomewhere && IsPlace(vertices[corner]->Position);
        }
        if (!isSomewhere) {
            continue;
        }
        const Vector normal = TriangleNormal(vertices);
        const std::array<ScreenCorner, 3> corners = {ToScreen(drawing, *vertices[0], normal),
                                                     ToScreen(drawing, *vertices[1], normal),
                                                     ToScreen(drawing, *vertices[2], normal)};
        if (surface.IsBlended) {
            const double nearness = corners[0].Nearness + corners[1].Nearness + corners[2].Nearness;
            blended.push_back({corners, surface, nearness});
        } else {
            DrawTriangle(drawing.Pixels, corners, surface);
        }
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
    drawing.Pixels.Width = width * Oversampling;
    drawing.Pixels.Height = height * Oversampling;
    FillBackground(drawing.Pixels);
    const View& view = drawing.FromEye = FrameScene(scene, drawing.Pixels.Width, drawing.Pixels.Height);
    for (size_t axis = 0; axis < 3; ++axis) {
        drawing.Light[axis] = view.Right[axis] * LightInView[0] + view.Up[axis] * LightInView[1] +
                              view.Forward[axis] * LightInView[2];
    }
    drawing.Light = Normalized(drawing.Light);

    std::vector<BlendedTriangle> blended;
    for (const StoredNode& node : scene.Nodes) {
        for (const StoredMesh& mesh : node.Meshes) {
            DrawMesh(drawing, mesh, SurfaceOf(drawing, mesh.Material, textures), blended);
        }
    }
    std::stable_sort(
        blended.begin(), blended.end(),
        [](const BlendedTriangle& a, const BlendedTriangle& b) { return a.Nearness < b.Nearness; });
    for (const BlendedTriangle& triangle : blended) {
        DrawTriangle(drawing.Pixels, triangle.Corners, triangle.Look);
    }
    return Shrink(drawing.Pixels);
}

std::string EncodePng(const ScenePicture& picture) {
    std::string bytes;
    const auto append = [](void* to, void* data, int size) {
        static_cast<std::string*>(to)->append(static_cast<const char*>(data), static_cast<size_t>(size));
    };
    const bool written =
        stbi_write_png_to_func(append, &bytes, static_cast<int>(picture.Width),
                               static_cast<int>(picture.Height), 3, picture.Pixels.data(),
                               static_cast<int>(picture.Width * 3)) != 0;
    return written ? bytes : std::string();
}
