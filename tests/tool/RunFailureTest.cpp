// What a scene loses when a library call fails, does nothing or returns wrong values, and what it keeps.
#include "support/ScriptedRun.h"

#include <gtest/gtest.h>
#include <map>

namespace {

Json Entities(const std::vector<Json>& faces) {
    return Faces(faces)["entities"];
}

// A model with two elements of every kind and a third one on an invisible layer, null handles in its
// lists, and one material listed twice.
Json Reference() {
    return TestData("tool/reference.json");
}

const std::string Root = "Default:1 brick@1:2 red:1 @2:4 @3:4";
const std::string Groups = " ['Wall' red:2] ['Roof' Default:2]";
const std::string Instances = " [glass(1 2 3 127):2] [Default:2]";
const std::string Whole = Root + Groups + Instances;

constexpr uint64_t AllCalls = 0;
constexpr uint64_t TooMany = uint64_t(1) << 31;

// The scene file of a successful script; scripts without faults run once.
std::string SceneBytes(const Json& script) {
    static std::map<std::string, std::string> known;
    if (known.contains(script.dump()))
        return known[script.dump()];
    ScriptedRun run;
    RunScript(run, script);
    EXPECT_EQ(run.Result.ExitCode, 0) << run.Result.Output;
    std::string bytes = ReadBytes(run.SceneFile);
    if (!script.contains("faults"))
        known[script.dump()] = bytes;
    return bytes;
}

// Copies of the reference model, one with each fault of a row.
std::vector<Json> Faulty(const Json& row) {
    Json faults = Json::array();
    for (const Json& kind : row.value("kinds", Json::array()))
        faults.push_back({{"kind", kind}});
    for (const Json& count : row.value("counts", Json::array()))
        faults.push_back({{"kind", "count"}, {"value", count}});
#ifdef _WIN32
    // The code is the same on all systems, and runs take long under Wine.
    faults.erase(faults.begin() + 1, faults.end());
#endif
    std::vector<Json> scripts;
    for (Json& fault : faults) {
        fault["operation"] = row["operation"];
        if (row.contains("call"))
            fault["call"] = row["call"];
        scripts.push_back(Reference());
        scripts.back()["faults"] = {fault};
    }
    return scripts;
}

} // namespace

TEST(RunFailure, TheReferenceModelIsComplete) {
    EXPECT_EQ(Shape(Convert(Reference())), Whole);
}

// Each row of the table: an operation, the call, all calls by default, kinds of fault and wrong counts,
// which all have the same effect: that of the changes to the reference model under "lost", or, without
// these, "shape", or the loss of the front of the first face, which no script without a fault can do.
TEST(RunFailure, EachFaultLosesItsElementOnly) {
    const std::string withoutFront = "Default:1 brick@1:1 red:1 @2:4 @3:4" + Groups + Instances;
    const std::string whole = SceneBytes(Reference());
    for (const Json& row : TestData("tool/failures.json")) {
        const Json lost = row.value("lost", Json());
        Json without = Reference();
        for (const auto& [pointer, value] : lost.items())
            without[Json::json_pointer(pointer)] = value;
        const std::string scene = SceneBytes(without);
        EXPECT_EQ(scene == whole, lost.empty()) << row;
        for (const Json& script : Faulty(row)) {
            SCOPED_TRACE(script["faults"]);
            if (lost.is_null())
                EXPECT_EQ(Shape(Convert(script)), row.value("shape", withoutFront));
            else
                EXPECT_TRUE(SceneBytes(script) == scene);
        }
    }
}

// Texts without a closing NUL fill their buffer; the program must terminate them.
TEST(RunFailure, AnUnterminatedTextIsCutAtTheLimit) {
    Json script = Reference();
    script["faults"] = Faults("SUStringGetUTF16", AllCalls, "lie");
    const StoredScene scene = Convert(script);
    ASSERT_GT(scene.Nodes.size(), 2u);
    const std::u16string text(260, u'x');
    EXPECT_EQ(scene.Nodes[0].Meshes[1].Material.Name, text);
    EXPECT_EQ(scene.Nodes[2].Name, std::string(255, 'x'));
}

