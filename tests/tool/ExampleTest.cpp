// The program with the open library on the example house and on unusable documents.
#include "inspect/stored/SceneReader.h"
#include "platform/Platform.h"
#include "support/Files.h"
#include "support/RunProgram.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <map>
#include <set>

namespace fs = std::filesystem;

namespace {

const fs::path House = fs::path(ORVANE_EXAMPLES_DIR) / "house";

ProgramResult RunOrvane(const TempFolder& folder, const fs::path& model) {
    return RunProgram({.Program = ORVANE_PROGRAM,
                       .Arguments = {model.u16string(), u"out/house.bin", u"maps", u"out/run.log"},
                       .WorkingDirectory = folder.Path,
                       .LibraryDirectory = {},
                       .Environment = {}});
}

// Whether the winding of a triangle agrees with its first normal: above 0 if so.
double Agreement(const StoredMesh& mesh, size_t first) {
    const auto corner = [&](size_t i) -> const StoredVertex& {
        return mesh.Vertices[mesh.Indices[first + i]];
    };
    double edges[2][3];
    for (size_t axis = 0; axis < 3; ++axis) {
        edges[0][axis] = static_cast<double>(corner(1).Position[axis]) -
                         static_cast<double>(corner(0).Position[axis]);
        edges[1][axis] = static_cast<double>(corner(2).Position[axis]) -
                         static_cast<double>(corner(0).Position[axis]);
    }
    double sum = 0;
    for (size_t axis = 0; axis < 3; ++axis) {
        const size_t next = (axis + 1) % 3;
        const size_t last = (axis + 2) % 3;
        sum += (edges[0][next] * edges[1][last] - edges[0][last] * edges[1][next]) *
               static_cast<double>(corner(0).Normal[axis]);
    }
    return sum;
}

} // namespace

TEST(Example, TheHouseMatchesItsDocument) {
    const TempFolder folder;
    const ProgramResult result = RunOrvane(folder, House / "house.json");
    ASSERT_EQ(result.ExitCode, 0) << result.Output << result.Errors;
    EXPECT_EQ(result.Errors, "");
    StoredScene scene;
    const auto fault = ReadStoredSceneFile((folder.Path / "out" / "house.bin").u16string(), scene);
    ASSERT_FALSE(fault.has_value()) << Utf8FromUtf16(FaultText(*fault));

    std::set<std::string> names;
    std::map<std::u16string, size_t> triangles;
    std::map<std::u16string, std::u16string> textures;
    size_t facingAway = 0;
    float low = 1e9f;
    float high = -1e9f;
    float sides[2] = {1e9f, -1e9f};
    for (const StoredNode& node : scene.Nodes) {
        names.insert(node.Name);
        for (const StoredMesh& mesh : node.Meshes) {
            triangles[mesh.Material.Name] += mesh.Indices.size() / 3;
            textures[mesh.Material.Name] = mesh.Material.TexturePath;
            for (size_t i = 0; i < mesh.Indices.size(); i += 3) {
                facingAway += Agreement(mesh, i) < -1e-6 ? 1 : 0;
            }
            for (const StoredVertex& vertex : mesh.Vertices) {
                low = std::min(low, vertex.Position[1]);
                high = std::max(high, vertex.Position[1]);
                if (mesh.Material.Name == u"wing brick") {
                    sides[0] = std::min(sides[0], vertex.Position[0]);
                    sides[1] = std::max(sides[1], vertex.Position[0]);
                }
            }
        }
    }
    // Also where one wing and one window are mirrored.
    EXPECT_EQ(facingAway, 0u);
    EXPECT_NEAR(low, 0, 1e-5);
    EXPECT_NEAR(high, 6.76, 1e-5); // from the bottom of the garden to the top of the chimney
    EXPECT_NEAR(sides[0], -7, 1e-5);
    EXPECT_NEAR(sides[1], 7, 1e-5);

    // The hidden letter box is in the scene, the furniture on the invisible layer is not.
    EXPECT_TRUE(names.contains("Letter box"));
    EXPECT_FALSE(names.contains("Table and bench"));
    EXPECT_EQ(triangles[u"red paint"], 24u); // one block of the letter box, both sides
#ifndef _WIN32                               // the code page of Windows depends on the machine
    EXPECT_TRUE(names.contains("K\xFC"
                               "che"));
    EXPECT_TRUE(names.contains("Dach ??"));
#endif

    // Two materials share the picture of the bricks; the material of the image has no name.
    EXPECT_EQ(textures[u"brick"], u"maps\\house_Texture1.png");
    EXPECT_EQ(textures[u"wing brick"], u"maps\\house_Texture1.png");
    EXPECT_EQ(textures[u""], u"maps\\house_Texture8.png");
    EXPECT_EQ(triangles[u""], 4u);
    EXPECT_EQ(textures[u"glass"], u"");

    // PNG files are copied, other pictures converted to PNG.
    const auto picture = [&](int number) {
        return ReadBytes(folder.Path / "out" / ("house_Texture" + std::to_string(number) + ".png"));
    };
    EXPECT_EQ(picture(1), ReadBytes(House / "brick.png"));
    for (int number = 1; number <= 8; ++number) {
        EXPECT_EQ(picture(number).substr(0, 4), "\x89PNG") << number;
    }
}

