// Helpers for the tests of scene-inspect: scenes, their files byte by byte, and expected texts.
#pragma once

#include "inspect/stored/SceneReader.h"

#include "platform/Platform.h"
#include "support/Files.h"
#include "support/RunProgram.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

using Bytes = std::vector<uint8_t>;

template <size_t Count> constexpr std::array<uint8_t, Count> Zeros = {};

// Appends values as they are in memory.
template <typename... Values> void Add(Bytes& bytes, const Values&... values) {
    const auto add = [&](const auto& value) {
        const auto* const data = reinterpret_cast<const uint8_t*>(&value);
        bytes.insert(bytes.end(), data, data + sizeof value);
    };
    (add(values), ...);
}

template <typename List> void AddAll(Bytes& bytes, const List& list) {
    for (const auto& element : list) {
        Add(bytes, element);
    }
}

// The scene file. Counts are the sizes of the lists.
inline Bytes BytesOf(const StoredScene& scene) {
    const auto count = [](const auto& list) {
        return static_cast<uint32_t>(list.size());
    };
    Bytes bytes;
    Add(bytes, 0x11111111, 107, 0);
    for (const StoredNode& node : scene.Nodes) {
        std::array<char, 256> nodeName = {};
        std::copy(node.Name.begin(), node.Name.end(), nodeName.begin());
        Add(bytes, 0x22222222, nodeName, node.Matrix, 0, count(node.Meshes), count(node.Children), 0);
        for (const StoredMesh& mesh : node.Meshes) {
            const auto& [name, path, colour] = mesh.Material;
            Add(bytes, 0x42424242, count(mesh.Vertices), count(mesh.Indices) / 3, Zeros<40>);
            Add(bytes, 0x32443244, count(name) + 1, 0, colour, Zeros<16>);
            Add(bytes, count(path) + 1, 0, 1.0F, Zeros<16>, 1.0F, Zeros<48>);
            AddAll(bytes, name + u'\0');
            AddAll(bytes, path + u'\0');
            AddAll(bytes, mesh.Vertices);
            bytes.resize(bytes.size() + 4 * mesh.Vertices.size());
            AddAll(bytes, mesh.Indices);
        }
    }
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

// A triangle without area, whose 24 numbers are 0.5, 1.5, 2.5 and so on.
inline StoredMesh NumberedMesh(std::u16string_view name, std::u16string_view texture,
                               std::array<float, 4> colour) {
    StoredMesh mesh = TriangleMesh(name, texture, colour);
    float number = 0.5F;
    for (StoredVertex& vertex : mesh.Vertices) {
        for (float* const field :
             {&vertex.Position[0], &vertex.Position[1], &vertex.Position[2], &vertex.Normal[0],
              &vertex.Normal[1], &vertex.Normal[2], &vertex.U, &vertex.V}) {
            *field = number++;
        }
    }
    return mesh;
}

inline StoredNode Node(std::string_view name, std::vector<StoredMesh> meshes,
                       std::optional<uint32_t> parent = {}, std::vector<uint32_t> children = {}) {
    return {std::string(name),
            {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1},
            parent,
            std::move(children),
            std::move(meshes)};
}

// A scene whose root has these meshes.
inline StoredScene SceneWith(std::vector<StoredMesh> meshes) {
    return {{Node("", std::move(meshes))}};
}

// One node, one mesh: 666 bytes.
inline StoredScene SmallScene() {
    return SceneWith({NumberedMesh(u"Default", u"", {1, 1, 1, 1})});
}

// A root with one mesh and one named child, which has two meshes and a child.
inline StoredScene SmallTree() {
    const std::array<float, 4> white = {1, 1, 1, 1};
    return {{Node("", {NumberedMesh(u"Brick", u"maps\\a.png", white)}, {}, {1}),
             Node("K\xFC\x80\n",
                  {NumberedMesh(u"", u"", {0, 0, 0, 1}), NumberedMesh(u"Brick", u"", white)}, 0, {2}),
             Node("", {}, 1)}};
}

// A root and below it nodes one inside the other, without meshes.
inline StoredScene Chain(uint32_t depth) {
    StoredScene scene = SceneWith({});
    for (uint32_t number = 1; number < depth; ++number) {
        scene.Nodes.back().Children = {number};
        scene.Nodes.push_back(Node("", {}, number - 1));
    }
    return scene;
}

// The text of a file beside the tests.
inline std::string ExpectedText(const std::string& name) {
    std::string text =
        ReadBytes(std::filesystem::path(ORVANE_TESTS_DIR) / "inspect" / "expected" / name);
    std::erase(text, '\r');
    return text;
}

// Splits at each blank.
inline std::vector<std::u16string> Arguments(std::u16string_view text) {
    std::vector<std::u16string> arguments = {u""};
    for (const char16_t unit : text) {
        if (unit == u' ') {
            arguments.emplace_back();
        } else {
            arguments.back() += unit;
        }
    }
    return arguments;
}

inline void WriteScene(const std::filesystem::path& path, const StoredScene& scene) {
    const Bytes bytes = BytesOf(scene);
    WriteBytes(path, std::string(bytes.begin(), bytes.end()));
}

// Runs scene-inspect in the folder.
inline ProgramResult Inspect(const TempFolder& folder, std::u16string_view arguments) {
    ProgramCall call;
    call.Program = ORVANE_SCENE_INSPECT;
    call.Arguments = Arguments(arguments);
    call.WorkingDirectory = folder.Path;
    ProgramResult result = RunProgram(call);
    std::erase(result.Errors, '\r'); // The system's line ends.
    return result;
}

// One transparent pixel.
inline const std::string ClearPng(
    "\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\0\x01\0\0\0\x01\x08\x06\0\0\0\x1F\x15\xC4\x89\0\0\0\rIDAT"
    "x\x9C\x63\xF8\xCF\xC0\xC0\0\0\x04\x01\x01\0G\x06\xCA\xDE\0\0\0\0IEND\xAE\x42\x60\x82",
    70);

// Everything that reports have to cope with and that glTF forbids or restricts: numbers that are not
// finite, a matrix, normals that are not unit vectors, unused vertices, triangles without area, meshes
// without valid triangles, empty nodes, missing and transparent pictures, odd names.
inline StoredScene OddScene() {
    const std::array<float, 4> white = {1, 1, 1, 1};
    const float infinity = std::numeric_limits<float>::infinity();
    StoredMesh odd = TriangleMesh(u"odd", u"", {0.2F, 1, 0, 1});
    odd.Vertices[0].Normal = {0, 0, 0};
    odd.Vertices[1].Normal = {0, 3, 0};
    odd.Vertices.push_back({{1, 2, infinity}, {0, 1, 0}, 0, 0});
    odd.Vertices.push_back({{1, 2, 3}, {0, 1, 0}, std::nanf(""), 0});
    odd.Vertices.push_back({{900, 900, 900}, {0, 0, 0}, 0, 0});
    odd.Indices = {0, 1, 2, 0, 1, 3, 4, 1, 2, 1, 1, 1};
    StoredMesh nothingLeft = odd;
    nothingLeft.Indices = {3, 3, 3};
    StoredMesh empty = odd;
    empty.Indices.clear();
    StoredMesh down = TriangleMesh(u"a\x1B[2J\x9Bü\u202E\"\\", u"", {0, 0.2F, 1, 1}, true);
    for (StoredVertex& vertex : down.Vertices) {
        vertex.Normal = {0, 0, 0};
    }
    StoredMesh slanted = TriangleMesh(u"\xD800 lone", u"", {1, 1, 1, 0.2F});
    slanted.Vertices[2].Normal = {0, 0.6F, 0.8F};
    slanted.Vertices[1].Position = {0, 0, 1e-20F};
    slanted.Vertices[2].Position = {3, -4, 0};
    const StoredMesh longName = TriangleMesh(std::u16string(201, u'a'), u"", white);
    StoredMesh large = longName;
    large.Material.Name.pop_back();
    large.Indices.insert(large.Indices.end(), {0, 1, 2});
    StoredScene scene = {
        {Node("",
              {odd, nothingLeft, empty, slanted, TriangleMesh(u"clear", u"maps\\clear.png", white),
               TriangleMesh(u"same", u"other/clear.png", white),
               TriangleMesh(u"none", u"missing.png", white), longName, large, longName},
              {}, {1, 2}),
         Node("", {}, 0), Node("K\xFC\x80", {nothingLeft, down}, 0)}};
    scene.Nodes[2].Matrix[12] = infinity;
    return scene;
}
