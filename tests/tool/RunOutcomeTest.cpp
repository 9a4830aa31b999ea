// The outcomes of a run: exit code, log, standard output and files, for each outcome.
#include "support/ScriptedRun.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

const std::string Earlier = "an earlier scene file";
const std::string SceneName = "out/house.bin";

const Json Brick = {{"name", "brick"}, {"texture", {{"file", "brick.jpg"}}}};
const Json Wood = {{"name", "wood"}, {"texture", {{"file", "wood.jpg"}}}};

// A brick triangle and an image: one picture each.
Json BrickAndImage(const Json& faults = Json::array()) {
    Json script = Faces({Triangle(0, 0)});
    script["materials"] = List({Brick});
    script["entities"]["images"] = List({{{"file", "a.png"}}});
    script["faults"] = faults;
    return script;
}

// Outcomes that depend only on the library's answers.
struct Outcome {
    const char* Name;
    Json Script;
    int ExitCode;
    std::vector<std::u16string> Lines; // After the first, which is the same in every run.
    std::vector<std::string> Pictures;
};

std::vector<Outcome> Outcomes() {
    const std::u16string writing = u"Writing: {out}house_Texture1.png";
    const std::u16string notRead = u"SKP Import failed - error reading file";
    const std::u16string rc12 = u"Error importing {src} (rc=12)";
    const std::u16string rc13 = u"Error importing {src} (rc=13)";
    const std::u16string noImage =
        u"Error: SKP library could not write a.png to {out}house_Texture2.png";

    Json imageOnly = BrickAndImage(Faults("SUTextureWriterWriteTexture", 0, "fail"));
    imageOnly["entities"].erase("faces");
    imageOnly["faults"].push_back(Faults("SUImageGetTransform", 0, "fail")[0]);
    Json excluded = Faces({Triangle()});
    excluded["layers"] = List({{{"visible", false}}});
    excluded["entities"]["faces"][0]["layer"] = 0;
    return {
        {"success", BrickAndImage(), 0, {writing, u"Success. {src} imported to {dest}"}, {"1", "2"}},
        {"model not opened",
         BrickAndImage(Faults("SUModelCreateFromFile", 0, "fail")),
         10,
         {u"Error opening {src}", u"Error importing {src} (rc=10)"},
         {}},
        {"no texture writer",
         BrickAndImage(Faults("SUTextureWriterCreate", 0, "fail")),
         13,
         {u"Error creating texture writer", rc13},
         {}},
        {"no entities", BrickAndImage(Faults("SUModelGetEntities", 0, "fail")), 13, {notRead, rc13}, {}},
        {"null entities",
         BrickAndImage(Faults("SUModelGetEntities", 0, "null")),
         13,
         {notRead, rc13},
         {}},
        {"empty model", Faces(Json::array()), 13, {notRead, rc13}, {}},
        {"all excluded", excluded, 13, {notRead, rc13}, {}},
        {"texture not written",
         BrickAndImage(Faults("SUTextureWriteToFile", 0, "fail")),
         12,
         {writing, u"Error: SKP library could not write brick.jpg to {out}house_Texture1.png", rc12},
         {"2"}},
        {"texture written, failure all the same",
         BrickAndImage(Faults("SUTextureWriteToFile", 0, "fail late")),
         12,
         {writing, u"Error: SKP library could not write brick.jpg to {out}house_Texture1.png", rc12},
         {"1", "2"}},
        {"material without a path that has a texture when it is used",
         BrickAndImage(Faults("SUMaterialGetType", 1, "fail")),
         12,
         {u"Writing: ", u"Error: SKP library could not write  to ", rc12},
         {"1"}},
        {"picture of an image not written, faces too late",
         BrickAndImage(Faults("SUTextureWriterWriteTexture", 0, "fail")),
         12,
         {noImage, rc12},
         {}},
        {"picture not written and no triangle", imageOnly, 13, {noImage, notRead, rc13}, {}},
    };
}

} // namespace

