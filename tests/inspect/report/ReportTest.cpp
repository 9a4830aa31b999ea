// The reports of scene-inspect: summary, tree, JSON, differences; its options and exit codes.
#include "inspect/Options.h"
#include "inspect/report/SceneDiff.h"
#include "inspect/report/SceneJson.h"
#include "inspect/report/SceneSummary.h"
#include "inspect/report/SceneTree.h"
#include "inspect/report/SummaryText.h"
#include "inspect/stored/Textures.h"

#include "inspect/InspectTesting.h"

#include <cmath>
#include <functional>

namespace {

TEST(InspectReport, DescribesScenes) {
    const std::pair<const char*, StoredScene> rows[] = {
        {"odd", OddScene()}, {"tree", SmallTree()}, {"nothing", SceneWith({})}, {"deep", Chain(35)}};
    for (const auto& [name, scene] : rows) {
        SCOPED_TRACE(name);
        const SceneSummary summary = Summarize(scene);
        const std::string json = SummaryJson(summary);
        const std::u16string text = TreeText(scene) + SummaryText(summary);
        EXPECT_EQ(Utf8FromUtf16(text) + json, ExpectedText(name + std::string(".txt")));
        // The same from the file, read part by part.
        const Bytes bytes = BytesOf(scene);
        SceneReading reading = ReadingOfBytes(bytes);
        std::u16string tree;
        ASSERT_FALSE(TreeText(reading, tree));
        EXPECT_TRUE(text.starts_with(tree));
        reading = ReadingOfBytes(bytes);
        SceneSummary parts;
        ASSERT_FALSE(SummarizeParts(reading, parts));
        EXPECT_EQ(SummaryJson(parts), json);
    }
    EXPECT_EQ(FaultJson({uint64_t{1} << 40, u"x"}),
              "{\n  \"sound\": false,\n  \"offset\": 1099511627776,\n  \"reason\": \"x\"\n}\n");
}

// This depth would crash a recursive reader, and the text must not grow with the square of it.
TEST(InspectReport, ReadsDeepTreesInLittleSpace) {
    constexpr uint32_t depth = 50000;
    const Bytes bytes = BytesOf(Chain(depth));
    StoredScene scene;
    ASSERT_FALSE(ReadStoredScene(bytes, scene));
    EXPECT_EQ(Summarize(scene).Levels, depth);
    SceneReading reading = ReadingOfBytes(bytes);
    std::u16string text;
    ASSERT_FALSE(TreeText(reading, text));
    EXPECT_LT(text.size(), size_t{depth} * 120);
    EXPECT_TRUE(text.ends_with(u" 49999 (level 50000): 0 meshes, 0 children\n"));
    EXPECT_EQ(TreeText(scene), text);
}

// One line per change of the named node.
TEST(InspectReport, FindsEachKindOfDifference) {
    StoredScene scene = SmallTree();
    scene.Nodes[1].Name = "house";
    EXPECT_EQ(CompareScenes(scene, scene).Count, 0U);
    const float nan = std::nanf("");
    const std::function<void(StoredNode&, StoredMesh&)> changes[] = {
        [](auto& node, auto&) { node.Name = "hut"; },
        [](auto& node, auto&) { node.Matrix[12] = 4; },
        [](auto& node, auto&) { node.Meshes.pop_back(); },
        [](auto& node, auto&) { node.Children.clear(); },
        [](auto&, auto& mesh) { mesh.Material.Name = u"Oak"; },
        [](auto&, auto& mesh) { mesh.Material.TexturePath = u"b"; },
        [](auto&, auto& mesh) { mesh.Material.Colour[3] = 0; },
        [](auto&, auto& mesh) { mesh.Vertices.pop_back(); },
        [](auto&, auto& mesh) { mesh.Indices.clear(); },
        [](auto&, auto& mesh) { mesh.Vertices[2].Position[0] = -1; },
        [](auto&, auto& mesh) { mesh.Vertices[0].Normal[2] = 0; },
        [nan](auto&, auto& mesh) { mesh.Vertices[0].V = nan; },
        [](auto&, auto& mesh) { std::swap(mesh.Indices[1], mesh.Indices[2]); },
    };
    std::string found;
    for (const auto& change : changes) {
        StoredScene other = scene;
        change(other.Nodes[1], other.Nodes[1].Meshes[1]);
        const SceneDifferences differences = CompareScenes(scene, other);
        EXPECT_EQ(differences.Count, 1U);
        found += Utf8FromUtf16(differences.First) + "\n";
    }
    StoredScene other = scene;
    scene.Nodes[0].Meshes[0].Vertices[1].U = nan;
    other.Nodes[0].Meshes[0].Vertices[1].U = -nan;
    other.Nodes[1].Meshes[0].Indices = {2, 1, 0};
    other.Nodes[2].Name = "last";
    const SceneDifferences differences = CompareScenes(scene, other);
    EXPECT_EQ(differences.Count, 3U);
    found += Utf8FromUtf16(differences.First) + "\n";
    EXPECT_EQ(found, ExpectedText("differences.txt"));
}

TEST(InspectReport, ParsesOptionsInAnyOrderAndRejectsWrongOnes) {
    Options options;
    EXPECT_EQ(ParseOptions(Arguments(u"--size 7x4096 f --png p --glb g --html h --textures t --diff o"),
                           options),
              u"");
    EXPECT_EQ(options.Width, 7U);
    EXPECT_EQ(options.Height, 4096U);
    EXPECT_EQ(options.File + options.PictureFile + options.GltfFile + options.PageFile +
                  options.TextureDirectory + options.Other,
              u"fpghto");
    options = {};
    EXPECT_EQ(ParseOptions(Arguments(u"-- --json"), options), u"");
    EXPECT_EQ(options.File, u"--json");
    EXPECT_EQ(options.Width, 1280U);
    for (const char16_t* wrong : {
             u"",
             u"a b",
             u"a --tre",
             u"a -h",
             u"a --tree --json",
             u"a --tree --tree",
             u"a --diff",
             u"a --glb ",
             u"a --textures t",
             u"a --size 9x9",
             u"a --png p --size 0x9",
             u"a --png p --size 9x4097",
             u"a --png p --size 4294967297x9",
             u"a --png p --size 9",
             u"a --png p --size 9x",
             u"a --png p --size 9x9x9",
             u"a --glb ./a",
             u"a --png a",
             u"a --diff o --glb o",
             u"a --diff o --html o",
             u"a --glb x --html x",
             u"a --png x --glb .\\x",
             u"a --png missing/x --glb missing/../missing//x",
         }) {
        Options unused;
        EXPECT_NE(ParseOptions(Arguments(wrong), unused), u"") << Utf8FromUtf16(wrong);
    }
}

// Whole runs: output streams and exit codes.
TEST(InspectReport, ReturnsAnExitCodePerOutcome) {
    const TempFolder folder;
    StoredScene scene = SmallScene();
    WriteScene(folder.Path / "a.bin", scene);
    scene.Nodes[0].Meshes[0].Vertices[0].Position[0] = 9;
    WriteScene(folder.Path / "b.bin", scene);
    std::filesystem::copy(folder.Path / "a.bin", folder.Path / "short.bin");
    std::filesystem::resize_file(folder.Path / "short.bin", 665);
    const struct {
        const char16_t* Arguments;
        int ExitCode;
        const char* Output; // Its start.
        const char* Errors; // A part of them.
    } rows[] = {
        {u"a.bin", 0, "nodes ", ""},
        {u"--tree a.bin", 0, "0: 1 mesh", ""},
        {u"--json a.bin", 0, "{\n  \"sound\": true", ""},
        {u"--help", 0, "Usage:", ""},
        {u"--version", 0, "scene-inspect 1.", ""},
        {u"short.bin", 1, "", "short.bin: at byte 654: index array: 12 bytes needed, 11 left\n"},
        {u"--json short.bin", 1, "{\n  \"sound\": false", "short.bin: "},
        {u"--diff short.bin a.bin", 1, "", "short.bin: "},
        {u"short.bin --png c.png", 1, "", "short.bin: "},
        {u"missing.bin", 1, "", "at byte 0: the file can't be opened (No such file or directory)"},
        {u".", 1, "", "at byte 0: the file can't be "},
        {u"a.bin --treee", 2, "", "Usage:"},
        {u"a.bin --diff a.bin", 0, "no differences\n", ""},
        {u"a.bin --diff b.bin", 3, "1 difference\nfirst: node 0, mesh 0 \"Default\", vertex 0 pos", ""},
        {u"a.bin --glb missing/a.glb", 4, "nodes ", "missing/a.glb"},
        {u"a.bin --html missing/a.html", 4, "nodes ", "missing/a.html: "},
        {u"a.bin --png a.png --size 31x17", 0, "nodes ", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Utf8FromUtf16(row.Arguments));
        const ProgramResult result = Inspect(folder, row.Arguments);
        EXPECT_EQ(result.ExitCode, row.ExitCode);
        EXPECT_TRUE(result.Output.starts_with(row.Output)) << result.Output;
        EXPECT_EQ(result.Output.empty(), *row.Output == '\0') << result.Output;
        EXPECT_NE(result.Errors.find(row.Errors), std::string::npos) << result.Errors;
        EXPECT_EQ(result.Errors.empty(), *row.Errors == '\0') << result.Errors;
    }
    EXPECT_FALSE(std::filesystem::exists(folder.Path / "c.png"));
    TextureShelf shelf;
    shelf.Directory = PathText(folder.Path) + u"/";
    const Texture* const png = FindTexture(shelf, u"a.png");
    ASSERT_NE(png, nullptr);
    EXPECT_EQ(png->Width, 31U);
    EXPECT_EQ(png->Height, 17U);
}

#ifndef _WIN32
// Pipes, full and broken outputs, and too little memory.
TEST(InspectReport, ReportsFailingOutputsAndLackOfMemory) {
    const TempFolder folder;
    WriteScene(folder.Path / "a.bin", SmallScene());
    // Valid, with more triangles than memory.
    Bytes bytes = BytesOf(SmallScene());
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
