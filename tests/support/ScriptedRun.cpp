// Runs with the scripted library: set-up, record of calls, and short forms of the results.
#include "support/ScriptedRun.h"

#include "platform/Platform.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <sstream>

namespace fs = std::filesystem;

namespace {

void ReadCalls(ScriptedRun& run, const fs::path& record) {
    std::istringstream lines(fs::exists(record) ? ReadBytes(record) : "");
    for (std::string line; std::getline(lines, line);) {
        EXPECT_NE(line[0], '!') << line << " in " << (run.Calls.empty() ? "" : run.Calls.back());
        if (line[0] != '#')
            run.Calls.push_back(line);
    }
}

void AppendNode(const StoredScene& scene, const StoredNode& node, std::string& text) {
    const char* gap = "";
    if (!node.Name.empty()) {
        const std::basic_string<unsigned char> latin(node.Name.begin(), node.Name.end());
        text += "'" + Utf8FromUtf16(std::u16string(latin.begin(), latin.end())) + "'";
        gap = " ";
    }
    for (const StoredMesh& mesh : node.Meshes) {
        text += gap + Utf8FromUtf16(mesh.Material.Name);
        const std::string path = Utf8FromUtf16(mesh.Material.TexturePath);
        if (!path.empty())
            text += "@" +
                    path.substr(path.rfind("Texture") + 7, path.rfind('.') - path.rfind("Texture") - 7);
        if (mesh.Material.Colour != std::array<float, 4>{1, 1, 1, 1}) {
            std::ostringstream parts;
            for (const float part : mesh.Material.Colour)
                parts << " " << part * 255;
            text += "(" + parts.str().substr(1) + ")";
        }
        text += ":" + std::to_string(mesh.Indices.size() / 3);
        gap = " ";
    }
    for (uint32_t child : node.Children) {
        const StoredNode& transform = scene.Nodes[child];
        EXPECT_TRUE(transform.Name.empty() && transform.Meshes.empty());
        EXPECT_EQ(transform.Children.size(), 1u);
        text += std::string(gap) + "[";
        for (uint32_t content : transform.Children)
            AppendNode(scene, scene.Nodes[content], text);
        text += "]";
        gap = " ";
    }
}

// Replaces the triangles.
void Expand(Json& node) {
    if (node.is_object() && node.contains("triangle")) {
        Json whole = Triangle(node["triangle"]);
        whole.update(node);
        node = whole;
    }
    if (node.is_structured())
        for (Json& child : node)
            Expand(child);
}

// The parts of a run that scenarios describe with {src}, {dest} and {out}.
std::vector<std::pair<std::u16string, std::u16string>> Marks(const ScriptedRun& run) {
    const std::u16string out = run.Destination.substr(0, run.Destination.find_last_of(u"\\/") + 1);
    return {{u"{src}", run.Source}, {u"{dest}", run.Destination}, {u"{out}", out}};
}

std::u16string Filled(std::u16string line, const ScriptedRun& run) {
    for (const auto& [mark, text] : Marks(run))
        if (const size_t at = line.find(mark); at != line.npos)
            line.replace(at, mark.size(), text);
    return line;
}

std::vector<std::u16string> Filled(const Json& lines, const ScriptedRun& run) {
    std::vector<std::u16string> filled;
    for (const Json& line : lines)
        filled.push_back(Filled(Utf16FromUtf8(line.get<std::string>()), run));
    return filled;
}

void RunScenario(const Json& scenario, const Json& models) {
    const std::string earlier = "an earlier scene file";
    const Json& model = scenario["model"];
    Json script = model.is_string() ? models.at(model.get<std::string>()) : model;
    const Json changes = scenario.value("changes", Json());
    for (const auto& [pointer, value] : changes.items())
        script[Json::json_pointer(pointer)] = value;
    Expand(script);
    ScriptedRun run;
    WriteBytes(run.SceneFile, earlier);
    WriteBytes(run.LogFile, std::string(5000, 'x'));
    RunScript(run, script);
    const int code = scenario.value("exit", 0);
    EXPECT_EQ(run.Result.ExitCode, code) << run.Result.Output;
    if (scenario.contains("log"))
        ExpectOutcome(run, code, Filled(scenario["log"], run));
    if (code != 0) {
        EXPECT_EQ(ReadBytes(run.SceneFile), earlier);
    } else {
        const StoredScene scene = SceneOf(run);
        EXPECT_EQ(Shape(scene), scenario.value("scene", ""));
        if (scenario.contains("meshes")) {
            EXPECT_EQ(Json(Meshes(scene)), scenario["meshes"]);
        }
    }
    if (scenario.contains("files")) {
        Json files = Json::object();
        for (const std::string& file : FilesBelow(run.SceneFile.parent_path()))
            if (file != run.SceneFile.filename())
                files[file] = ReadBytes(run.SceneFile.parent_path() / file);
        EXPECT_EQ(files, scenario["files"]);
    }
    if (scenario.contains("calls")) {
        std::vector<std::string> calls;
        for (const std::u16string& call : Filled(scenario["calls"], run))
            calls.push_back(Utf8FromUtf16(call));
        EXPECT_EQ(Json(run.Calls), Json(calls));
    }
}

} // namespace

ScriptedRun::ScriptedRun() {
    ModelFile = Folder.Path / "in" / "house.skp";
    SceneFile = Folder.Path / "out" / "house.bin";
    LogFile = Folder.Path / "logs" / "run.log";
    Source = PathText(ModelFile);
    Destination = PathText(SceneFile);
    Log = PathText(LogFile);
}

