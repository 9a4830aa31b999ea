// Paths on the command line: forms, directories, limits and characters.
#include "platform/Platform.h"
#include "support/ScriptedRun.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

constexpr size_t PathLimit = 259; // UTF-16 units; UTF-8 bytes for the library's paths.

Json Textured() {
    Json script = Faces({Triangle(0, 0)});
    script["materials"] = List({{{"name", "brick"}, {"texture", {{"file", "brick.jpg"}}}}});
    return script;
}

// A relative path of this many units: folders of 100 units, then the last component.
std::u16string PathOfLength(size_t length, const std::u16string& last) {
    std::u16string path;
    for (size_t rest = length - last.size(); rest > 0;) {
        const size_t part = rest > 102 ? 101 : rest;
        path += std::u16string(part - 1, u'd') + u"\\";
        rest -= part;
    }
    return path + last;
}

// Directories whose names have more UTF-8 bytes, which the library's limit counts, than UTF-16 units.
const std::u16string WidePrefixes[] = {u"", std::u16string(50, u'ü') + u"\\",
                                       u"\U0001F600\U0001F600\U0001F600\\"};

size_t Utf8Size(const std::u16string& text) {
    return Utf8FromUtf16(text).size();
}

fs::path FileAt(const ScriptedRun& run, std::u16string path) {
    for (char16_t& unit : path)
        unit = unit == u'\\' ? u'/' : unit;
    return run.Folder.Path / fs::path(path);
}

// Sets the relative paths of the model, the scene file and the log.
void Place(ScriptedRun& run, const std::u16string& source, const std::u16string& destination,
           const std::u16string& log) {
    run.Source = source;
    run.Destination = destination;
    run.Log = log;
    run.ModelFile = FileAt(run, source);
    run.SceneFile = FileAt(run, destination);
    run.LogFile = FileAt(run, log);
}

void ExpectSuccess(const ScriptedRun& run, const std::u16string& picture) {
    ExpectOutcome(
        run, 0,
        {u"Importing {src} to {dest}", u"Writing: " + picture, u"Success. {src} imported to {dest}"});
    EXPECT_EQ(Shape(SceneOf(run)), "brick@1:2");
}

} // namespace

TEST(RunPaths, TheRelativeDirectoryOnlyGetsABackslash) {
    const std::pair<const char16_t*, const char16_t*> rows[] = {
        {u"maps", u"maps\\"}, {u"maps\\", u"maps\\"}, {u"", u""},
        {u"a/b/", u"a/b/\\"}, {u".\\x", u".\\x\\"},   {u"C:\\a b\\..", u"C:\\a b\\..\\"},
        {u"日本", u"日本\\"},
    };
    for (const auto& [given, stored] : rows) {
        ScriptedRun run;
        run.RelativeDirectory = given;
        RunScript(run, Textured());
        ASSERT_EQ(run.Result.ExitCode, 0);
        EXPECT_EQ(SceneOf(run).Nodes[0].Meshes[0].Material.TexturePath,
                  std::u16string(stored) + u"house_Texture1.png");
        EXPECT_EQ(FilesBelow(run.Folder.Path).size(), 4u);
    }
}

