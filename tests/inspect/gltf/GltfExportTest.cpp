// The binary glTF that scene-inspect writes: compared with an expected text, and checked by the format's
// official validator.
#include "inspect/gltf/GltfExport.h"
#include "inspect/stored/Wording.h"
#include "platform/Files.h"

#include "inspect/InspectTesting.h"

#include <bit>
#include <map>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::json;
namespace fs = std::filesystem;

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

// In the precision of a float.
std::string NumberText(double number) {
    return Utf8FromUtf16(Number(static_cast<float>(number)));
}

// The elements of an accessor, one in brackets after the other.
std::string ElementsText(const Gltf& gltf, const Json& accessor) {
    const std::map<std::string, size_t> widths = {{"SCALAR", 1}, {"VEC2", 2}, {"VEC3", 3}};
    const size_t width = widths.at(accessor["type"]);
    const bool isFloat = accessor["componentType"] == 5126;
    const Json& view = gltf.Root["bufferViews"][accessor["bufferView"].get<size_t>()];
    const size_t start = view.value("byteOffset", size_t{0}) + accessor.value("byteOffset", size_t{0});
    std::string text;
    for (size_t element = 0; element < accessor["count"].get<size_t>(); ++element) {
        const size_t at = start + element * view.value("byteStride", 4 * width);
        for (size_t number = 0; number < width; ++number) {
            const uint32_t word = WordAt(gltf.Buffer, at + 4 * number);
            text += number == 0 ? " (" : " ";
            text += isFloat ? NumberText(static_cast<double>(std::bit_cast<float>(word)))
                            : std::to_string(word);
        }
        text += ")";
    }
    return text;
}

// Each value of the JSON with its place, then the elements of each accessor.
std::string TextOf(const Gltf& gltf) {
    std::string text;
    const Json values = gltf.Root.flatten();
    for (const auto& [place, value] : values.items()) {
        text += place + " " + (value.is_number() ? NumberText(value) : value.dump()) + "\n";
    }
    for (const Json& accessor : gltf.Root["accessors"]) {
        text += accessor["type"].get<std::string>() + ElementsText(gltf, accessor) + "\n";
    }
    return text;
}

std::string Export(const StoredScene& scene, const std::u16string& directory) {
    TextureShelf shelf;
    shelf.Directory = directory;
    return ExportGltf(scene, shelf).Bytes;
}

TEST(InspectGltf, WritesTheExpectedFile) {
    const TempFolder folder;
    WriteBytes(folder.Path / "clear.png", ClearPng);
    TextureShelf shelf;
    shelf.Directory = PathText(folder.Path) + u"/";
    const GltfFile file = ExportGltf(OddScene(), shelf);
    EXPECT_EQ(file.TrianglesLeftOut, 4U);
    ASSERT_EQ(shelf.Warnings.size(), 1U);
    EXPECT_NE(shelf.Warnings[0].find(u"missing.png"), std::u16string::npos);
    const Gltf gltf = Parse(file.Bytes);
    EXPECT_EQ(TextOf(gltf), ExpectedText("odd.glb.txt"));
    const Json& picture =
        gltf.Root["bufferViews"][gltf.Root["images"].at(0)["bufferView"].get<size_t>()];
    EXPECT_EQ(gltf.Buffer.substr(picture["byteOffset"], ClearPng.size()), ClearPng);
}

TEST(InspectGltf, FindsTexturesBesideTheFileOrInADirectory) {
    EXPECT_EQ(LastComponent(u"C:brick 1:2.png"), u"brick 1:2.png");
    EXPECT_EQ(LastComponent(u"1:2.png"), u"1:2.png");
    const TempFolder folder;
    WriteBytes(folder.Path / "maps" / "clear.png", ClearPng);
    WriteBytes(folder.Path / "broken.png", ClearPng.substr(0, 40));
    WriteScene(folder.Path / "a.bin", SceneWith({TriangleMesh(u"", u"C:\\x\\clear.png", {1, 1, 1, 1}),
                                                 TriangleMesh(u"", u"broken.png", {1, 1, 1, 1})}));
    const auto images = [&](std::u16string_view arguments, const char* warning, bool isExpected) {
        const ProgramResult result = Inspect(folder, arguments);
        EXPECT_EQ(result.ExitCode, 0);
        EXPECT_EQ(result.Errors.find(warning) != std::string::npos, isExpected) << result.Errors;
        return Parse(ReadBytes(folder.Path / "a.glb")).Root.value("images", Json()).size();
    };
    EXPECT_EQ(images(u"a.bin --glb a.glb", "\"clear.png\" can't be read", true), 0U);
    EXPECT_EQ(images(u"a.bin --glb a.glb", "\"broken.png\" can't be decoded", true), 0U);
    EXPECT_EQ(images(u"a.bin --glb a.glb --textures maps", "clear.png", false), 1U);
}

#ifdef ORVANE_PROVIDER_LIBRARY_DIR

// The example house, converted in the folder.
StoredScene ConvertHouse(const TempFolder& folder) {
    ProgramCall call;
    call.Program = ORVANE_PROGRAM;
    call.Arguments = {PathText(fs::path(ORVANE_EXAMPLES_DIR) / "house" / "house.json"),
                      PathText(folder.Path / "house.bin"), u"maps", PathText(folder.Path / "log")};
    EXPECT_EQ(RunProgram(call).ExitCode, 0);
    StoredScene scene;
    EXPECT_FALSE(ReadStoredSceneFile(PathText(folder.Path / "house.bin"), scene));
    return scene;
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
    const StoredScene house = ConvertHouse(folder);
    const std::u16string textures = PathText(folder.Path) + u"/";
    WriteBytes(folder.Path / "clear.png", ClearPng);
    EXPECT_EQ(Parse(Export(house, textures)).Root["images"].size(), 8U);
    const fs::path validator = InstalledValidator();
    if (validator.empty()) {
        GTEST_SKIP() << "the npm package gltf-validator can't be installed";
    }
    const std::u16string script = u"const fs = require('fs');"
                                  u"require(process.argv[1] + '/node_modules/gltf-validator')"
                                  u".validateBytes(new Uint8Array(fs.readFileSync(process.argv[2])))"
                                  u".then(report => console.log(JSON.stringify(report.issues)));";
    for (const StoredScene& scene : {house, OddScene(), SceneWith({})}) {
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
