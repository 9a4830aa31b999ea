// The binary glTF that scene-inspect writes: parsed here, read by another program, and checked by the
// format's official validator.
#include "inspect/gltf/GltfExport.h"
#include "inspect/report/SceneSummary.h"
#include "platform/Files.h"

#include "inspect/InspectTesting.h"

#include "platform/Platform.h"
#include "support/Files.h"
#include "support/RunProgram.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <cstring>
#include <limits>
#include <set>

namespace {

using Json = nlohmann::json;
namespace fs = std::filesystem;

// One transparent pixel.
constexpr unsigned char ClearPng[] = {
    0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A, 0x00, 0x00, 0x00, 0x0D, 0x49, 0x48,
    0x44, 0x52, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x08, 0x06, 0x00, 0x00,
    0x00, 0x1F, 0x15, 0xC4, 0x89, 0x00, 0x00, 0x00, 0x0D, 0x49, 0x44, 0x41, 0x54, 0x78,
    0x9C, 0x63, 0xF8, 0xCF, 0xC0, 0xC0, 0x00, 0x00, 0x04, 0x01, 0x01, 0x00, 0x47, 0x06,
    0xCA, 0xDE, 0x00, 0x00, 0x00, 0x00, 0x49, 0x45, 0x4E, 0x44, 0xAE, 0x42, 0x60, 0x82};

struct Gltf {
    Json Root;
    std::string Buffer;
};

uint32_t WordAt(const std::string& bytes, size_t at) {
    uint32_t word = 0;
    std::memcpy(&word, bytes.data() + at, sizeof word);
    return word;
}

Gltf Parse(const std::string& bytes) {
    EXPECT_EQ(bytes.substr(0, 4), "glTF");
    EXPECT_EQ(WordAt(bytes, 4), 2U);
    EXPECT_EQ(WordAt(bytes, 8), bytes.size());
    const uint32_t jsonSize = WordAt(bytes, 12);
    EXPECT_EQ(bytes.substr(16, 4), "JSON");
    Gltf gltf{Json::parse(bytes.substr(20, jsonSize)), ""};
    const size_t binary = 20 + size_t{jsonSize};
    if (binary < bytes.size()) {
        EXPECT_EQ(WordAt(bytes, binary), bytes.size() - binary - 8);
        gltf.Buffer = bytes.substr(binary + 8);
    }
    return gltf;
}

// The elements of an accessor, each as its numbers.
template <typename T>
std::vector<std::vector<T>> Elements(const Gltf& gltf, size_t number, size_t width) {
    const Json& accessor = gltf.Root["accessors"][number];
    const Json& view = gltf.Root["bufferViews"][accessor["bufferView"].get<size_t>()];
    const size_t stride = view.value("byteStride", sizeof(T) * width);
    const size_t start = view.value("byteOffset", size_t{0}) + accessor.value("byteOffset", size_t{0});
    std::vector<std::vector<T>> elements(accessor["count"].get<size_t>(), std::vector<T>(width));
    for (size_t element = 0; element < elements.size(); ++element) {
        std::memcpy(elements[element].data(), gltf.Buffer.data() + start + element * stride,
                    sizeof(T) * width);
    }
    return elements;
}

using Corner = std::vector<float>; // Position and normal.

std::vector<Corner> CornersOf(const Gltf& gltf, const Json& primitive) {
    const Json& attributes = primitive["attributes"];
    const auto positions = Elements<float>(gltf, attributes["POSITION"], 3);
    const auto normals = Elements<float>(gltf, attributes["NORMAL"], 3);
    std::vector<Corner> corners;
    for (const auto& index : Elements<uint32_t>(gltf, primitive["indices"], 1)) {
        Corner corner = positions.at(index[0]);
        corner.insert(corner.end(), normals[index[0]].begin(), normals[index[0]].end());
        corners.push_back(corner);
    }
    return corners;
}

std::string Export(const StoredScene& scene, const std::u16string& directory = u"") {
    TextureShelf shelf;
    shelf.Directory = directory;
    return ExportGltf(scene, shelf).Bytes;
}

// The valid scene file at the path.
StoredScene ReadScene(const fs::path& path) {
    StoredScene scene;
    EXPECT_FALSE(ReadStoredSceneFile(PathText(path), scene));
    return scene;
}

// The example house, converted.
fs::path ConvertHouse(const TempFolder& folder) {
    ProgramCall call;
    call.Program = ORVANE_PROGRAM;
    call.Arguments = {PathText(fs::path(ORVANE_EXAMPLES_DIR) / "house" / "house.json"),
                      PathText(folder.Path / "house.bin"), u"maps", PathText(folder.Path / "log")};
    EXPECT_EQ(RunProgram(call).ExitCode, 0);
    return folder.Path / "house.bin";
}

// A scene with everything that glTF forbids or restricts: non-finite numbers, normals that are not unit
// vectors, unused vertices, meshes without valid triangles, empty nodes, missing and transparent
// pictures.
StoredScene OddScene(const TempFolder& folder) {
    WriteBytes(folder.Path / "clear.png",
               std::string(reinterpret_cast<const char*>(ClearPng), sizeof ClearPng));
    const float infinity = std::numeric_limits<float>::infinity();
    StoredMesh mesh = TriangleMesh(u"odd", u"", {0.2F, 1, 0, 1});
    mesh.Vertices[0].Normal = {0, 0, 0};
    mesh.Vertices[1].Normal = {0, 3, 0};
    mesh.Vertices.push_back({{1, 2, infinity}, {0, 1, 0}, 0, 0});
    mesh.Vertices.push_back({{1, 2, 3}, {0, 1, 0}, std::nanf(""), 0});
    mesh.Vertices.push_back({{900, 900, 900}, {0, 0, 0}, 0, 0});
    mesh.Indices = {0, 1, 2, 0, 1, 3, 4, 1, 2, 1, 1, 1};
    StoredMesh nothingLeft = mesh;
    nothingLeft.Indices = {3, 3, 3};
    StoredMesh empty = mesh;
    empty.Indices.clear();
    StoredScene scene =
        SceneWith({mesh, nothingLeft, empty, TriangleMesh(u"glass", u"", {1, 1, 1, 0.2F}),
                   TriangleMesh(u"clear", u"maps\\clear.png", {1, 1, 1, 1}),
                   TriangleMesh(u"same", u"other/clear.png", {1, 1, 1, 1}),
                   TriangleMesh(u"none", u"missing.png", {1, 1, 1, 1})});
    scene.Nodes[0].Children = {1, 2};
    scene.Nodes.push_back({"", scene.Nodes[0].Matrix, 0, {}, {}});
    scene.Nodes.push_back({"K\xFC\x80", scene.Nodes[0].Matrix, 0, {}, {nothingLeft}});
    return scene;
}

TEST(InspectGltf, NegatesZAndReversesTriangles) {
    StoredScene scene = SceneWith({TriangleMesh(u"up", u"", {0.2F, 1, 0, 1})});
    scene.Nodes[0].Meshes[0].Vertices[2].Normal = {0, 0.6F, 0.8F};
    const Gltf gltf = Parse(Export(scene));
    const std::vector<Corner> corners = CornersOf(gltf, gltf.Root["meshes"][0]["primitives"][0]);
    EXPECT_EQ(corners,
              (std::vector<Corner>{{0, 0, 0, 0, 1, 0}, {3, 0, 0, 0, 0.6F, -0.8F}, {0, 0, -2, 0, 1, 0}}));
    // A triangle that faces down, without normals.
    StoredMesh bare = TriangleMesh(u"down", u"", {1, 1, 1, 1}, true);
    for (StoredVertex& vertex : bare.Vertices) {
        vertex.Normal = {0, 0, 0};
    }
    const Gltf mended = Parse(Export(SceneWith({bare})));
    for (const Corner& corner : CornersOf(mended, mended.Root["meshes"][0]["primitives"][0])) {
        EXPECT_EQ(Corner(corner.begin() + 3, corner.end()), (Corner{0, -1, 0}));
    }
    const Json& colour = gltf.Root["materials"][0]["pbrMetallicRoughness"]["baseColorFactor"];
    EXPECT_NEAR(colour[0].get<double>(), 0.0331, 0.0001) << "the linear value of sRGB 0.2";
    EXPECT_EQ(colour[1], 1.0);
    EXPECT_EQ(colour[3], 1.0);
}

TEST(InspectGltf, CorrectsInvalidScenes) {
    const TempFolder folder;
    TextureShelf shelf;
    shelf.Directory = PathText(folder.Path) + u"/";
    const GltfFile file = ExportGltf(OddScene(folder), shelf);
    EXPECT_EQ(file.TrianglesLeftOut, 4U);
    ASSERT_EQ(shelf.Warnings.size(), 1U);
    EXPECT_NE(shelf.Warnings[0].find(u"missing.png"), std::u16string::npos);
    const Gltf gltf = Parse(file.Bytes);
    const Json& primitives = gltf.Root["meshes"].at(0)["primitives"];
    EXPECT_EQ(gltf.Root["meshes"].size(), 1U);
    ASSERT_EQ(primitives.size(), 5U);
    EXPECT_EQ(CornersOf(gltf, primitives[0]), (std::vector<Corner>{{0, 0, 0, 0, 1, 0},
                                                                   {3, 0, 0, 0, 1, 0},
                                                                   {0, 0, -2, 0, 1, 0},
                                                                   {0, 0, -2, 0, 1, 0},
                                                                   {0, 0, -2, 0, 1, 0},
                                                                   {0, 0, -2, 0, 1, 0}}));
    const Json& bounds = gltf.Root["accessors"][primitives[0]["attributes"]["POSITION"].get<size_t>()];
    EXPECT_EQ(bounds["min"], (std::vector<double>{0, 0, -2}));
    EXPECT_EQ(bounds["max"], (std::vector<double>{3, 0, 0}));
    const Json& materials = gltf.Root["materials"];
    const auto mode = [&](size_t number) {
        return materials[number].value("alphaMode", "OPAQUE");
    };
    EXPECT_EQ(mode(0) + mode(1) + mode(2) + mode(3) + mode(4), "OPAQUEBLENDBLENDBLENDOPAQUE");
    EXPECT_EQ(materials[2]["pbrMetallicRoughness"]["baseColorTexture"]["index"], 0);
    EXPECT_EQ(materials[3]["pbrMetallicRoughness"]["baseColorTexture"]["index"], 0);
    EXPECT_FALSE(materials[4]["pbrMetallicRoughness"].contains("baseColorTexture"));
    const auto texture = Elements<float>(gltf, primitives[2]["attributes"]["TEXCOORD_0"], 2);
    EXPECT_EQ(texture, (std::vector<std::vector<float>>{{0, 1}, {1, 1}, {0, 0}}));
    const Json& picture =
        gltf.Root["bufferViews"][gltf.Root["images"].at(0)["bufferView"].get<size_t>()];
    EXPECT_EQ(
        std::memcmp(gltf.Buffer.data() + picture["byteOffset"].get<size_t>(), ClearPng, sizeof ClearPng),
        0);
    EXPECT_EQ(gltf.Root["nodes"][0]["children"], (std::vector<int>{1, 2}));
    EXPECT_EQ(gltf.Root["nodes"][2]["name"], "Kü€");
}

TEST(InspectGltf, FindsTexturesBesideTheFileOrInADirectory) {
    EXPECT_EQ(LastComponent(u"C:brick 1:2.png"), u"brick 1:2.png");
    EXPECT_EQ(LastComponent(u"1:2.png"), u"1:2.png");
    const TempFolder folder;
    WriteBytes(folder.Path / "maps" / "clear.png",
               std::string(reinterpret_cast<const char*>(ClearPng), sizeof ClearPng));
    WriteBytes(folder.Path / "broken.png",
               std::string(reinterpret_cast<const char*>(ClearPng), sizeof ClearPng - 30));
    Bytes bytes;
    AddHeader(bytes);
    AddNode(bytes, "", 2, 0);
    AddMesh(bytes, u"", u"C:\\x\\clear.png", One);
    AddMesh(bytes, u"", u"broken.png", One);
    WriteBytes(folder.Path / "a.bin", std::string(bytes.begin(), bytes.end()));
    const auto run = [&](const std::vector<std::u16string>& arguments) {
        ProgramCall call;
        call.Program = ORVANE_SCENE_INSPECT;
        call.Arguments = arguments;
        call.WorkingDirectory = folder.Path;
        const ProgramResult result = RunProgram(call);
        EXPECT_EQ(result.ExitCode, 0);
        return result.Errors;
    };
    const auto images = [&] {
        return Parse(ReadBytes(folder.Path / "a.glb")).Root.value("images", Json()).size();
    };
    std::string errors = run({u"a.bin", u"--glb", u"a.glb"});
    EXPECT_NE(errors.find("\"clear.png\" can't be read"), std::string::npos) << errors;
    EXPECT_NE(errors.find("\"broken.png\" can't be decoded"), std::string::npos) << errors;
    EXPECT_EQ(images(), 0U);
    errors = run({u"a.bin", u"--glb", u"a.glb", u"--textures", u"maps"});
    EXPECT_EQ(errors.find("clear.png"), std::string::npos) << errors;
    EXPECT_EQ(images(), 1U);
}

#ifdef ORVANE_PROVIDER_LIBRARY_DIR

// Compares the tree and every triangle of the house, in order.
TEST(InspectGltf, ContainsTheWholeHouse) {
    const TempFolder folder;
    const StoredScene scene = ReadScene(ConvertHouse(folder));
    const Gltf gltf = Parse(Export(scene, PathText(folder.Path) + u"/"));
    ASSERT_EQ(gltf.Root["nodes"].size(), scene.Nodes.size());
    EXPECT_EQ(gltf.Root["images"].size(), 8U);
    for (size_t number = 0; number < scene.Nodes.size(); ++number) {
        const StoredNode& stored = scene.Nodes[number];
        const Json& node = gltf.Root["nodes"][number];
        EXPECT_EQ(node.value("children", std::vector<uint32_t>()), stored.Children);
        ASSERT_EQ(node.contains("mesh"), !stored.Meshes.empty());
        for (size_t part = 0; part < stored.Meshes.size(); ++part) {
            const StoredMesh& mesh = stored.Meshes[part];
            const Json& primitive =
                gltf.Root["meshes"][node["mesh"].get<size_t>()]["primitives"].at(part);
            const std::vector<Corner> corners = CornersOf(gltf, primitive);
            ASSERT_EQ(corners.size(), mesh.Indices.size());
            constexpr size_t turned[] = {0, 2, 1};
            for (size_t corner = 0; corner < corners.size(); ++corner) {
                const size_t index = mesh.Indices[corner / 3 * 3 + turned[corner % 3]];
                const auto& position = mesh.Vertices[index].Position;
                ASSERT_EQ(Corner(corners[corner].begin(), corners[corner].begin() + 3),
                          (Corner{position[0], position[1], -position[2]}));
            }
        }
    }
}

// Runs a program from the search path; not on Windows.
ProgramResult RunFromPath(std::vector<std::u16string> arguments) {
#ifdef _WIN32
    return {};
#endif
    ProgramCall call;
    call.Program = "/usr/bin/env";
    call.Arguments = std::move(arguments);
    return RunProgram(call);
}

TEST(InspectGltf, OpensInAnotherReader) {
    const TempFolder folder;
    const StoredScene scene = ReadScene(ConvertHouse(folder));
    WriteBytes(folder.Path / "house.glb", Export(scene, PathText(folder.Path) + u"/"));
    if (RunFromPath({u"assimp", u"version"}).ExitCode != 0) {
        GTEST_SKIP() << "the program assimp isn't installed";
    }
    const ProgramResult result =
        RunFromPath({u"assimp", u"info", (folder.Path / "house.glb").u16string(), u"--raw"});
    ASSERT_EQ(result.ExitCode, 0) << result.Output;
    const auto line = [&](const std::string& label) {
        const size_t start = result.Output.find(label);
        EXPECT_NE(start, std::string::npos) << label;
        const size_t value = result.Output.find_first_not_of(' ', start + label.size());
        return result.Output.substr(value, result.Output.find('\n', value) - value);
    };
    const SceneSummary summary = Summarize(scene);
    EXPECT_EQ(line("\nFaces:"), std::to_string(summary.Triangles));
    EXPECT_EQ(line("\nVertices:"), std::to_string(summary.Vertices));
    EXPECT_EQ(line("\nNodes:"), std::to_string(summary.Nodes));
    EXPECT_EQ(line("\nTextures (embed.):"), "8");
    const auto point = [](float x, float y, float z) {
        char text[100];
        std::snprintf(text, sizeof text, "(%f %f %f)", static_cast<double>(x), static_cast<double>(y),
                      static_cast<double>(z));
        return std::string(text);
    };
    ASSERT_TRUE(summary.Bounds);
    const auto& [low, high] = *summary.Bounds;
    EXPECT_EQ(line("\nMinimum point"), point(low[0], low[1], -high[2]));
    EXPECT_EQ(line("\nMaximum point"), point(high[0], high[1], -low[2]));
}

// The folder of the validator, which is installed if necessary; empty if that fails.
fs::path InstalledValidator() {
    fs::path folder = fs::path(ORVANE_SCENE_INSPECT).parent_path() / "gltf-validator";
    const fs::path stamp = folder / "installed";
    if (fs::exists(stamp)) {
        return folder;
    }
    const ProgramResult result =
        RunFromPath({u"npm", u"install", u"--prefix", folder.u16string(), u"--no-audit", u"--no-fund",
                     u"--fetch-retries=0", u"gltf-validator@2.0.0-dev.3.10"});
    if (result.ExitCode != 0) {
        return {};
    }
    WriteBytes(stamp, "");
    return folder;
}

TEST(InspectGltf, PassesTheValidator) {
    const TempFolder folder;
    const StoredScene house = ReadScene(ConvertHouse(folder));
    const std::u16string textures = PathText(folder.Path) + u"/";
    const fs::path validator = InstalledValidator();
    if (validator.empty()) {
        GTEST_SKIP() << "the npm package gltf-validator can't be installed";
    }
    const std::u16string script = u"const fs = require('fs');"
                                  u"require(process.argv[1] + '/node_modules/gltf-validator')"
                                  u".validateBytes(new Uint8Array(fs.readFileSync(process.argv[2])))"
                                  u".then(report => console.log(JSON.stringify(report.issues)));";
    for (const StoredScene& scene : {house, OddScene(folder), SceneWith({})}) {
        const fs::path file = folder.Path / "scene.glb";
        WriteBytes(file, Export(scene, textures));
        const ProgramResult result =
            RunFromPath({u"node", u"-e", script, validator.u16string(), file.u16string()});
        ASSERT_EQ(result.ExitCode, 0) << result.Errors;
        const Json issues = Json::parse(result.Output);
        EXPECT_EQ(issues["numErrors"], 0) << result.Output;
        EXPECT_EQ(issues["numWarnings"], 0) << result.Output;
    }
}

#endif

} // namespace
