// What a scene loses when a library call fails, does nothing or returns wrong values, and what it keeps.
#include "support/ScriptedRun.h"

#include <gtest/gtest.h>
#include <map>

namespace {

constexpr uint64_t AllCalls = 0;

Json Entities(const std::vector<Json>& faces) {
    return Faces(faces)["entities"];
}

// A model with two elements of every kind and a third one on an invisible layer, null handles in its
// lists, and one material listed twice.
Json Reference() {
    const Json hidden = 0;
    Json onLayer = Triangle(9);
    onLayer["layer"] = hidden;
    Json script;
    script["materials"] =
        List({{{"name", "brick"}, {"texture", {{"file", "brick.jpg"}, {"sScale", 2}}}},
              {{"name", "red"}},
              {{"name", "glass"}, {"color", {1, 2, 3, 4}}, {"useOpacity", true}, {"opacity", 0.5}}});
    script["materialList"] = {0, nullptr, 1, 1, 2};
    script["layers"] = List({{{"visible", false}}});
    script["definitions"] = List({Entities({Triangle()})});
    Json& root = script["entities"];
    root["faces"] = List({Triangle(0, 0), nullptr, Triangle(2, nullptr, 1), onLayer});
    root["images"] = List(
        {{{"file", "a.png"}}, nullptr, {{"file", "b.png"}}, {{"file", "c.png"}, {"layer", hidden}}});
    root["groups"] =
        List({{{"name", "Wall"}, {"material", 1}, {"entities", Entities({Triangle()})}},
              nullptr,
              {{"name", "Roof"}, {"entities", Entities({Triangle()})}},
              {{"name", "Attic"}, {"layer", hidden}, {"entities", Entities({Triangle()})}}});
    root["instances"] = List({{{"definition", 0}, {"material", 2}},
                              nullptr,
                              {{"definition", 0}},
                              {{"definition", 0}, {"layer", hidden}}});
    return script;
}

const std::string Root = "Default:1 brick@1:2 red:1 @2:4 @3:4";
const std::string Groups = " ['Wall' red:2] ['Roof' Default:2]";
const std::string Instances = " [glass:2] [Default:2]";
const std::string Whole = Root + Groups + Instances;

constexpr uint64_t TooMany = uint64_t(1) << 31;
constexpr uint64_t FarTooMany = uint64_t(1) << 63;
constexpr uint64_t AsGoodAsNone = uint64_t(1) << 32; // if truncated to 32 bits
constexpr uint64_t MostOfAll = ~uint64_t(0);

using Kinds = std::vector<const char*>;
const Kinds Any = {"fail", "fail late", "silent"};
const Kinds AnyOrNull = {"fail", "fail late", "silent", "null"};
const Kinds Failing = {"fail", "fail late"};

// The operation, the call, the kinds of fault, which all have the same effect, and the changes to the
// reference model that give the same scene without a fault: JSON pointers and values.
struct Row {
    const char* Operation;
    uint64_t Call;
    Kinds Faults;
    std::vector<std::pair<const char*, Json>> Lost;
    std::vector<uint64_t> Counts; // Wrong counts with the same effect.
};

const Json Nothing;

const Row Rows[] = {
    {"SUModelGetNumAllMaterials",
     1,
     Any,
     {{"/materialList", Json::array()}},
     {0, 6, TooMany, FarTooMany, AsGoodAsNone, MostOfAll}},
    {"SUModelGetAllMaterials", 1, Any, {{"/materialList", Json::array()}}, {0, 4, 6}},
    {"SUModelRelease", 1, Any, {}, {}},

    {"SUEntitiesGetNumFaces",
     1,
     Any,
     {{"/entities/faces", Nothing}},
     {0, TooMany, FarTooMany, AsGoodAsNone, MostOfAll}},
    {"SUEntitiesGetNumFaces", 1, {}, {}, {5}}, // One more null handle.
    {"SUEntitiesGetFaces", 1, Any, {{"/entities/faces", Nothing}}, {}},
    {"SUEntitiesGetFaces", 1, {}, {}, {0, 1, 99}}, // The returned count has no effect here.
    {"SUEntitiesGetNumGroups",
     1,
     Any,
     {{"/entities/groups", Nothing}},
     {0, 5, TooMany, FarTooMany, AsGoodAsNone, MostOfAll}},
    {"SUEntitiesGetGroups", 1, Any, {{"/entities/groups", Nothing}}, {0, 3, 5}},
    // The calls for the two groups come first.
    {"SUEntitiesGetNumInstances",
     3,
     Any,
     {{"/entities/instances", Nothing}},
     {0, 5, TooMany, FarTooMany, AsGoodAsNone, MostOfAll}},
    {"SUEntitiesGetInstances", 1, Any, {{"/entities/instances", Nothing}}, {0, 3, 5}},
    {"SUEntitiesGetNumImages",
     1,
     Any,
     {{"/entities/images", Nothing}},
     {0, 5, TooMany, FarTooMany, AsGoodAsNone, MostOfAll}},
    {"SUEntitiesGetImages", 1, Any, {{"/entities/images", Nothing}}, {0, 3, 5}},

    {"SUFaceGetFrontMaterial", 1, AnyOrNull, {{"/entities/faces/0/front", Nothing}}, {}},
    {"SUFaceGetBackMaterial", 2, AnyOrNull, {{"/entities/faces/2/back", Nothing}}, {}},
    {"SUFaceGetPlane", AllCalls, Any, {}, {}},
    {"SUFaceGetUVHelper", 1, AnyOrNull, {{"/entities/faces/0", Nothing}}, {}},
    {"SUMeshHelperCreateWithUVHelper", 1, AnyOrNull, {{"/entities/faces/0", Nothing}}, {}},
    {"SUUVHelperRelease", AllCalls, Any, {}, {}},

    // Glass is the fifth in the list of materials.
    {"SUMaterialGetName", 1, Any, {{"/materials/0/name", ""}}, {}},
    {"SUMaterialGetColor", AllCalls, Failing, {{"/materials/2/color", Nothing}}, {}},
    {"SUMaterialGetColor", 5, {"silent"}, {{"/materials/2/color", {0, 0, 0, 0}}}, {}},
    {"SUMaterialGetUseOpacity", 5, Any, {{"/materials/2/useOpacity", false}}, {}},
    {"SUMaterialGetOpacity", 1, {"fail", "silent"}, {{"/materials/2/opacity", 0}}, {}},
    {"SUMaterialGetType", AllCalls, {"fail", "silent"}, {{"/materials/0/type", 0}}, {}},
    {"SUMaterialGetType", AllCalls, {"fail late"}, {}, {}},
    {"SUMaterialGetTexture", AllCalls, Failing, {{"/materials/0/texture", Nothing}}, {}},
    {"SUMaterialGetTexture", 1, {"silent", "null"}, {}, {}}, // Textured, with unknown file name.
    {"SUTextureGetFileName", 1, Any, {}, {}},
    {"SUTextureGetDimensions", AllCalls, Any, {{"/materials/0/texture/sScale", 1}}, {}},

    {"SUImageGetFileName", 1, Any, {{"/entities/images/0/file", ""}}, {}},
    // The list ends before an image whose transformation fails.
    {"SUImageGetTransform", 1, Failing, {{"/entities/images", Nothing}}, {}},
    {"SUImageGetTransform", 2, Failing, {{"/entities/images/2", Nothing}}, {}},
    {"SUImageRepCreate", 1, AnyOrNull, {{"/entities/images/0/width", 0}}, {}},
    {"SUImageGetImageRep", 1, Any, {{"/entities/images/0/width", 0}}, {}},
    {"SUImageRepGetPixelDimensions", 1, Any, {{"/entities/images/0/width", 0}}, {0}},
    {"SUImageRepRelease", AllCalls, Any, {}, {}},
    {"SUTextureWriterLoadEntity", AllCalls, {"fail"}, {}, {}},

    {"SUGroupGetName", 1, Any, {{"/entities/groups/0/name", ""}}, {}},
    // The same for groups and instances.
    {"SUGroupGetTransform", 1, Failing, {{"/entities/groups", Nothing}}, {}},
    {"SUGroupGetTransform", 2, Failing, {{"/entities/groups/2", Nothing}}, {}},
    {"SUGroupGetEntities", 1, Failing, {{"/entities/groups/0", Nothing}}, {}},
    {"SUGroupGetEntities", 1, {"silent", "null"}, {{"/entities/groups/0/entities", Json::object()}}, {}},
    {"SUComponentInstanceGetDefinition", 1, AnyOrNull, {{"/entities/instances/0", Nothing}}, {}},
    {"SUComponentDefinitionGetEntities", 1, AnyOrNull, {{"/entities/instances/0", Nothing}}, {}},
    {"SUComponentInstanceGetTransform", 1, Failing, {{"/entities/instances", Nothing}}, {}},
    {"SUComponentInstanceGetTransform", 2, Failing, {{"/entities/instances/2", Nothing}}, {}},

    {"SUDrawingElementGetHidden", AllCalls, Failing, {{"/layers/0/visible", true}}, {}},
    {"SUDrawingElementGetHidden", AllCalls, {"silent"}, {}, {}},
    {"SUDrawingElementGetLayer", AllCalls, AnyOrNull, {{"/layers/0/visible", true}}, {}},
    {"SULayerGetVisibility", AllCalls, Any, {{"/layers/0/visible", true}}, {}},
    {"SUDrawingElementGetMaterial", 1, AnyOrNull, {{"/entities/groups/0/material", Nothing}}, {}},
    {"SUDrawingElementGetMaterial", 3, AnyOrNull, {{"/entities/instances/0/material", Nothing}}, {}},
    {"SUFaceToDrawingElement", 3, {"null"}, {{"/entities/faces/3/layer", Nothing}}, {}},
    {"SUImageToDrawingElement", 3, {"null"}, {{"/entities/images/3/layer", Nothing}}, {}},
    {"SUGroupToDrawingElement", 3, {"null"}, {{"/entities/groups/3/layer", Nothing}}, {}},
    {"SUGroupToDrawingElement", 1, {"null"}, {{"/entities/groups/0/material", Nothing}}, {}},
    {"SUComponentInstanceToDrawingElement",
     1,
     {"null"},
     {{"/entities/instances/0/material", Nothing}},
     {}},

    // Text 7 is the name of the first group, text 5 that of the first image.
    {"SUStringCreate", 7, {"fail", "silent", "null"}, {{"/entities/groups/0/name", ""}}, {}},
    {"SUStringCreate", 5, {"fail", "silent", "null"}, {{"/entities/images/0/file", ""}}, {}},
    {"SUStringGetUTF16", 7, {"fail", "silent"}, {{"/entities/groups/0/name", ""}}, {}},
    {"SUStringRelease", AllCalls, Any, {}, {}},
};

// Faults that lose the front of the first face, which no script without a fault can do.
const Row FrontRows[] = {
    {"SUMeshHelperGetNumTriangles", 1, Any, {}, {0, TooMany, TooMany / 3 + 1, FarTooMany}},
    {"SUMeshHelperGetNumVertices", 1, Any, {}, {0, 2, TooMany, FarTooMany, AsGoodAsNone, MostOfAll}},
    {"SUMeshHelperGetVertices", 1, Any, {}, {2, 4}},
    {"SUMeshHelperGetNormals", 1, Any, {}, {2, 4}},
    {"SUMeshHelperGetVertexIndices", 1, Any, {}, {0, 2, 4}},
};

// The scene file of a successful script.
std::string SceneBytes(const Json& script) {
    ScriptedRun run;
    RunScript(run, script);
    EXPECT_EQ(run.Result.ExitCode, 0) << run.Result.Output;
    return ReadBytes(run.SceneFile);
}

// Copies of the reference model, one with each fault of a row.
std::vector<Json> Faulty(const Row& row) {
    std::vector<Json> scripts;
    const auto add = [&](const char* kind, uint64_t count) {
        scripts.push_back(Reference());
        scripts.back()["faults"] = Faults(row.Operation, row.Call, kind, count);
    };
    for (const char* kind : row.Faults)
        add(kind, 0);
    for (const uint64_t count : row.Counts)
        add("count", count);
    return scripts;
}

void RunWith(ScriptedRun& run, const Json& fault) {
    Json script = Reference();
    script["faults"] = List({fault});
    RunScript(run, script);
}

std::string OperationOf(const std::string& call) {
    return call.substr(0, call.find(' '));
}

// The exit code if one call of the operation fails; first: its first call.
int ExpectedExitCode(const std::string& operation, bool first) {
    if (operation == "SUModelCreateFromFile")
        return 10;
    if (operation == "SUTextureWriteToFile" || operation == "SUTextureWriterWriteTexture")
        return 12;
    // The first material then counts as untextured and has no path, but its picture is written later.
    if (first && (operation == "SUMaterialGetTexture" || operation == "SUMaterialGetType"))
        return 12;
    return operation == "SUModelGetEntities" || operation == "SUTextureWriterCreate" ? 13 : 0;
}

} // namespace

