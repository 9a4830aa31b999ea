// Helpers for the tests of scene-inspect: scene files built byte by byte, and scenes in memory.
#pragma once

#include "inspect/stored/SceneReader.h"

#include <bit>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

using Bytes = std::vector<uint8_t>;

inline void AddWord(Bytes& bytes, uint32_t word) {
    for (int shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<uint8_t>(word >> shift));
    }
}

inline void AddWords(Bytes& bytes, std::initializer_list<uint32_t> words) {
    for (const uint32_t word : words) {
        AddWord(bytes, word);
    }
}

inline void AddZeros(Bytes& bytes, size_t count) {
    bytes.insert(bytes.end(), count, 0);
}

inline void AddString(Bytes& bytes, std::u16string_view text) {
    for (const char16_t unit : text) {
        bytes.push_back(static_cast<uint8_t>(unit & 0xFF));
        bytes.push_back(static_cast<uint8_t>(unit >> 8));
    }
    AddZeros(bytes, 2);
}

constexpr uint32_t One = 0x3F800000; // 1.0F

inline void AddHeader(Bytes& bytes) {
    AddWords(bytes, {0x11111111, 107, 0});
}

inline void AddNode(Bytes& bytes, std::string_view name, uint32_t meshes, uint32_t children) {
    AddWord(bytes, 0x22222222);
    bytes.insert(bytes.end(), name.begin(), name.end());
    AddZeros(bytes, 256 - name.size());
    AddWords(bytes, {One, 0, 0, 0, 0, One, 0, 0, 0, 0, One, 0, 0, 0, 0, One});
    AddWords(bytes, {0, meshes, children, 0});
}

// A mesh of one triangle and three vertices, whose 24 numbers are 0.5, 1.5, 2.5 and so on.
inline void AddMesh(Bytes& bytes, std::u16string_view name, std::u16string_view texture, uint32_t rgb) {
    AddWords(bytes, {0x42424242, 3, 1});
    AddZeros(bytes, 40);
    AddWords(bytes, {0x32443244, static_cast<uint32_t>(name.size() + 1), 0, rgb, rgb, rgb, One});
    AddZeros(bytes, 16);
    AddWords(bytes, {static_cast<uint32_t>(texture.size() + 1), 0, One});
    AddZeros(bytes, 16);
    AddWord(bytes, One);
    AddZeros(bytes, 48);
    AddString(bytes, name);
    AddString(bytes, texture);
    for (int number = 0; number < 24; ++number) {
        AddWord(bytes, std::bit_cast<uint32_t>(static_cast<float>(number) + 0.5F));
    }
    AddZeros(bytes, 12);
    AddWords(bytes, {0, 1, 2});
}

// One node, one mesh: 666 bytes.
inline Bytes SmallFile() {
    Bytes bytes;
    AddHeader(bytes);
    AddNode(bytes, "", 1, 0);
    AddMesh(bytes, u"Default", u"", One);
    return bytes;
}

// A triangle on the ground that faces up or, if turned, down.
inline StoredMesh TriangleMesh(std::u16string_view name, std::u16string_view texture,
                               std::array<float, 4> colour, bool isTurned = false) {
    const float up = isTurned ? -1.0F : 1.0F;
    StoredMesh mesh;
    mesh.Material = {std::u16string(name), std::u16string(texture), colour};
    mesh.Vertices = {
        {{0, 0, 0}, {0, up, 0}, 0, 1}, {{0, 0, 2}, {0, up, 0}, 0, 0}, {{3, 0, 0}, {0, up, 0}, 1, 1}};
    mesh.Indices = isTurned ? std::vector<uint32_t>{0, 2, 1} : std::vector<uint32_t>{0, 1, 2};
    return mesh;
}

// A scene whose root has these meshes.
inline StoredScene SceneWith(std::vector<StoredMesh> meshes) {
    StoredScene scene;
    scene.Nodes.push_back(
        {"", {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, {}, {}, std::move(meshes)});
    return scene;
}
