// Reads a scene file back, as docs/scene-file.md tells the format, and checks every byte of it.
//
// All coordinates are scene coordinates as stored: left-handed, Y up. Nothing is converted but the byte
// order. Time and memory stay in proportion to the bytes that are really there, whatever counts claim;
// files may have any size. A shortage of memory says nothing about the file and passes as
// std::bad_alloc.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

// One vertex as the file holds it. Any bit pattern is a sound number here, infinities and NaNs too.
struct StoredVertex {
    std::array<float, 3> Position;
    std::array<float, 3> Normal;
    float U;
    float V;
};
static_assert(sizeof(StoredVertex) == 32);

struct StoredMaterial {
    std::u16string Name;        // Without the closing NUL; may be empty.
    std::u16string TexturePath; // Likewise; empty without a texture.
    // Red, green, blue, alpha: each one of the 256 steps of a byte between 0 and 1. Red, green and blue
    // are 1 with a texture.
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

// The tree as the file orders it, depth first: node 0 is the root, a parent stands before its children.
// Parent and Children are positions in Nodes.
struct StoredScene {
    std::vector<StoredNode> Nodes;
};

// The first fault met: the byte that it lies at, counted from 0, and what is wrong, in words.
struct SceneFault {
    uint64_t Offset = 0;
    std::u16string Reason;
};

// "at byte 352: mesh record: magic is 00000000, not 42424242"
std::u16string FaultText(const SceneFault& fault);

// Gives nothing and fills scene if the bytes are a sound scene file from first to last. Otherwise gives
// the fault and leaves scene without nodes.
std::optional<SceneFault> ReadStoredScene(std::span<const uint8_t> bytes, StoredScene& scene);

// The same for a file. One that can't be opened or read is a fault as well, at the byte up to which it
// was read.
std::optional<SceneFault> ReadStoredSceneFile(const std::u16string& path, StoredScene& scene);

// A scene being read part by part, for those who needn't have all of it in memory at once. The file is
// known to be sound only when End has come.
struct SceneReading {
    // What the last step met, replaced by the next one. Parent, Children and Meshes of Node stay empty.
    StoredNode Node;
    uint32_t MeshCount = 0;  // Of Node.
    uint32_t ChildCount = 0; // Of Node.
    uint64_t Depth = 0;      // Of Node: 1 for the root.
    StoredMesh Mesh;         // Its owner is Node.
    std::optional<SceneFault> Fault;

    // The rest is the reader's own.
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> File = {nullptr, nullptr};
    std::span<const uint8_t> Bytes; // In the place of File.
    std::optional<uint64_t> Size;   // Unknown for pipes and their like.
    uint64_t Position = 0;
    uint64_t OwedNodes = 1;                   // Node blocks still to come, as far as is known.
    uint32_t OwedMeshes = 0;                  // Of Node.
    std::vector<uint32_t> OwedChildren = {1}; // On each level of the way down; the root on the first.
};

enum class ScenePart { Node, Mesh, End, Fault };

// The bytes have to outlive the reading.
SceneReading ReadingOfBytes(std::span<const uint8_t> bytes);
SceneReading ReadingOfFile(const std::u16string& path);

// Reads the next part: each node is followed by its meshes and then by its children. After End or Fault
// the same comes again.
ScenePart ReadPart(SceneReading& reading);
