// Each float takes few different values, so that matches, near misses and choices between several
// matches are frequent.
#include "mesh/WeldCases.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>

namespace {

using Floats = std::array<float, sizeof(Vertex) / sizeof(float)>;

constexpr float Infinity = std::numeric_limits<float>::infinity();
constexpr float Largest = std::numeric_limits<float>::max();

// The engine is the same on every system; the standard distributions are not.
struct Random {
    std::mt19937 Engine;
};

uint32_t Below(Random& random, uint32_t count) {
    return static_cast<uint32_t>(random.Engine()) % count;
}

bool OneIn(Random& random, uint32_t count) {
    return Below(random, count) == 0;
}

// From -1 to 1.
float Signed(Random& random) {
    return (static_cast<float>(Below(random, 1 << 22)) - 0x1p21f) * 0x1p-21f;
}

template <size_t Count> float Pick(Random& random, const float (&values)[Count]) {
    return values[Below(random, Count)];
}

// The least and largest coordinate of a pool. The pool contains both, so the cell borders are known.
struct Extent {
    float Min = 0;
    float Max = 0;
};

Extent AnyExtent(Random& random) {
    constexpr Extent extents[] = {{0, 0},           {0, 128},       {-3.7f, 96.6f}, {-1e-5f, 1e-5f},
                                  {-64, 64},        {0, 1000},      {-0.3f, 0.9f},  {-2e6f, 3e6f},
                                  {1.2e7f, 1.3e7f}, {-0.5f, 1e30f}, {-1e-40f, 4},   {126, 131}};
    constexpr Extent beyond[] = {{-Largest, Largest}, {0, Infinity}, {-Infinity, 5}, {-2e38f, 2e38f}};
    return OneIn(random, 25) ? beyond[Below(random, 4)] : extents[Below(random, 12)];
}

float MoveByFloats(float value, int steps) {
    for (; steps > 0; --steps) {
        value = std::nextafter(value, Infinity);
    }
    for (; steps < 0; ++steps) {
        value = std::nextafter(value, -Infinity);
    }
    return value;
}

// A distance near the tolerance: equal, the adjacent floats, fractions and multiples.
float Distance(Random& random, float tolerance) {
    constexpr float factors[] = {0,     0.25f, 0.5f,  0.6f, 0.75f, 0.9f,
                                 0.99f, 1.01f, 1.25f, 1.5f, 1.9f,  2.1f};
    const float size = OneIn(random, 2)
                           ? Pick(random, factors) * tolerance
                           : MoveByFloats(tolerance, static_cast<int>(Below(random, 3)) - 1);
    return OneIn(random, 2) ? size : -size;
}

float OddValue(Random& random, float tolerance) {
    const float values[] = {0.0f,
                            -0.0f,
                            127.99999f,
                            128.0f,
                            -128.0f,
                            128.00002f,
                            1e7f,
                            -1e30f,
                            Largest,
                            1e-45f,
                            -3e-40f,
                            1.1754944e-38f,
                            0x1p37f * tolerance,
                            -0x1p37f * tolerance,
                            0x1p36f * tolerance,
                            0x1p23f * tolerance};
    return MoveByFloats(Pick(random, values), static_cast<int>(Below(random, 5)) - 2);
}

float NotFinite(Random& random) {
    return Pick(random, {Infinity, -Infinity, std::numeric_limits<float>::quiet_NaN(),
                         -std::numeric_limits<float>::quiet_NaN()});
}

// A coordinate near a border of the cells of the grid over the extent.
float NearGridBorder(Random& random, const Extent& extent, uint32_t cells, float tolerance) {
    const float length = std::max(extent.Max - extent.Min, 1.0f);
    const float place = static_cast<float>(Below(random, cells + 1)) / static_cast<float>(cells);
    const float offset =
        static_cast<float>(static_cast<int>(Below(random, 25)) - 12) * 0.25f * tolerance;
    return std::clamp(extent.Min + place * length + offset, extent.Min,
                      std::max(extent.Min, extent.Max));
}

struct PoolKind {
    std::array<Extent, 3> Extents;
    float Tolerance = 0;
};

float AnyValue(Random& random, const PoolKind& kind, size_t component) {
    constexpr uint32_t cells[3] = {64, 8, 64};
    switch (Below(random, 6)) {
    case 0:
        return static_cast<float>(Below(random, 4)) * 0.5f;
    case 1:
        return static_cast<float>(Below(random, 2000)) * 0.001f;
    case 2:
        return OneIn(random, 3) ? OddValue(random, kind.Tolerance) : 1;
    case 3:
        return 100 * kind.Tolerance * Signed(random);
    default:
        return component < 3
                   ? NearGridBorder(random, kind.Extents[component], cells[component], kind.Tolerance)
                   : Signed(random);
    }
}

Floats AnyFloats(Random& random, const PoolKind& kind) {
    Floats floats;
    for (size_t i = 0; i < floats.size(); ++i) {
        floats[i] = AnyValue(random, kind, i);
    }
    return floats;
}

// Moves some floats by about the tolerance, or negates them.
Floats Moved(Random& random, Floats floats, float tolerance) {
    const uint32_t count = OneIn(random, 3) ? 8 : 1 + Below(random, 3);
    for (uint32_t i = 0; i < count; ++i) {
        float& value = floats[count == 8 ? i : Below(random, 8)];
        value = OneIn(random, 12) ? -value : value + Distance(random, tolerance);
    }
    return floats;
}

// Copies and near copies of a few vertices, and of these copies.
void AppendClusters(Random& random, const PoolKind& kind, size_t count, std::vector<Floats>& pool) {
    std::vector<Floats> models;
    for (uint32_t i = 0; i <= Below(random, 8); ++i) {
        models.push_back(AnyFloats(random, kind));
    }
    while (pool.size() < count) {
        const bool fromPool = !pool.empty() && OneIn(random, 3);
        const std::vector<Floats>& source = fromPool ? pool : models;
        Floats floats = source[Below(random, static_cast<uint32_t>(source.size()))];
        if (!OneIn(random, 3)) {
            floats = Moved(random, floats, kind.Tolerance);
        }
        if (OneIn(random, 60)) {
            floats[Below(random, 8)] = NotFinite(random);
        }
        pool.push_back(floats);
    }
}

// Positions just above a corner of cells, where matching vertices are stored in different cells and the
// order of the cells decides.
void AppendCorner(Random& random, const PoolKind& kind, size_t count, std::vector<Floats>& pool) {
    constexpr uint32_t cells[3] = {64, 8, 64};
    Floats corner = AnyFloats(random, kind);
    for (size_t i = 0; i < 3; ++i) {
        const float length = std::max(kind.Extents[i].Max - kind.Extents[i].Min, 1.0f);
        corner[i] = kind.Extents[i].Min +
                    length * static_cast<float>(Below(random, cells[i])) / static_cast<float>(cells[i]);
    }
    while (pool.size() < count) {
        Floats floats = corner;
        for (size_t i = 0; i < 3; ++i) {
            floats[i] += static_cast<float>(Below(random, 17)) * 0.25f * kind.Tolerance;
        }
        pool.push_back(floats);
    }
}

} // namespace

