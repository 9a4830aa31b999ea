// The reports of scene-inspect: summary, tree, JSON, differences; its options and exit codes.
#include "inspect/Options.h"
#include "inspect/report/SceneDiff.h"
#include "inspect/report/SceneJson.h"
#include "inspect/report/SceneSummary.h"
#include "inspect/report/SceneTree.h"
#include "inspect/report/SummaryText.h"
#include "inspect/stored/Wording.h"

#include "inspect/InspectTesting.h"

#include "platform/Platform.h"
#include "support/Files.h"
#include "support/RunProgram.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <functional>
#include <limits>

namespace {

TEST(InspectReport, SummarizesScenes) {
    Bytes bytes;
    AddHeader(bytes);
    AddNode(bytes, "", 1, 1);
    AddMesh(bytes, u"Brick", u"", 0);
    AddNode(bytes, "", 2, 0);
    AddMesh(bytes, u"Brick", u"", 0);
    AddMesh(bytes, u"Brick", u"", One);
    StoredScene scene;
    ASSERT_FALSE(ReadStoredScene(bytes, scene));
    scene.Nodes[1].Matrix[12] = std::numeric_limits<float>::infinity();
    std::vector<StoredVertex>& vertices = scene.Nodes[1].Meshes[1].Vertices;
    vertices[0].Position = {-4, 100, 0};
    vertices[1].U = std::nanf("");
    vertices[2].Position[1] = std::nanf("");
    const SceneSummary summary = Summarize(scene);
    EXPECT_EQ(summary.Nodes, 2U);
    EXPECT_EQ(summary.Levels, 2U);
    EXPECT_EQ(summary.NodesWithMatrix, 1U);
    EXPECT_EQ(summary.Meshes, 3U);
    EXPECT_EQ(summary.Vertices, 9U);
    EXPECT_EQ(summary.Triangles, 3U);
    // The vertices of AddMesh are collinear; the third mesh has a non-finite corner.
    EXPECT_EQ(summary.DegenerateTriangles, 3U);
    EXPECT_EQ(summary.NonFiniteNumbers, 3U);
    ASSERT_TRUE(summary.Bounds);
    EXPECT_EQ(summary.Bounds->Minimum, (std::array<float, 3>{-4, 1.5F, 0}));
    EXPECT_EQ(summary.Bounds->Maximum, (std::array<float, 3>{16.5F, 100, 18.5F}));
    ASSERT_EQ(summary.Materials.size(), 2U);
    EXPECT_EQ(summary.Materials[0].Meshes, 2U);
    EXPECT_EQ(summary.Materials[1].Triangles, 1U);

    vertices[0].Position = {0, 0, 0};
    vertices[1].Position = {1, 0, 0};
    vertices[2].Position = {0, 0, 1e-20F};
    EXPECT_EQ(Summarize(scene).DegenerateTriangles, 2U) << "small triangles aren't degenerate";
}

TEST(InspectReport, EscapesControlCharacters) {
    SceneSummary summary;
    summary.Materials.push_back({{u"a\x1B[2J\x9Bü", u"", {0, 0.2F, 1, 1}}, 1, 2});
    const std::string text = Utf8FromUtf16(SummaryText(summary));
    EXPECT_NE(text.find("\"a\\x1B[2J\\x9Bü\" rgba 0 0.2 1 1, 2 triangles in 1 mesh"), std::string::npos)
        << text;
    EXPECT_EQ(text.find('\x1B'), std::string::npos);
    EXPECT_EQ(Quoted(u"a\"\\"), u"\"a\\\"\\\\\"");
    EXPECT_EQ(Quoted(std::u16string(201, u'a')), u'"' + std::u16string(200, u'a') + u"\"…");
}

TEST(InspectReport, ListsTheLargestMeshesInOrder) {
    StoredScene scene = SceneWith({});
    for (const unsigned triangles : {2U, 5U, 1U, 5U, 4U, 3U, 9U}) {
        StoredMesh mesh = TriangleMesh(u"m", u"", {1, 1, 1, 1});
        mesh.Indices.assign(size_t{triangles} * 3, 0);
        scene.Nodes[0].Meshes.push_back(mesh);
    }
    std::vector<uint64_t> places;
    for (const MeshSummary& mesh : Summarize(scene).LargestMeshes) {
        places.push_back(mesh.Mesh);
    }
    EXPECT_EQ(places, (std::vector<uint64_t>{6, 1, 3, 4, 5}));
}

// A root with one mesh and one named child, which has two meshes and a child.
Bytes SmallTree() {
    Bytes bytes;
    AddHeader(bytes);
    AddNode(bytes, "", 1, 1);
    AddMesh(bytes, u"Brick", u"maps\\a.png", One);
    AddNode(bytes, "K\xFC\x80\n", 2, 1);
    AddMesh(bytes, u"", u"", 0);
    AddMesh(bytes, u"Brick", u"", One);
    AddNode(bytes, "", 0, 0);
    return bytes;
}

TEST(InspectReport, PrintsTheTree) {
    const Bytes bytes = SmallTree();
    SceneReading reading = ReadingOfBytes(bytes);
    std::u16string text;
    ASSERT_FALSE(TreeText(reading, text));
    EXPECT_EQ(Utf8FromUtf16(text), "0: 1 mesh, 1 child\n"
                                   "  mesh 0 \"Brick\", 1 triangle, 3 vertices\n"
                                   "  1 \"Kü€\\x0A\": 2 meshes, 1 child\n"
                                   "    mesh 0 \"\", 1 triangle, 3 vertices\n"
                                   "    mesh 1 \"Brick\", 1 triangle, 3 vertices\n"
                                   "    2: 0 meshes, 0 children\n");
    StoredScene scene;
    ASSERT_FALSE(ReadStoredScene(bytes, scene));
    EXPECT_EQ(TreeText(scene), text);
}

// The text of a chain must not grow with the square of its length.
TEST(InspectReport, PrintsDeepTreesInLittleSpace) {
    constexpr size_t depth = 3000;
    Bytes bytes;
    AddHeader(bytes);
    for (size_t level = 1; level <= depth; ++level) {
        AddNode(bytes, "", 0, level < depth ? 1 : 0);
    }
    SceneReading reading = ReadingOfBytes(bytes);
    std::u16string text;
    ASSERT_FALSE(TreeText(reading, text));
    EXPECT_LT(text.size(), depth * 120);
    EXPECT_TRUE(text.ends_with(u" 2999 (level 3000): 0 meshes, 0 children\n"));
}

TEST(InspectReport, PrintsTheSummaryAsJson) {
    const Bytes bytes = SmallTree();
    SceneReading reading = ReadingOfBytes(bytes);
    SceneSummary summary;
    ASSERT_FALSE(SummarizeParts(reading, summary));
    summary.Materials[0].Material.Colour[1] = 0.2F;
    summary.Materials[1].Material.Name = u"\xD800 lone";
    const auto json = nlohmann::json::parse(SummaryJson(summary));
    EXPECT_EQ(json["sound"], true);
    EXPECT_EQ(json["nodes"], 3);
    EXPECT_EQ(json["levels"], 3);
    EXPECT_EQ(json["meshes"], 3);
    EXPECT_EQ(json["vertices"], 9);
    EXPECT_EQ(json["triangles"], 3);
    EXPECT_EQ(json["degenerateTriangles"], 3);
    EXPECT_EQ(json["nonFiniteNumbers"], 0);
    EXPECT_EQ(json["bounds"]["maximum"], (std::vector<double>{16.5, 17.5, 18.5}));
    ASSERT_EQ(json["materials"].size(), 3U);
    EXPECT_EQ(json["materials"][0]["texture"], "maps\\a.png");
    EXPECT_EQ(json["materials"][0]["color"], (std::vector<double>{1, 0.2, 1, 1}));
    EXPECT_EQ(json["materials"][1]["name"], "\xEF\xBF\xBD lone");
    EXPECT_TRUE(json["materials"][1]["texture"].is_null());
    EXPECT_EQ(json["largestMeshes"][1]["node"], 1);
    EXPECT_EQ(json["largestMeshes"][1]["nodeName"], "Kü€\n");
    EXPECT_TRUE(nlohmann::json::parse(SummaryJson({}))["bounds"].is_null());
    const auto fault = nlohmann::json::parse(FaultJson({uint64_t{1} << 40, u"x"}));
    EXPECT_EQ(fault, (nlohmann::json{{"sound", false}, {"offset", uint64_t{1} << 40}, {"reason", "x"}}));
}

TEST(InspectReport, FindsEachKindOfDifference) {
    const Bytes bytes = SmallTree();
    StoredScene scene;
    ASSERT_FALSE(ReadStoredScene(bytes, scene));
    scene.Nodes[1].Name = "house";
    EXPECT_EQ(CompareScenes(scene, scene).Count, 0U);
    const std::u16string node = u"node 1 \"house\", ";
    const std::u16string mesh = u"node 1 \"house\", mesh 1 \"Brick\", ";
    const float nan = std::nanf("");
    const struct {
        std::function<void(StoredNode&)> Change; // Of node 1.
        std::u16string First;
    } rows[] = {
        {[](StoredNode& n) { n.Name = "hut"; }, node + u"name: \"house\" | \"hut\""},
        {[](StoredNode& n) { n.Matrix[12] = 4; },
         node + u"matrix: 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1 | 1 0 0 0 0 1 0 0 0 0 1 0 4 0 0 1"},
        {[](StoredNode& n) { n.Meshes.pop_back(); }, node + u"mesh count: 2 | 1"},
        {[](StoredNode& n) { n.Children.clear(); }, node + u"child count: 1 | 0"},
        {[](StoredNode& n) { n.Meshes[1].Material.Name = u"Oak"; },
         mesh + u"material name: \"Brick\" | \"Oak\""},
        {[](StoredNode& n) { n.Meshes[1].Material.TexturePath = u"b"; },
         mesh + u"texture path: \"\" | \"b\""},
        {[](StoredNode& n) { n.Meshes[1].Material.Colour[3] = 0; }, mesh + u"colour: 1 1 1 1 | 1 1 1 0"},
        {[](StoredNode& n) { n.Meshes[1].Vertices.pop_back(); }, mesh + u"vertex count: 3 | 2"},
        {[](StoredNode& n) { n.Meshes[1].Indices.clear(); }, mesh + u"triangle count: 1 | 0"},
        {[](StoredNode& n) { n.Meshes[1].Vertices[2].Position[0] = -1; },
         mesh + u"vertex 2 position: 16.5 17.5 18.5 | -1 17.5 18.5"},
        {[](StoredNode& n) { n.Meshes[1].Vertices[0].Normal[2] = 0; },
         mesh + u"vertex 0 normal: 3.5 4.5 5.5 | 3.5 4.5 0"},
        {[nan](StoredNode& n) { n.Meshes[1].Vertices[0].V = nan; },
         mesh + u"vertex 0 texture coordinates: 6.5 7.5 | 6.5 nan"},
        {[](StoredNode& n) {
             n.Meshes[1].Indices = {0, 2, 1};
         },
         mesh + u"triangle 0: 0 1 2 | 0 2 1"},
    };
    for (const auto& row : rows) {
        StoredScene other = scene;
        row.Change(other.Nodes[1]);
        const SceneDifferences differences = CompareScenes(scene, other);
        EXPECT_EQ(differences.Count, 1U) << Utf8FromUtf16(row.First);
        EXPECT_EQ(Utf8FromUtf16(differences.First), Utf8FromUtf16(row.First));
    }
    StoredScene other = scene;
    scene.Nodes[0].Meshes[0].Vertices[1].U = nan;
    other.Nodes[0].Meshes[0].Vertices[1].U = -nan;
    other.Nodes[1].Meshes[0].Indices = {2, 1, 0};
    other.Nodes[2].Name = "last";
    const SceneDifferences differences = CompareScenes(scene, other);
    EXPECT_EQ(differences.Count, 3U);
}

TEST(InspectReport, ParsesOptionsInAnyOrderAndRejectsWrongOnes) {
    Options options;
    EXPECT_EQ(ParseOptions({u"--size", u"7x4096", u"f", u"--png", u"p", u"--glb", u"g", u"--textures",
                            u"t", u"--diff", u"o"},
                           options),
              u"");
    EXPECT_EQ(options.Width, 7U);
    EXPECT_EQ(options.Height, 4096U);
    EXPECT_EQ(options.File + options.PictureFile + options.GltfFile + options.TextureDirectory +
                  options.Other,
              u"fpgto");
    options = {};
    EXPECT_EQ(ParseOptions({u"--", u"--json"}, options), u"");
    EXPECT_EQ(options.File, u"--json");
    const std::vector<std::vector<std::u16string>> wrong = {
        {},
        {u""},
        {u"a", u"b"},
        {u"a", u"--tre"},
        {u"a", u"-h"},
        {u"a", u"--tree", u"--json"},
        {u"a", u"--tree", u"--tree"},
        {u"a", u"--diff"},
        {u"a", u"--glb", u""},
        {u"a", u"--textures", u"t"},
        {u"a", u"--size", u"9x9"},
        {u"a", u"--png", u"p", u"--size", u"0x9"},
        {u"a", u"--png", u"p", u"--size", u"9x4097"},
        {u"a", u"--png", u"p", u"--size", u"4294967297x9"},
        {u"a", u"--png", u"p", u"--size", u"9"},
        {u"a", u"--png", u"p", u"--size", u"9x"},
        {u"a", u"--png", u"p", u"--size", u"9x9x9"},
        {u"a", u"--glb", u"./a"},
        {u"a", u"--png", u"a"},
        {u"a", u"--diff", u"o", u"--glb", u"o"},
        {u"a", u"--png", u"x", u"--glb", u".\\x"},
        {u"a", u"--png", u"missing/x", u"--glb", u"missing/../missing//x"},
    };
    for (const auto& arguments : wrong) {
        Options unused;
        EXPECT_NE(ParseOptions(arguments, unused), u"") << testing::PrintToString(arguments);
    }
}

// Whole runs: output streams and exit codes.
TEST(InspectReport, ReturnsAnExitCodePerOutcome) {
    const TempFolder folder;
    const auto write = [&](const char* name, const Bytes& bytes) {
        WriteBytes(folder.Path / name, std::string(bytes.begin(), bytes.end()));
    };
    const auto run = [&](const std::vector<std::u16string>& arguments) {
        ProgramCall call;
        call.Program = ORVANE_SCENE_INSPECT;
        call.Arguments = arguments;
        call.WorkingDirectory = folder.Path;
        return RunProgram(call);
    };
    Bytes bytes = SmallFile();
    write("a.bin", bytes);
    bytes[550] = 0x99;
    write("b.bin", bytes);
    bytes.pop_back();
    write("short.bin", bytes);

    ProgramResult result = run({u"a.bin"});
    EXPECT_EQ(result.ExitCode, 0);
    EXPECT_TRUE(result.Output.starts_with("nodes ")) << result.Output;
    EXPECT_EQ(result.Errors, "");
    EXPECT_TRUE(run({u"--tree", u"a.bin"}).Output.starts_with("0: 1 mesh"));
    EXPECT_EQ(nlohmann::json::parse(run({u"--json", u"a.bin"}).Output)["triangles"], 1);
    EXPECT_TRUE(run({u"--help"}).Output.starts_with("Usage:"));

    result = run({u"short.bin"});
    EXPECT_EQ(result.ExitCode, 1);
    EXPECT_EQ(result.Output, "");
    std::erase(result.Errors, '\r'); // The system's line ends.
    EXPECT_EQ(result.Errors, "short.bin: at byte 654: index array: 12 bytes needed, 11 left\n");
    result = run({u"--json", u"short.bin"});
    EXPECT_EQ(result.ExitCode, 1);
    EXPECT_EQ(nlohmann::json::parse(result.Output)["sound"], false);
    EXPECT_EQ(run({u"--diff", u"short.bin", u"a.bin"}).ExitCode, 1);
    EXPECT_EQ(run({u"missing.bin"}).ExitCode, 1);

    result = run({u"a.bin", u"--treee"});
    EXPECT_EQ(result.ExitCode, 2);
    EXPECT_NE(result.Errors.find("Usage:"), std::string::npos);

    result = run({u"a.bin", u"--diff", u"a.bin"});
    EXPECT_EQ(result.ExitCode, 0);
    EXPECT_EQ(result.Output, "no differences\n");
    result = run({u"a.bin", u"--diff", u"b.bin"});
    EXPECT_EQ(result.ExitCode, 3);
    EXPECT_TRUE(result.Output.starts_with(
        "1 difference\nfirst: node 0, mesh 0 \"Default\", vertex 0 position: "))
        << result.Output;

    result = run({u"a.bin", u"--glb", u"missing/a.glb"});
    EXPECT_EQ(result.ExitCode, 4);
    EXPECT_NE(result.Errors.find("missing/a.glb"), std::string::npos);
    EXPECT_EQ(run({u"short.bin", u"--png", u"a.png"}).ExitCode, 1);
    EXPECT_FALSE(std::filesystem::exists(folder.Path / "a.png"));
}

#ifndef _WIN32
// Pipes, full and broken outputs, and too little memory.
TEST(InspectReport, ReportsFailingOutputsAndLackOfMemory) {
    const TempFolder folder;
    Bytes bytes = SmallFile();
    WriteBytes(folder.Path / "a.bin", std::string(bytes.begin(), bytes.end()));
    // Valid, with more triangles than memory.
    bytes[363] = 5;
    WriteBytes(folder.Path / "vast.bin", std::string(bytes.begin(), bytes.end() - 12));
    std::filesystem::resize_file(folder.Path / "vast.bin", 654 + 12 * (5ULL << 24 | 1));
    const struct {
        const char16_t* Command;
        int ExitCode;
        const char* Errors; // A part of them.
    } rows[] = {
        {u"cat a.bin | $0 --tree --glb a.glb /dev/stdin && cmp -s a.glb b.glb", 0, ""},
        {u"$0 --json a.bin > /dev/full", 4, "standard output can't be written (No space"},
        {u"(sleep 0.5; $0 a.bin; echo $? >&2) | true", 0, "4\n"},
        {u"$0 --glb /dev/full a.bin", 4, "/dev/full: the file can't be written (No space"},
#ifndef __SANITIZE_ADDRESS__ // It ends a program that requests too much.
        {u"$0 vast.bin", 4, "vast.bin: not enough memory"},
#endif
    };
    const auto run = [&](const std::u16string& command) {
        ProgramCall call;
        call.Program = "/bin/sh";
        call.MemoryLimit = 400'000'000;
        call.Arguments = {u"-c", command, std::filesystem::path(ORVANE_SCENE_INSPECT).u16string()};
        call.WorkingDirectory = folder.Path;
        return RunProgram(call);
    };
    ASSERT_EQ(run(u"$0 --glb b.glb a.bin").ExitCode, 0);
    for (const auto& row : rows) {
        const ProgramResult result = run(row.Command);
        EXPECT_EQ(result.ExitCode, row.ExitCode) << Utf8FromUtf16(row.Command);
        EXPECT_NE(result.Errors.find(row.Errors), std::string::npos) << result.Errors;
    }
}
#endif

} // namespace