// The path of the scene file as given, the path of its texture in the log, and the resulting files.
TEST(RunPaths, FormsOfTheScenePath) {
    struct Form {
        const char16_t* Destination;
        const char16_t* Picture;
        const char* SceneFile;
        const char* PictureFile;
    };
    const Form forms[] = {
        {u"house.bin", u"house_Texture1.png", "house.bin", "house_Texture1.png"},
        {u".\\house.bin", u"house_Texture1.png", "house.bin", "house_Texture1.png"},
        {u"out\\house", u"out\\house_Texture1.png", "out/house", "out/house_Texture1.png"},
        {u"out\\a.b.c", u"out\\a.b_Texture1.png", "out/a.b.c", "out/a.b_Texture1.png"},
        {u"out\\.bin", u"out\\_Texture1.png", "out/.bin", "out/_Texture1.png"},
        {u"a\\b\\c.d\\house.bin", u"a\\b\\c.d\\house_Texture1.png", "a/b/c.d/house.bin",
         "a/b/c.d/house_Texture1.png"},
        {u"in\\..\\up\\house.bin", u"in\\..\\up\\house_Texture1.png", "up/house.bin",
         "up/house_Texture1.png"},
        {u"out/deep/house.bin", u"out/deep/\\house_Texture1.png", "out/deep/house.bin",
         "out/deep/house_Texture1.png"},
        {u"out\\\\deep\\\\\\house.bin", u"out\\\\deep\\\\\\house_Texture1.png", "out/deep/house.bin",
         "out/deep/house_Texture1.png"},
        {u"100%s%d%n\\x%s.bin", u"100%s%d%n\\x%s_Texture1.png", "100%s%d%n/x%s.bin",
         "100%s%d%n/x%s_Texture1.png"},
        {u"häuser\\日本 😀.bin", u"häuser\\日本 😀_Texture1.png", "häuser/日本 😀.bin",
         "häuser/日本 😀_Texture1.png"},
    };
    for (const Form& form : forms) {
        SCOPED_TRACE(form.SceneFile);
        ScriptedRun run;
        Place(run, u"in\\modell ü %s.skp", form.Destination, u"logs 日本\\%d\\run.log");
        run.SceneFile = run.Folder.Path / fs::path(Utf16FromUtf8(form.SceneFile));
        RunScript(run, Textured());
        ExpectSuccess(run, form.Picture);
        EXPECT_EQ(run.Calls[1], "SUModelCreateFromFile " + Utf8FromUtf16(run.Source));
        EXPECT_TRUE(fs::exists(run.Folder.Path / fs::path(Utf16FromUtf8(form.PictureFile))));
        EXPECT_EQ(FilesBelow(run.Folder.Path).size(), 4u);
    }
}

TEST(RunPaths, ADriveLetterIsDroppedOnSystemsWithoutDrives) {
    if (!fs::temp_directory_path().root_name().empty())
        GTEST_SKIP() << "there are drives";
    ScriptedRun run;
    run.Source = u"C:" + run.Source;
    run.Destination = u"d:" + run.Destination;
    run.Log = u"E:" + run.Log;
    RunScript(run, Textured());
    ExpectSuccess(run, u"{out}house_Texture1.png");
}

// A last directory that is all extension is not created, nor is one with the name of a file.
TEST(RunPaths, WithoutItsDirectoryTheSceneFileFails) {
    for (const char16_t* destination :
         {u".cache\\house.bin", u"in\\house.skp\\house.bin", u"", u"out\\"}) {
        ScriptedRun run;
        run.Destination = destination;
        RunScript(run, Faces({Triangle()}));
        ExpectOutcome(run, 11, {u"Importing {src} to {dest}", u"Error writing {dest}"});
        EXPECT_FALSE(fs::exists(run.Folder.Path / ".cache"));
    }
    ScriptedRun run;
    run.SceneFile = run.Folder.Path / ".cache" / "house.bin";
    run.Destination = u".cache\\house.bin";
    fs::create_directories(run.SceneFile.parent_path());
    RunScript(run, Textured());
    ExpectSuccess(run, u".cache\\house_Texture1.png");
}

// The scene file is opened after the pictures.
TEST(RunPaths, TheTexturePrefixOfAnEmptyLastComponentIsAnUnderscore) {
    ScriptedRun run;
    run.Destination = u"out\\";
    RunScript(run, Textured());
    ExpectOutcome(
        run, 11,
        {u"Importing {src} to {dest}", u"Writing: out\\_Texture1.png", u"Error writing {dest}"});
}

TEST(RunPaths, ASourceAboveTheLimitIsNotOpened) {
    for (const std::u16string& prefix : WidePrefixes)
        for (const size_t beyond : {0u, 1u}) {
            ScriptedRun run;
            const std::u16string source =
                prefix + PathOfLength(PathLimit - Utf8Size(prefix) + beyond, u"house.skp");
            Place(run, source, u"out\\house.bin", u"run.log");
            RunScript(run, Textured());
            if (beyond == 0)
                ExpectSuccess(run, u"out\\house_Texture1.png");
            else {
                ExpectOutcome(run, 10,
                              {u"Importing {src} to {dest}", u"Error opening {src}",
                               u"Error importing {src} (rc=10)"});
                EXPECT_EQ(run.Calls, (std::vector<std::string>{"SUInitialize", "SUModelRelease null",
                                                               "SUTerminate"}));
            }
        }
}

