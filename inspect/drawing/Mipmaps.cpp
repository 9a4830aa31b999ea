// Bilinear filtering within one level.
#include "inspect/drawing/Mipmaps.h"

#include <algorithm>
#include <cmath>

namespace {

MipmapLevel HalfSize(const MipmapLevel& level) {
    MipmapLevel half;
    half.Width = std::max(1U, level.Width / 2);
    half.Height = std::max(1U, level.Height / 2);
    half.Pixels.reserve(size_t{half.Width} * half.Height * 4);
    for (uint32_t y = 0; y < half.Height; ++y) {
        const size_t y0 = size_t{y} * 2;
        const size_t y1 = std::min<size_t>(y0 + 1, level.Height - 1);
        for (uint32_t x = 0; x < half.Width; ++x) {
            const size_t x0 = size_t{x} * 2;
            const size_t x1 = std::min<size_t>(x0 + 1, level.Width - 1);
            for (size_t channel = 0; channel < 4; ++channel) {
                const auto at = [&](size_t column, size_t row) {
                    return unsigned{level.Pixels[(row * level.Width + column) * 4 + channel]};
                };
                constexpr unsigned rounding = 2;
                const unsigned sum = at(x0, y0) + at(x1, y0) + at(x0, y1) + at(x1, y1);
                half.Pixels.push_back(static_cast<uint8_t>((sum + rounding) / 4));
            }
        }
    }
    return half;
}

// Two neighbouring pixels along one side, and the weight of the second.
struct Neighbours {
    uint32_t First;
    uint32_t Second;
    float Weight;
};

Neighbours NeighboursAt(double coordinate, uint32_t size) {
    double part = coordinate - std::floor(coordinate);
    // Infinities give NaN, and rounding can give 1.
    if (!(part >= 0.0 && part < 1.0)) {
        part = 0.0;
    }
    // The colour of a pixel is that of its centre.
    const double place = part * size + size - 0.5;
    const auto first = static_cast<uint32_t>(place);
    return {first % size, (first + 1) % size, static_cast<float>(place - first)};
}

} // namespace

Mipmaps MakeMipmaps(const Texture& texture) {
    Mipmaps mipmaps;
    mipmaps.Levels.push_back({texture.Width, texture.Height, texture.Pixels});
    while (mipmaps.Levels.back().Width > 1 || mipmaps.Levels.back().Height > 1) {
        mipmaps.Levels.push_back(HalfSize(mipmaps.Levels.back()));
    }
    return mipmaps;
}

Colour SampleMipmaps(const Mipmaps& mipmaps, double u, double v, double texelsPerPixel) {
    size_t number = 0;
    // False for NaN.
    if (texelsPerPixel > 1.0) {
        const auto last = static_cast<double>(mipmaps.Levels.size() - 1);
        number = static_cast<size_t>(std::min(std::round(std::log2(texelsPerPixel)), last));
    }
    const MipmapLevel& level = mipmaps.Levels[number];
    const Neighbours columns = NeighboursAt(u, level.Width);
    const Neighbours rows = NeighboursAt(v, level.Height);
    const auto pixel = [&](uint32_t column, uint32_t row) {
        return level.Pixels.data() + (size_t{row} * level.Width + column) * 4;
    };
    const uint8_t* const a = pixel(columns.First, rows.First);
    const uint8_t* const b = pixel(columns.Second, rows.First);
    const uint8_t* const c = pixel(columns.First, rows.Second);
    const uint8_t* const d = pixel(columns.Second, rows.Second);
    Colour colour;
    for (size_t channel = 0; channel < 4; ++channel) {
        const auto mix = [](float from, float to, float weight) {
            return from + (to - from) * weight;
        };
        const float upper = mix(a[channel], b[channel], columns.Weight);
        const float lower = mix(c[channel], d[channel], columns.Weight);
        colour[channel] = mix(upper, lower, rows.Weight) / 255.0F;
    }
    return colour;
}