WeldCase MakeWeldCase(uint32_t number) {
    Random random = {.Engine = std::mt19937(number)};
    const float tolerances[] = {1e-3f, 1e-7f, 0x1p-16f, 0.25f, 1e-45f};
    PoolKind kind;
    kind.Tolerance = OneIn(random, 5) ? Pick(random, tolerances) : 1e-5f;
    for (Extent& extent : kind.Extents) {
        extent = AnyExtent(random);
    }
    const size_t count =
        number % 16 == 0 ? 3 + Below(random, 77) : 80 + Below(random, OneIn(random, 12) ? 900 : 90);
    std::vector<Floats> pool;
    if (number % 3 == 0) {
        AppendCorner(random, kind, count, pool);
    } else {
        AppendClusters(random, kind, count, pool);
    }
    if (!OneIn(random, 3)) {
        for (size_t i = pool.size() - 1; i > 0; --i) {
            std::swap(pool[i], pool[Below(random, static_cast<uint32_t>(i + 1))]);
        }
    }
    for (size_t i = 0; i < 3; ++i) {
        pool[0][i] = kind.Extents[i].Min;
        pool[1][i] = kind.Extents[i].Max;
    }
    WeldCase result = {
        .Vertices = {}, .Indices = std::vector<uint32_t>(count), .Tolerance = kind.Tolerance};
    for (const Floats& floats : pool) {
        result.Vertices.push_back(std::bit_cast<Vertex>(floats));
    }
    std::iota(result.Indices.begin(), result.Indices.end(), 0u);
    // Further corners of a vertex count like copies of it.
    if (OneIn(random, 2)) {
        result.Indices.resize(1 + Below(random, static_cast<uint32_t>(2 * count)));
        for (uint32_t& index : result.Indices) {
            index = Below(random, static_cast<uint32_t>(count));
        }
    }
    return result;
}
