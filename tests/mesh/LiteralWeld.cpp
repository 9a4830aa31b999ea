// The grid of 64 x 8 x 64 cells with chains, newest entry first, and the linear scan.
#include "mesh/LiteralWeld.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr int32_t None = -1;
constexpr int32_t CellCounts[3] = {64, 8, 64};

struct Axis {
    float Min = 0;
    float Scale = 0;
    float Margin = 0;
};

struct Range {
    int32_t Low = 0;
    int32_t High = 0;
};

// A kept vertex of the pool and the next older entry of its cell.
struct Entry {
    size_t PoolVertex = 0;
    int32_t Next = None;
};

float Coordinate(const Vertex& vertex, int axis) {
    return axis == 0 ? vertex.Position.X : axis == 1 ? vertex.Position.Y : vertex.Position.Z;
}

bool Near(float a, float b, float tolerance) {
    return std::fabs(a - b) < tolerance;
}

bool Near(const Vec3& a, const Vec3& b, float tolerance) {
    return Near(a.X, b.X, tolerance) && Near(a.Y, b.Y, tolerance) && Near(a.Z, b.Z, tolerance);
}

bool Matches(const Vertex& a, const Vertex& b, float tolerance) {
    return Near(a.Position, b.Position, tolerance) && Near(a.Normal, b.Normal, tolerance) &&
           Near(a.U, b.U, tolerance) && Near(a.V, b.V, tolerance);
}

Axis MeasureAxis(const std::vector<Vertex>& vertices, int axis, float tolerance) {
    float min = 9999999.0f;
    float max = -9999999.0f;
    for (const Vertex& vertex : vertices) {
        const float coordinate = Coordinate(vertex, axis);
        if (min > coordinate) {
            min = coordinate;
        }
        if (coordinate > max) {
            max = coordinate;
        }
    }
    float extent = max - min;
    if (!(extent > 1.0f)) {
        extent = 1.0f;
    }
    const float scale = static_cast<float>(CellCounts[axis]) / extent;
    const float margin = scale * tolerance;
    return {.Min = min, .Scale = scale, .Margin = margin + margin};
}

Range Search(const Axis& axis, int32_t cells, float coordinate) {
    const float g = axis.Scale * (coordinate - axis.Min);
    // A pool's coordinates give 0 to the number of cells, or NaN.
    const int32_t cell =
        g >= 0 && g <= 64 ? static_cast<int32_t>(g) : std::numeric_limits<int32_t>::min();
    const int32_t low = axis.Margin >= g - static_cast<float>(cell) ? cell - 1 : cell;
    const int32_t high = axis.Margin >= static_cast<float>(cell + 1) - g ? cell + 2 : cell + 1;
    return {.Low = std::clamp(low, 0, cells), .High = std::clamp(high, 0, cells)};
}

struct Grid {
    Axis Axes[3];
    std::vector<int32_t> Heads = std::vector<int32_t>(size_t{64} * 8 * 64, None);
    std::vector<Entry> Entries;
};

size_t CellNumber(int32_t x, int32_t y, int32_t z) {
    return (static_cast<size_t>(x) * 8 + static_cast<size_t>(y)) * 64 + static_cast<size_t>(z);
}

int32_t Walk(const Grid& grid, const Range (&ranges)[3], const std::vector<Vertex>& vertices, size_t i,
             float tolerance) {
    for (int32_t x = ranges[0].Low; x < ranges[0].High; ++x) {
        for (int32_t y = ranges[1].Low; y < ranges[1].High; ++y) {
            for (int32_t z = ranges[2].Low; z < ranges[2].High; ++z) {
                int32_t number = grid.Heads[CellNumber(x, y, z)];
                while (number != None) {
                    const Entry& entry = grid.Entries[static_cast<size_t>(number)];
                    if (Matches(vertices[i], vertices[entry.PoolVertex], tolerance)) {
                        return static_cast<int32_t>(entry.PoolVertex);
                    }
                    number = entry.Next;
                }
            }
        }
    }
    return None;
}

std::vector<uint32_t> WalkGrid(const std::vector<Vertex>& vertices, std::vector<Vertex>& kept,
                               float tolerance) {
    Grid grid;
    for (int axis = 0; axis < 3; ++axis) {
        grid.Axes[axis] = MeasureAxis(vertices, axis, tolerance);
    }
    std::vector<uint32_t> numbers(vertices.size());
    for (size_t i = 0; i < vertices.size(); ++i) {
        Range ranges[3];
        for (int axis = 0; axis < 3; ++axis) {
            ranges[axis] = Search(grid.Axes[axis], CellCounts[axis], Coordinate(vertices[i], axis));
        }
        const int32_t match = Walk(grid, ranges, vertices, i, tolerance);
        if (match != None) {
            numbers[i] = numbers[static_cast<size_t>(match)];
            continue;
        }
        int32_t& head = grid.Heads.at(CellNumber(ranges[0].Low, ranges[1].Low, ranges[2].Low));
        grid.Entries.push_back({.PoolVertex = i, .Next = head});
        head = static_cast<int32_t>(grid.Entries.size() - 1);
        numbers[i] = static_cast<uint32_t>(kept.size());
        kept.push_back(vertices[i]);
    }
    return numbers;
}

std::vector<uint32_t> CompareOneByOne(const std::vector<Vertex>& vertices, std::vector<Vertex>& kept,
                                      float tolerance) {
    std::vector<uint32_t> numbers(vertices.size());
    for (size_t i = 0; i < vertices.size(); ++i) {
        size_t j = 0;
        while (j < kept.size() && !Matches(vertices[i], kept[j], tolerance)) {
            ++j;
        }
        if (j == kept.size()) {
            kept.push_back(vertices[i]);
        }
        numbers[i] = static_cast<uint32_t>(j);
    }
    return numbers;
}

} // namespace

void WeldLiterally(std::vector<Vertex>& vertices, std::vector<uint32_t>& indices, float tolerance) {
    std::vector<Vertex> kept;
    const std::vector<uint32_t> numbers = vertices.size() < LiteralGridMinimum
                                              ? CompareOneByOne(vertices, kept, tolerance)
                                              : WalkGrid(vertices, kept, tolerance);
    for (uint32_t& index : indices) {
        index = numbers.at(index);
    }
    vertices = std::move(kept);
}