TEST(RunOutcome, EachOutcomeHasItsLinesCodeAndFiles) {
    for (const Outcome& outcome : Outcomes()) {
        SCOPED_TRACE(outcome.Name);
        ScriptedRun run;
        WriteBytes(run.SceneFile, Earlier);
        WriteBytes(run.LogFile, std::string(5000, 'x'));
        RunScript(run, outcome.Script);
        std::vector<std::u16string> lines = {u"Importing {src} to {dest}"};
        lines.insert(lines.end(), outcome.Lines.begin(), outcome.Lines.end());
        ExpectOutcome(run, outcome.ExitCode, lines);

        std::vector<std::string> files = {"in/house.skp", "logs/run.log", SceneName};
        for (const std::string& number : outcome.Pictures)
            files.push_back("out/house_Texture" + number + ".png");
        EXPECT_EQ(FilesBelow(run.Folder.Path), files);
        if (outcome.ExitCode != 0)
            EXPECT_EQ(ReadBytes(run.SceneFile), Earlier);
        else
            EXPECT_EQ(Shape(SceneOf(run)), "brick@1:2 @2:4");
        const bool opened = outcome.ExitCode != 10;
        EXPECT_EQ(run.Calls[run.Calls.size() - 2], opened ? "SUModelRelease" : "SUModelRelease null");
    }
}

TEST(RunOutcome, AMissingModelIsNotOpened) {
    ScriptedRun run;
    run.Source += u"x";
    RunScript(run, {});
    ExpectOutcome(
        run, 10,
        {u"Importing {src} to {dest}", u"Error opening {src}", u"Error importing {src} (rc=10)"});
    EXPECT_EQ(run.Calls.size(), 4u);
}

TEST(RunOutcome, AWrongNumberOfArgumentsOnlyPrintsTheUsage) {
    for (const size_t count : {0u, 1u, 3u, 5u}) {
        const TempFolder folder;
        const std::vector<std::u16string> arguments = {u"a\\house.skp", u"b\\house.bin", u"maps",
                                                       u"c\\run.log", u""};
        const ProgramResult result =
            RunProgram({.Program = ORVANE_PROGRAM,
                        .Arguments = {arguments.begin(), arguments.begin() + std::ptrdiff_t(count)},
                        .WorkingDirectory = folder.Path,
                        .LibraryDirectory = ORVANE_SCRIPTED_LIBRARY_DIR,
                        .Environment = {{"ORVANE_SCRIPTED_RECORD", (folder.Path / "calls").string()}}});
        EXPECT_EQ(result.ExitCode, 1);
        EXPECT_EQ(result.Output, "Usage: orvane.exe <src_path> <dest_path> <rel_dest_dir> <log_path>\n");
        EXPECT_EQ(result.Errors, "");
        EXPECT_TRUE(fs::is_empty(folder.Path)) << count;
    }
}

TEST(RunOutcome, TheSceneFileIsOpenedAfterThePictures) {
    ScriptedRun run;
    fs::create_directories(run.SceneFile);
    RunScript(run, BrickAndImage());
    ExpectOutcome(
        run, 11,
        {u"Importing {src} to {dest}", u"Writing: {out}house_Texture1.png", u"Error writing {dest}"});
    EXPECT_EQ(FilesBelow(run.Folder.Path),
              (std::vector<std::string>{"in/house.skp", "logs/run.log", "out/house_Texture1.png",
                                        "out/house_Texture2.png"}));
}

TEST(RunOutcome, AFullDiskIsAnErrorAlsoForSmallScenes) {
    if (!fs::exists("/dev/full"))
        GTEST_SKIP() << "no device that is always full";
    for (const int faces : {1, 200}) {
        Json list = Json::array();
        for (int i = 0; i < faces; ++i)
            list.push_back(Triangle(i));
        ScriptedRun run;
        run.Destination = u"\\dev\\full";
        RunScript(run, Faces(list));
        ExpectOutcome(run, 11, {u"Importing {src} to {dest}", u"Error writing {dest}"});
    }
}

TEST(RunOutcome, AFailingLogChangesNothingElse) {
    for (const char16_t* log : {u"in", u"in\\house.skp\\deep\\run.log", u"", u"/dev/full"}) {
        if (log[0] == u'/' && !fs::exists("/dev/full"))
            continue;
        ScriptedRun run;
        run.Log = log;
        RunScript(run, Faces({Triangle()}));
        EXPECT_EQ(run.Result.ExitCode, 0);
        EXPECT_EQ(run.Result.Output,
                  OutputBytes({u"Importing " + run.Source + u" to " + run.Destination,
                               u"Success. " + run.Source + u" imported to " + run.Destination}));
        EXPECT_EQ(FilesBelow(run.Folder.Path), (std::vector<std::string>{"in/house.skp", SceneName}));
    }
}

