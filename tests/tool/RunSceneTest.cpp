// Small models and the scenes that they give: materials, sides of faces, winding, images,
// transformations and the bytes of the file.
#include "support/ScriptedRun.h"

#include <gtest/gtest.h>

// Materials, textures, colours, sides, corners, layers, transformations and images.
TEST(RunScene, Scenarios) {
    RunScenarios("tool/scenes.json");
}

TEST(RunScene, TheFileOfOneTriangleByteForByte) {
    Json script = Faces({Triangle()});
    script["faults"] = Faults("SUMeshHelperGetNumTriangles", 2, "fail");
    ScriptedRun run;
    RunScript(run, script);
    ASSERT_EQ(run.Result.ExitCode, 0);
    EXPECT_TRUE(ReadBytes(run.SceneFile) ==
                ReadBytes(std::filesystem::path(ORVANE_TESTS_DIR) / "tool" / "triangle.bin"));
}

TEST(RunScene, AMeshEndsAt99999Vertices) {
    constexpr size_t triangles = 33334;
    Json face = {{"indices", Json::array()}};
    for (size_t i = 0; i < 3 * triangles; ++i) {
        face["indices"].push_back(i);
        face["vertices"].push_back({i / 3, i % 3 % 2, i % 3 / 2});
    }
    Json script = Faces({face});
    script["faults"] = Faults("SUMeshHelperGetNumTriangles", 2, "fail");
    const StoredScene scene = Convert(script);
    ASSERT_EQ(Shape(scene), "Default:33333 Default:1");
    EXPECT_EQ(scene.Nodes[0].Meshes[0].Vertices.size(), 99999u);
    EXPECT_EQ(scene.Nodes[0].Meshes[1].Vertices.size(), 3u);
    EXPECT_EQ(scene.Nodes[0].Meshes[1].Indices, (std::vector<uint32_t>{0, 1, 2}));
}