// An index out of range: the side has no polygon, and its picture isn't written.
TEST(RunFailure, AnIndexOutOfRangeLosesTheSide) {
    const std::string withoutBroken = "Default:2 @2:4 @3:4" + Groups + Instances;
    for (const uint64_t index :
         {uint64_t(3), uint64_t(0xFFFFFFFF), uint64_t(0x80000000), ~uint64_t(0)}) {
        Json broken = Triangle(0, 0);
        broken["indices"] = {0, 1, 2, 0, 1, index};
        Json script = Reference();
        script["entities"]["faces"] = List({broken, Triangle(2)});
        ScriptedRun run;
        RunScript(run, script);
        EXPECT_EQ(Shape(SceneOf(run)), withoutBroken) << index;
        EXPECT_FALSE(std::filesystem::exists(run.Folder.Path / "out" / "house_Texture1.png"));
    }
    Json wrapped = Triangle();
    wrapped["indices"] = {0, 1, (uint64_t(7) << 32) + 2};
    EXPECT_EQ(Shape(Convert(Faces({wrapped}))), "Default:2");
}

// Non-finite numbers reach the scene file; both paths of welding must accept them.
TEST(RunFailure, NonFiniteNumbersDoNotEndTheRun) {
    for (const int triangles : {4, 200}) {
        Json list = Json::array();
        for (int i = 0; i < triangles; ++i)
            list.push_back(Triangle(i));
        list[0]["vertices"] = {{"nan", 0, 0}, {1, "nan", 0}, {0, 1, "inf"}};
        list[1]["normals"] = {{"nan", 0, 0}, {1, "inf", 0}, {0, 1, "inf"}};
        list[2]["frontStq"] = {{1, 1, 0}, {0, 0, 0}, {"inf", 0, 1}};
        list[3]["vertices"] = {{1e300, 0, 0}, {1, -1e300, 0}, {3e38, 3e38, 3e38}};
        const StoredScene scene = Convert(Faces(list));
        EXPECT_EQ(Shape(scene), "Default:" + std::to_string(2 * triangles));
    }
    for (const char* operation :
         {"SUGroupGetTransform", "SUComponentInstanceGetTransform", "SUImageGetTransform"}) {
        Json script = Reference();
        script["faults"] = Faults(operation, AllCalls, "silent");
        EXPECT_EQ(Shape(Convert(script)), Whole) << operation;
    }
}

// An element whose list contains itself is left out; everything else remains.
TEST(RunFailure, AListThatContainsItselfIsLeftOut) {
    const Json instance = {{"definition", 0}};
    Json script = Faces({Triangle()});
    script["definitions"] = List({Entities({Triangle()}), Entities({Triangle()})});
    script["definitions"][0]["instances"] = List({instance, instance, {{"definition", 1}}});
    script["definitions"][1]["instances"] = List({instance});
    script["entities"]["instances"] = List({instance, instance});
    ScriptedRun run;
    run.ExpectedErrors = "orvane: groups and component instances skipped, nested in themselves: 6\n";
    RunScript(run, script);
    EXPECT_EQ(Shape(SceneOf(run)), "Default:2 [Default:2 [Default:2]] [Default:2 [Default:2]]");
}

TEST(RunFailure, ListsAreReadDownToTheLimit) {
    constexpr size_t limit = 1024; // Nested lists, including the model's own.
    Json script = Faces({Triangle()});
    for (size_t level = 2; level <= limit + 1; ++level) {
        Json list = Entities({Triangle()});
        list["instances"] = List({{{"definition", level - 1}}});
        script["definitions"].push_back(list);
    }
    script["definitions"].back().erase("instances");
    script["entities"]["instances"] = List({{{"definition", 0}}});
    ScriptedRun run;
    run.ExpectedErrors =
        "orvane: groups and component instances skipped, nested more than 1024 levels deep: 1\n";
    RunScript(run, script);
    EXPECT_EQ(SceneOf(run).Nodes.size(), 2 * limit - 1);
}

// Counts that are allowed but exceed the memory: this is not a failed call.
TEST(RunFailure, OutOfMemoryEndsTheRunBeforeTheSceneFile) {
#ifdef _WIN32
    GTEST_SKIP() << "no limit on memory";
#endif
    for (const char* operation : {"SUEntitiesGetNumFaces", "SUEntitiesGetNumInstances",
                                  "SUModelGetNumAllMaterials", "SUMeshHelperGetNumVertices"}) {
        Json script = Reference();
        script["faults"] = Faults(operation, 1, "count", TooMany - 1);
        ScriptedRun run;
        run.MemoryLimit = uint64_t(4) << 30;
        run.ExpectedErrors = "orvane: out of memory\n";
        WriteBytes(run.SceneFile, "an earlier scene file");
        RunScript(run, script);
        EXPECT_EQ(run.Result.ExitCode, 20) << operation;
        EXPECT_EQ(ReadBytes(run.SceneFile), "an earlier scene file");
    }
}