Json TestData(const std::string& path) {
    return Json::parse(ReadBytes(fs::path(ORVANE_TESTS_DIR) / path));
}

void RunScript(ScriptedRun& run, const Json& script) {
    const TempFolder aside;
    const fs::path record = aside.Path / "calls";
    auto environment = run.Environment;
    environment.emplace_back("ORVANE_SCRIPTED_RECORD", record.string());
    WriteBytes(run.ModelFile, script.dump());
    run.Result = RunProgram({.Program = ORVANE_PROGRAM,
                             .Arguments = {run.Source, run.Destination, run.RelativeDirectory, run.Log},
                             .WorkingDirectory = run.Folder.Path,
                             .LibraryDirectory = ORVANE_SCRIPTED_LIBRARY_DIR,
                             .Environment = environment,
                             .MemoryLimit = run.MemoryLimit,
                             .Unprivileged = run.Unprivileged});
    std::erase(run.Result.Errors, '\r'); // The system's line ends.
    run.Calls.clear();
    ReadCalls(run, record);
    // A sanitizer first reports the memory request that it has refused.
    if (run.MemoryLimit == 0) {
        EXPECT_EQ(run.Result.Errors, run.ExpectedErrors);
    } else {
        EXPECT_TRUE(run.Result.Errors.ends_with(run.ExpectedErrors)) << run.Result.Errors;
    }
    if (run.Result.ExitCode == DeadExitCode)
        return;
    ASSERT_GE(run.Calls.size(), 3u) << "exit code " << run.Result.ExitCode;
    EXPECT_EQ(run.Calls.front(), "SUInitialize");
    EXPECT_EQ(run.Calls[run.Calls.size() - 2].substr(0, 14), "SUModelRelease");
    EXPECT_EQ(run.Calls.back(), "SUTerminate");
}

void RunScenarios(const std::string& path) {
    const Json file = TestData(path);
    for (const Json& scenario : file["scenarios"]) {
        SCOPED_TRACE(scenario["name"]);
        RunScenario(scenario, file["models"]);
    }
}

void ExpectOutcome(const ScriptedRun& run, int exitCode, const std::vector<std::u16string>& lines) {
    std::vector<std::u16string> filled = lines;
    for (std::u16string& line : filled)
        line = Filled(line, run);
    EXPECT_EQ(run.Result.ExitCode, exitCode);
    EXPECT_EQ(run.Result.Output, OutputBytes(filled));
    if (fs::is_regular_file(run.LogFile)) {
        EXPECT_TRUE(ReadBytes(run.LogFile) == LogBytes(OutputBytes(filled))) << "another log";
    } else {
        ADD_FAILURE() << "no log";
    }
}

std::string OutputBytes(const std::vector<std::u16string>& lines) {
    std::string bytes;
    for (const std::u16string& line : lines)
        bytes += Utf8FromUtf16(line + u"\r\n");
    return bytes;
}

StoredScene SceneOf(const ScriptedRun& run) {
    StoredScene scene;
    const auto fault = ReadStoredSceneFile(run.SceneFile.u16string(), scene);
    EXPECT_FALSE(fault) << Utf8FromUtf16(FaultText(fault.value_or(SceneFault())));
    for (const StoredNode& node : scene.Nodes)
        for (size_t i = 0; i < node.Matrix.size(); ++i)
            EXPECT_EQ(node.Matrix[i], i % 5 == 0 ? 1 : 0);
    return scene;
}

StoredScene Convert(const Json& script) {
    ScriptedRun run;
    RunScript(run, script);
    EXPECT_EQ(run.Result.ExitCode, 0) << run.Result.Output;
    return run.Result.ExitCode == 0 ? SceneOf(run) : StoredScene();
}

std::string Shape(const StoredScene& scene) {
    std::string text;
    if (!scene.Nodes.empty())
        AppendNode(scene, scene.Nodes[0], text);
    return text;
}

std::vector<std::string> Meshes(const StoredScene& scene) {
    std::vector<std::string> lines;
    for (const StoredNode& node : scene.Nodes)
        for (const StoredMesh& mesh : node.Meshes) {
            for (const StoredVertex& vertex : mesh.Vertices) {
                std::ostringstream line;
                const auto write = [&](float number, const char* end) {
                    // The sign of a NaN is not defined.
                    line << (std::isnan(number) ? std::fabs(number) : number) << end;
                };
                const auto& [x, y, z] = vertex.Position;
                const auto& [nx, ny, nz] = vertex.Normal;
                write(x, " ");
                write(y, " ");
                write(z, " / ");
                write(nx, " ");
                write(ny, " ");
                write(nz, " / ");
                write(vertex.U, " ");
                write(vertex.V, "");
                lines.push_back(line.str());
            }
            lines.push_back(Json(mesh.Indices).dump());
        }
    return lines;
}

Json Triangle(double x, Json front, Json back) {
    const Json stq = {{0, 0, 1}, {1, 0, 1}, {2, 0, 1}};
    return {{"vertices", {{x, 0, 0}, {x + 1, 0, 0}, {x, 1, 0}}},
            {"frontStq", stq},
            {"backStq", stq},
            {"indices", {0, 1, 2}},
            {"front", std::move(front)},
            {"back", std::move(back)}};
}

Json List(const std::vector<Json>& elements) {
    return elements;
}

Json Faces(const std::vector<Json>& faces) {
    return {{"entities", {{"faces", List(faces)}}}};
}

Json Faults(const std::string& operation, uint64_t call, const std::string& kind, uint64_t value) {
    Json fault = {{"operation", operation}, {"kind", kind}, {"value", value}};
    if (call != 0)
        fault["call"] = call;
    return List({fault});
}