TEST(Example, AnInvalidDocumentIsReportedOnce) {
    const TempFolder folder;
    const fs::path model = folder.Path / "broken.json";
    WriteBytes(model, R"({"orvaneModel": 1, "materials": [{"name": "a", "picture": "none.png"}]})");
    const ProgramResult result = RunOrvane(folder, model);
    EXPECT_EQ(result.ExitCode, 10);
    const std::string text = Utf8FromUtf16(model.u16string());
    EXPECT_EQ(result.Output, "Importing " + text + " to out/house.bin\r\nError opening " + text +
                                 "\r\nError importing " + text + " (rc=10)\r\n");
    EXPECT_NE(result.Errors.find("broken.json"), std::string::npos) << result.Errors;
    EXPECT_NE(result.Errors.find("materials[0].picture"), std::string::npos) << result.Errors;
    EXPECT_EQ(std::ranges::count(result.Errors, '\n'), 1);
    EXPECT_FALSE(fs::exists(folder.Path / "out" / "house.bin"));
}

TEST(Example, AModelWithoutVisibleGeometryEndsWith13) {
    const TempFolder folder;
    const fs::path model = folder.Path / "empty.json";
    WriteBytes(model, R"({"orvaneModel": 1})");
    EXPECT_EQ(RunOrvane(folder, model).ExitCode, 13);
}

#ifdef _WIN32
TEST(Example, DriveLettersWorkAndDirectoriesAreCreated) {
    // In the root of a drive, which belongs to the build under Wine.
    for (const char* made : {"C:\\in", "C:\\scenes", "C:\\logs"}) {
        ASSERT_FALSE(fs::exists(made)) << made;
    }
    fs::copy(House, "C:\\in");
    fs::rename("C:\\in\\house.json", "C:\\in\\house.skp");
    const ProgramResult result = RunProgram(
        {.Program = ORVANE_PROGRAM,
         .Arguments = {u"C:\\in\\house.skp", u"C:\\scenes\\house.bin", u"maps", u"C:\\logs\\run.log"},
         .WorkingDirectory = {},
         .LibraryDirectory = {},
         .Environment = {}});
    EXPECT_EQ(result.ExitCode, 0);
    EXPECT_TRUE(result.Output.starts_with("Importing C:\\in\\house.skp to C:\\scenes\\house.bin\r\n"
                                          "Writing: C:\\scenes\\house_Texture1.png\r\n"));
    EXPECT_TRUE(
        result.Output.ends_with("\r\nSuccess. C:\\in\\house.skp imported to C:\\scenes\\house.bin\r\n"));
    StoredScene scene;
    EXPECT_FALSE(ReadStoredSceneFile(u"C:\\scenes\\house.bin", scene).has_value());
    EXPECT_EQ(ReadBytes("C:\\logs\\run.log").size(), 2 + 2 * result.Output.size()); // all of it ASCII
    EXPECT_TRUE(fs::exists("C:\\scenes\\house_Texture8.png"));
    for (const char* made : {"C:\\in", "C:\\scenes", "C:\\logs"}) {
        fs::remove_all(made);
    }
}
#endif