TEST(RunFailure, TheReferenceModelIsComplete) {
    EXPECT_EQ(Shape(Convert(Reference())), Whole);
}

TEST(RunFailure, EachFaultLosesItsElementOnly) {
    const std::string whole = SceneBytes(Reference());
    for (const Row& row : Rows) {
        Json without = Reference();
        for (const auto& [pointer, value] : row.Lost)
            without[Json::json_pointer(pointer)] = value;
        const std::string scene = SceneBytes(without);
        EXPECT_EQ(scene == whole, row.Lost.empty()) << row.Operation;
        for (const Json& script : Faulty(row)) {
            SCOPED_TRACE(script["faults"]);
            EXPECT_TRUE(SceneBytes(script) == scene);
        }
    }
}

TEST(RunFailure, AFaultInTheArraysOfASideLosesTheSide) {
    const std::string withoutFront = "Default:1 brick@1:1 red:1 @2:4 @3:4" + Groups + Instances;
    for (const Row& row : FrontRows)
        for (const Json& script : Faulty(row)) {
            SCOPED_TRACE(script["faults"]);
            EXPECT_EQ(Shape(Convert(script)), withoutFront);
        }
}

TEST(RunFailure, EveryCallMayFail) {
    constexpr int often = 4; // Calls to fail of each operation.
    ScriptedRun whole;
    RunWith(whole, {{"operation", "none"}, {"kind", "fail"}});
    ASSERT_GT(whole.Calls.size(), 300u);
    std::map<std::string, int> seen;
    for (size_t call = 1; call <= whole.Calls.size(); ++call) {
        const std::string operation = OperationOf(whole.Calls[call - 1]);
        if (++seen[operation] > often)
            continue;
        SCOPED_TRACE(testing::Message() << call << ": " << operation);
        ScriptedRun run;
        RunWith(run, {{"operation", "*"}, {"kind", "fail"}, {"call", call}});
        EXPECT_EQ(run.Result.ExitCode, ExpectedExitCode(operation, seen[operation] == 1));
    }
    EXPECT_EQ(seen.size(), 64u); // The reference model calls all operations.
}

// Texts without a closing NUL fill their buffer; the program must terminate them.
TEST(RunFailure, AnUnterminatedTextIsCutAtTheLimit) {
    Json script = Reference();
    script["faults"] = Faults("SUStringGetUTF16", AllCalls, "unterminated");
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
    for (const char* kind : {"silent"})
        for (const char* operation :
             {"SUGroupGetTransform", "SUComponentInstanceGetTransform", "SUImageGetTransform"}) {
            Json script = Reference();
            script["faults"] = Faults(operation, AllCalls, kind);
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