TEST(RunOutcome, PicturesAreWrittenOncePerUsedMaterial) {
    Json script = Faces({Triangle(0, 0), Triangle(2, 0), Triangle(4, 2), Triangle(6, nullptr, 3)});
    script["materials"] = List({Brick, Wood, Brick, {{"name", "red"}}});
    script["materials"][2]["texture"]["content"] = "the second brick";
    ScriptedRun run;
    RunScript(run, script);
    const std::u16string writing = u"Writing: {out}house_Texture1.png";
    ExpectOutcome(
        run, 0, {u"Importing {src} to {dest}", writing, writing, u"Success. {src} imported to {dest}"});
    EXPECT_EQ(ReadBytes(run.Folder.Path / "out" / "house_Texture1.png"), "the second brick");
    EXPECT_FALSE(fs::exists(run.Folder.Path / "out" / "house_Texture2.png"));
}

TEST(RunOutcome, AnUnavailablePictureIsSkippedSilently) {
    for (const char* operation :
         {"SUMaterialGetTexture", "SUTextureWriterLoadEntity", "SUImageToEntity"}) {
        const bool texture = operation == std::string("SUMaterialGetTexture");
        Json script = BrickAndImage(Faults(
            operation, 0, operation == std::string("SUTextureWriterLoadEntity") ? "fail" : "null"));
        if (texture)
            script["entities"].erase("images");
        else
            script["entities"].erase("faces");
        ScriptedRun run;
        RunScript(run, script);
        ExpectOutcome(run, 0, {u"Importing {src} to {dest}", u"Success. {src} imported to {dest}"});
        EXPECT_EQ(Shape(SceneOf(run)), texture ? "brick@1:2" : "@2:4");
        EXPECT_EQ(FilesBelow(run.Folder.Path),
                  (std::vector<std::string>{"in/house.skp", "logs/run.log", SceneName}));
    }
}

TEST(RunOutcome, AFailedPictureStopsTheWalk) {
    Json script = Faces({Triangle(0, 0, 1), Triangle(2, 1)});
    script["materials"] = List({Brick, Wood});
    script["entities"]["groups"] = List({Faces({Triangle()})});
    script["entities"]["instances"] = script["entities"]["groups"];
    script["faults"] = Faults("SUTextureWriteToFile", 1, "fail");
    ScriptedRun run;
    RunScript(run, script);
    EXPECT_EQ(run.Result.ExitCode, 12);
    const auto failed = std::find_if(run.Calls.begin(), run.Calls.end(), [](const std::string& call) {
        return call.rfind("SUTextureWriteToFile", 0) == 0;
    });
    for (auto call = failed + 1; call < run.Calls.end(); ++call)
        for (const char* unwanted : {"SUMeshHelperGet", "SUTextureWriteToFile", "SUEntities"})
            EXPECT_NE(call->rfind(unwanted, 0), 0u) << *call;
}

TEST(RunOutcome, AFailedPictureOfAnImageKeepsTheOtherImages) {
    Json script;
    script["entities"]["images"] = List({{{"file", "a.png"}}, {{"file", "b.png"}}});
    script["faults"] = Faults("SUTextureWriterWriteTexture", 1, "fail");
    ScriptedRun run;
    RunScript(run, script);
    ExpectOutcome(run, 12,
                  {u"Importing {src} to {dest}",
                   u"Error: SKP library could not write a.png to {out}house_Texture1.png",
                   u"Error importing {src} (rc=12)"});
    EXPECT_EQ(std::count(run.Calls.begin(), run.Calls.end(), "SUImageRepGetPixelDimensions"), 2);
    EXPECT_EQ(FilesBelow(run.Folder.Path), (std::vector<std::string>{"in/house.skp", "logs/run.log"}));
}

TEST(RunOutcome, EachLineIsInTheLogAtOnce) {
    ScriptedRun run;
    RunScript(run, BrickAndImage(Faults("SUTextureWriteToFile", 1, "die")));
    ExpectOutcome(run, DeadExitCode,
                  {u"Importing {src} to {dest}", u"Writing: {out}house_Texture1.png"});
}