TEST(RunPaths, APicturePathAboveTheLimitIsNotWritten) {
    for (const std::u16string& prefix : WidePrefixes)
        for (const size_t beyond : {0u, 1u}) {
            // The picture's path is 9 units longer than that of the scene file.
            const std::u16string destination =
                prefix + PathOfLength(PathLimit - Utf8Size(prefix) + beyond - 9, u"h.bin");
            const std::u16string picture =
                destination.substr(0, destination.size() - 4) + u"_Texture1.png";
            ASSERT_EQ(Utf8Size(picture), PathLimit + beyond);
            ScriptedRun run;
            Place(run, u"house.skp", destination, u"run.log");
            RunScript(run, Textured());
            if (beyond == 0)
                ExpectSuccess(run, picture);
            else
                ExpectOutcome(run, 12,
                              {u"Importing {src} to {dest}", u"Writing: " + picture,
                               u"Error: SKP library could not write brick.jpg to " + picture,
                               u"Error importing {src} (rc=12)"});
        }
}

TEST(RunPaths, ASceneFileOrALogAboveTheLimitIsNotOpened) {
    for (const size_t beyond : {0u, 1u, 50u}) {
        ScriptedRun run;
        Place(run, u"house.skp", PathOfLength(PathLimit + beyond, u"house.bin"), u"run.log");
        RunScript(run, Faces({Triangle()}));
        ExpectOutcome(run, beyond == 0 ? 0 : 11,
                      {u"Importing {src} to {dest}",
                       beyond == 0 ? u"Success. {src} imported to {dest}" : u"Error writing {dest}"});
        EXPECT_EQ(fs::exists(run.SceneFile), beyond == 0);
        EXPECT_EQ(fs::exists(run.SceneFile.parent_path()),
                  beyond < 50); // Then the directory's path is too long too.

        ScriptedRun logged;
        Place(logged, u"house.skp", u"house.bin", PathOfLength(PathLimit + beyond, u"run.log"));
        RunScript(logged, Faces({Triangle()}));
        EXPECT_EQ(logged.Result.ExitCode, 0);
        EXPECT_EQ(fs::exists(logged.LogFile), beyond == 0);
    }
}

TEST(RunPaths, AMessageIsCutAtTheSizeOfItsBuffer) {
    ScriptedRun run;
    run.Source = std::u16string(3000, u's');
    run.Destination = u"out\\" + std::u16string(3000, u'd');
    RunScript(run, Textured());
    const std::u16string importing = u"Importing " + run.Source + u" to " + run.Destination;
    ExpectOutcome(run, 10,
                  {importing.substr(0, 4095), u"Error opening {src}", u"Error importing {src} (rc=10)"});
}

// A log with the scene file's path is not written, and the scene file is unchanged or complete.
TEST(RunPaths, ALogWithThePathOfTheSceneFileIsNotOpened) {
    const std::pair<const char16_t*, const char16_t*> sceneAndLog[] = {
        {u"out\\house.bin", u"out\\house.bin"},
        {u"out\\house.bin", u".\\out\\house.bin"},
        {u"out\\house.bin", u"out/..\\out//house.bin"},
        {u"out\\house.bin", u"{folder}/out/house.bin"},
        {u"out\\house.bin", u"out\\house.bin."}, // The same on Windows only.
        {u"out\\house.bin", u"OUT\\House.BIN"},  // The same on Windows only.
        {u"out\\house.bin", u"far\\folder link\\house.bin"},
        {u"out\\house.bin", u"far\\folder link\\..\\out\\house.bin"}, // Not in far.
        {u"out\\house.bin", u"hard link.log"},
        {u"out\\house.bin", u"link to link.log"},
        {u"link to link.log", u"out\\house.bin"},
        {u"out\\house.bin", u"link in a circle.log"}, // Not a file.
    };
    for (const auto& [scene, log] : sceneAndLog)
        for (const bool opens : {false, true})
            for (const bool earlier : {false, true}) {
                SCOPED_TRACE(Utf8FromUtf16(scene) + Utf8FromUtf16(log));
                ScriptedRun run;
                const fs::path& folder = run.Folder.Path;
                const bool full = log[0] == u'{';
                Place(run, u"house.skp", scene, full ? PathText(folder / "out" / "house.bin") : log);
                fs::create_directories(folder / "out");
                fs::create_directory(folder / "far");
                if (earlier)
                    WriteBytes(folder / "out" / "house.bin", "earlier");
                // Some systems have no links, and a hard link needs an existing file.
                std::error_code error;
                if (run.Log.starts_with(u"far"))
                    fs::create_directory_symlink("../out", folder / "far" / "folder link", error);
                else if (run.Log.starts_with(u"hard"))
                    fs::create_hard_link(run.SceneFile, run.LogFile, error);
                else if (!full && (run.Log + run.Destination).find(u"link") != run.Log.npos) {
                    fs::create_symlink("link in a circle.log", folder / "link in a circle.log", error);
                    fs::create_symlink("out/house.bin", folder / "link.log", error);
                    fs::create_symlink(folder / "link.log", folder / "link to link.log", error);
                }
                if (error)
                    continue;
                Json script = Textured();
                if (!opens)
                    script["faults"] = Faults("SUModelCreateFromFile", 1, "fail");
                RunScript(run, script);
                EXPECT_EQ(run.Result.ExitCode, opens ? 0 : 10);
                if (opens)
                    EXPECT_EQ(Shape(SceneOf(run)), "brick@1:2");
                else
                    EXPECT_EQ(fs::exists(run.SceneFile) ? ReadBytes(run.SceneFile) : "",
                              earlier ? "earlier" : "");
            }
}

