// Fills vertex pools and counts triangles.
#include "scene/SceneNode.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <stdexcept>
#include <utility>

// The corner count of a pool, and all counts derived from it, are 32-bit signed numbers.
constexpr size_t MaxPoolCorners = std::numeric_limits<int32_t>::max();

// A vertex that the pool does not have yet.
constexpr uint32_t NotInPool = 0xFFFFFFFF;

// Bytes of the blocks of a MeshMemory. The first suits a small model; the others grow with the scene.
constexpr size_t FirstBlock = size_t{1} << 16;
constexpr size_t LargestBlock = size_t{1} << 26;

namespace {

// A product with zero is zero, or not a number if the factor is not finite.
bool IsFinite(const Vertex& v) {
    const float sum =
        ((v.Position.X * 0.0f + v.Position.Y * 0.0f) + (v.Position.Z * 0.0f + v.Normal.X * 0.0f)) +
        ((v.Normal.Y * 0.0f + v.Normal.Z * 0.0f) + (v.U * 0.0f + v.V * 0.0f));
    return sum == 0.0f;
}

} // namespace

VertexPool& PoolOf(PolygonList& polygons, int32_t row) {
    const auto [place, isNew] = polygons.Pools.try_emplace(row);
    if (isNew && !polygons.Spare.empty()) {
        place->second = std::move(polygons.Spare.back());
        polygons.Spare.pop_back();
        polygons.SpareBytes -= place->second.MemoryBytes();
    }
    return place->second;
}

void AppendTriangles(VertexPool& pool, std::span<const Vertex> vertices,
                     std::span<const uint32_t> corners, LargeArray<uint32_t>& numbers) {
    if (corners.size() > MaxPoolCorners - pool.Corners.Count) {
        throw std::length_error("too many triangles of one material in one list");
    }
    pool.Welded = false;
    numbers.Resize(vertices.size());
    std::ranges::fill(numbers, NotInPool);
    uint32_t* corner = pool.Corners.Append(corners.size());
    size_t count = pool.Vertices.Count;
    pool.Vertices.Resize(count + std::min(vertices.size(), corners.size()));
    for (const uint32_t vertex : corners) {
        uint32_t number = numbers[vertex];
        if (number == NotInPool) {
            if (count == pool.Vertices.Count) {
                pool.Vertices.Append(1);
            }
            number = static_cast<uint32_t>(count);
            pool.Vertices[count++] = vertices[vertex];
            numbers[vertex] = IsFinite(vertices[vertex]) ? number : NotInPool;
        }
        *corner++ = number;
    }
    pool.Vertices.Resize(count);
}

void AppendPolygon(VertexPool& pool, std::span<const Vertex> corners) {
    if (corners.size() < 3) {
        return;
    }
    std::vector<uint32_t> fan;
    for (uint32_t i = 1; i + 1 < corners.size(); ++i) {
        fan.insert(fan.end(), {0, i, i + 1});
    }
    LargeArray<uint32_t> numbers;
    AppendTriangles(pool, corners, fan, numbers);
}

std::byte* TakeBytes(MeshMemory& memory, size_t count) {
    const auto roomOf = [](const LargeArray<std::byte>& block) {
        return block.Memory.Room - block.Count;
    };
    if (memory.Blocks.empty() || count > roomOf(memory.Blocks.back())) {
        LargeArray<std::byte> block;
        block.Reserve(std::max(count, std::clamp(3 * memory.Size, FirstBlock, LargestBlock)));
        memory.Size += block.Memory.Room;
        memory.Blocks.push_back(std::move(block));
    }
    return memory.Blocks.back().Append(count);
}

void ReturnBytes(MeshMemory& memory, const std::byte* taken, size_t used) {
    LargeArray<std::byte>& block = memory.Blocks.back();
    const size_t end = static_cast<size_t>(taken - block.begin()) + used;
    assert(end <= block.Count);
    block.Resize(end);
}

int32_t CountTriangles(const SceneNode& node) {
    int64_t total = 0;
    for (const SceneNode* child : node.Children.Elements) {
        total += CountTriangles(*child);
    }
    for (const SceneMesh* mesh : node.Meshes.Elements) {
        total += static_cast<int64_t>(mesh->Indices.size() / 3);
    }
    return static_cast<int32_t>(std::min<int64_t>(total, std::numeric_limits<int32_t>::max()));
}
