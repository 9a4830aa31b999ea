// The records of the scene file, in its byte layout: little-endian, without gaps. docs/scene-file.md
// describes the whole format.
#pragma once

#include "scene/Matrix.h"

#include <bit>
#include <cstddef>
#include <cstdint>

static_assert(std::endian::native == std::endian::little, "records go out as they stand in memory");

constexpr uint32_t SceneMagic = 0x11111111;
constexpr uint32_t NodeMagic = 0x22222222;
constexpr uint32_t MeshMagic = 0x42424242;
constexpr uint32_t MaterialMagic = 0x32443244;
constexpr uint32_t SceneVersion = 107;

// Bytes of the name field of a node, closing NUL included.
constexpr size_t NodeNameSize = 256;

struct FileHeader {
    uint32_t Magic = SceneMagic;
    uint32_t Version = SceneVersion;
    uint32_t Reserved = 0;
};
static_assert(sizeof(FileHeader) == 12);

struct NodeRecord {
    uint32_t Magic = NodeMagic;
    char Name[NodeNameSize] = {}; // ANSI code page, padded with zero bytes
    Matrix4 Matrix = {};          // the identity, after baking
    uint32_t Reserved0 = 0;
    int32_t MeshCount = 0;
    int32_t ChildCount = 0;
    uint32_t Reserved1 = 0;
};
static_assert(sizeof(NodeRecord) == 340);
static_assert(offsetof(NodeRecord, Matrix) == 260);
static_assert(offsetof(NodeRecord, MeshCount) == 328);
static_assert(offsetof(NodeRecord, ChildCount) == 332);

struct MeshRecord {
    uint32_t Magic = MeshMagic;
    int32_t VertexCount = 0;
    int32_t TriangleCount = 0;
    uint8_t Reserved[40] = {};
};
static_assert(sizeof(MeshRecord) == 52);

struct MaterialRecord {
    uint32_t Magic = MaterialMagic;
    uint32_t NameLength = 0; // UTF-16 units, closing NUL included, as TexturePathLength
    uint32_t Reserved0 = 0;
    float Red = 0; // 0 to 1, as the next three
    float Green = 0;
    float Blue = 0;
    float Alpha = 0;
    uint8_t Reserved1[16] = {};
    uint32_t TexturePathLength = 0;
    uint32_t Reserved2 = 0;
    float Fixed0 = 1.0f;
    uint8_t Reserved3[16] = {};
    float Fixed1 = 1.0f;
    uint8_t Reserved4[48] = {};
};
static_assert(sizeof(MaterialRecord) == 124);
static_assert(offsetof(MaterialRecord, Red) == 12);
static_assert(offsetof(MaterialRecord, TexturePathLength) == 44);
static_assert(offsetof(MaterialRecord, Fixed0) == 52);
static_assert(offsetof(MaterialRecord, Fixed1) == 72);