// On a volume without file numbers, equal numbers don't mean the same file.
TEST(RunPaths, EqualFileNumbersDoNotMeanOneFile) {
#ifndef ORVANE_UNNUMBERED_FILES
    GTEST_SKIP() << "no preloaded libraries in this build";
#else
    ScriptedRun run;
    Place(run, u"house.skp", u"house.bin", u"run.log");
    run.Environment = {{"LD_PRELOAD", ORVANE_UNNUMBERED_FILES}};
    RunScript(run, Faces({Triangle()}));
    ExpectOutcome(run, 0, {u"Importing {src} to {dest}", u"Success. {src} imported to {dest}"});
    run.Source = u"missing.skp";
    RunScript(run, {});
    ExpectOutcome(
        run, 10,
        {u"Importing {src} to {dest}", u"Error opening {src}", u"Error importing {src} (rc=10)"});

    const fs::path& folder = run.Folder.Path;
    WriteBytes(folder / "house.glb", "earlier");
    ProgramCall inspect;
    inspect.Program = ORVANE_SCENE_INSPECT;
    inspect.Arguments = {u"house.bin", u"--glb", u"house.glb"};
    inspect.WorkingDirectory = folder;
    inspect.Environment = run.Environment;
    EXPECT_EQ(RunProgram(inspect).ExitCode, 0);
    EXPECT_TRUE(ReadBytes(folder / "house.glb").starts_with("glTF"));
    // With more than one link the number counts, which also proves that the library is loaded.
    fs::create_hard_link(folder / "house.bin", folder / "more.bin");
    EXPECT_EQ(RunProgram(inspect).ExitCode, 0);
    fs::create_hard_link(folder / "house.glb", folder / "more.glb");
    EXPECT_EQ(RunProgram(inspect).ExitCode, 2);
#endif
}

// Read-only folders: the log is missing, the scene file or a picture fails.
TEST(RunPaths, ReadOnlyFolders) {
#ifdef _WIN32
    GTEST_SKIP() << "permissions work differently";
#endif
    constexpr fs::perms readOnly = fs::perms::owner_read | fs::perms::owner_exec;
    for (const std::string closed : {"out", "logs", "scene only"}) {
        SCOPED_TRACE(closed);
        ScriptedRun run;
        run.Unprivileged = true;
        const fs::path folder = run.Folder.Path / (closed == "logs" ? "logs" : "out");
        fs::create_directories(folder);
        if (closed == "scene only")
            WriteBytes(run.SceneFile, "earlier");
        fs::permissions(folder, readOnly);
        RunScript(run, closed == "out" ? Faces({Triangle()}) : Textured());
        EXPECT_EQ(run.Result.ExitCode, closed == "out" ? 11 : closed == "logs" ? 0 : 12);
        EXPECT_EQ(fs::exists(run.LogFile), closed != "logs");
        if (closed == "scene only") {
            EXPECT_EQ(ReadBytes(run.SceneFile), "earlier");
        }
        fs::permissions(folder, fs::perms::owner_all);
    }
}
