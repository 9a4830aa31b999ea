// The records of a scene file in memory.
//
// All coordinates are scene coordinates as stored: left-handed, Y up. Nothing is converted except the
// byte order.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

// One vertex as stored. Any bit pattern is allowed, infinities and NaNs too.
struct StoredVertex {
    std::array<float, 3> Position;
    std::array<float, 3> Normal;
    float U;
    float V;
};
static_assert(sizeof(StoredVertex) == 32);

struct StoredMaterial {
    std::u16string Name;        // Without the closing NUL; may be empty.
    std::u16string TexturePath; // The same; empty without a texture.
    // Red, green, blue, alpha: each a byte divided by 255. Red, green and blue are 1 with a texture.
    std::array<float, 4> Colour;
};

struct StoredMesh {
    StoredMaterial Material;
    std::vector<StoredVertex> Vertices; // At most 99999.
    std::vector<uint32_t> Indices;      // Three to a triangle, each below the number of vertices.
};

struct StoredNode {
    std::string Name;             // Bytes of the writing system's ANSI code page, at most 255, no NUL.
    std::array<float, 16> Matrix; // Row-major, translation in 12 to 14. Any numbers.
    std::optional<uint32_t> Parent;
    std::vector<uint32_t> Children;
    std::vector<StoredMesh> Meshes;
};

// The tree in the order of the file, depth first: node 0 is the root, a parent precedes its children.
// Parent and Children are positions in Nodes.
struct StoredScene {
    std::vector<StoredNode> Nodes;
};

// Materials are equal if name, texture path and colour are equal: the file contains nothing else to
// distinguish them.
using MaterialKey = std::tuple<std::u16string, std::u16string, std::array<float, 4>>;

inline MaterialKey KeyOf(const StoredMaterial& material) {
    return {material.Name, material.TexturePath, material.Colour};
}
