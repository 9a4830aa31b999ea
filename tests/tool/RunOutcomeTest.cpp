// The outcomes of a run: exit code, log, standard output and files, for each outcome.
#include "support/ScriptedRun.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

// Success, each failure, pictures, and the order of the library's calls.
TEST(RunOutcome, Scenarios) {
    RunScenarios("tool/outcomes.json");
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
        EXPECT_EQ(FilesBelow(run.Folder.Path),
                  (std::vector<std::string>{"in/house.skp", "out/house.bin"}));
    }
}