// The order of all calls for one textured face, one image, and one group with an unpainted face.
TEST(RunOutcome, LibraryCallsKeepTheirOrder) {
    Json script = BrickAndImage();
    script["layers"] = List({{{"visible", true}}});
    script["entities"]["groups"] =
        List({{{"name", "Wall"}, {"entities", Faces({Triangle()})["entities"]}, {"layer", 0}}});
    ScriptedRun run;
    RunScript(run, script);
    const auto text = [](const std::string& getter) {
        return std::vector<std::string>{"SUStringCreate", getter, "SUStringGetUTF16", "SUStringRelease"};
    };
    const std::vector<std::string> side = {"SUMeshHelperGetNumTriangles", "SUMeshHelperGetNumVertices",
                                           "SUMeshHelperGetVertices", "SUMeshHelperGetNormals"};
    const std::vector<std::string> layer = {"SUDrawingElementGetHidden", "SUDrawingElementGetLayer",
                                            "SULayerGetVisibility"};
    const std::u16string out = run.Destination.substr(0, run.Destination.size() - 9);
    const std::string picture = fs::path(out).string() + "house_Texture";
    std::vector<std::string> calls;
    const auto then = [&](const std::vector<std::string>& more) {
        calls.insert(calls.end(), more.begin(), more.end());
    };
    then({"SUInitialize", "SUModelCreateFromFile " + fs::path(run.Source).string(),
          "SUTextureWriterCreate", "SUModelGetNumAllMaterials", "SUModelGetAllMaterials",
          "SUMaterialGetTexture", "SUMaterialGetColor", "SUMaterialGetUseOpacity", "SUMaterialGetType"});
    then(text("SUTextureGetFileName"));
    then(text("SUMaterialGetName"));
    then({"SUModelGetEntities", "SUEntitiesGetNumImages", "SUEntitiesGetImages",
          "SUImageToDrawingElement"});
    then(layer);
    then(text("SUImageGetFileName"));
    then({"SUImageToEntity", "SUTextureWriterLoadEntity",
          "SUTextureWriterWriteTexture " + picture + "2.png", "SUImageGetTransform", "SUImageRepCreate",
          "SUImageGetImageRep", "SUImageRepGetPixelDimensions", "SUImageRepRelease",
          "SUEntitiesGetNumFaces", "SUEntitiesGetFaces", "SUFaceToDrawingElement"});
    then(layer);
    then({"SUFaceGetFrontMaterial", "SUFaceGetBackMaterial", "SUFaceGetUVHelper",
          "SUMeshHelperCreateWithUVHelper", "SUFaceGetPlane", "SUMaterialGetTexture",
          "SUTextureGetDimensions"});
    then(side);
    then({"SUMeshHelperGetFrontSTQCoords", "SUMeshHelperGetVertexIndices", "SUMaterialGetType",
          "SUMaterialGetTexture", "SUTextureWriteToFile " + picture + "1.png"});
    then(side);
    then({"SUMeshHelperGetBackSTQCoords", "SUMeshHelperGetVertexIndices", "SUUVHelperRelease",
          "SUEntitiesGetNumGroups", "SUEntitiesGetGroups", "SUGroupToDrawingElement"});
    then(layer);
    then(text("SUGroupGetName"));
    then({"SUGroupGetTransform", "SUGroupGetEntities", "SUDrawingElementGetMaterial",
          "SUEntitiesGetNumImages", "SUEntitiesGetNumFaces", "SUEntitiesGetFaces",
          "SUFaceToDrawingElement"});
    then(layer);
    then({"SUFaceGetFrontMaterial", "SUFaceGetBackMaterial", "SUFaceGetUVHelper",
          "SUMeshHelperCreateWithUVHelper", "SUFaceGetPlane"});
    then(side);
    then({"SUMeshHelperGetFrontSTQCoords", "SUMeshHelperGetVertexIndices"});
    then(side);
    then({"SUMeshHelperGetBackSTQCoords", "SUMeshHelperGetVertexIndices", "SUUVHelperRelease",
          "SUEntitiesGetNumGroups", "SUEntitiesGetNumInstances", "SUEntitiesGetNumInstances",
          "SUModelRelease", "SUTerminate"});
    for (size_t i = 0; i < std::min(calls.size(), run.Calls.size()); ++i)
        ASSERT_EQ(run.Calls[i], calls[i]) << i;
    EXPECT_EQ(run.Calls.size(), calls.size());
}
