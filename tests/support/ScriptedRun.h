// One run of orvane against the scripted library, in a folder of its own, and what it left behind.
#pragma once

#include "inspect/stored/SceneReader.h"
#include "support/Files.h"
#include "support/RunProgram.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

using Json = nlohmann::json;

struct ScriptedRun {
    TempFolder Folder; // The program's working directory.
    // The four arguments. At first: in\house.skp, out\house.bin and logs\run.log in the folder, in full,
    // and "maps".
    std::u16string Source;
    std::u16string Destination;
    std::u16string RelativeDirectory = u"maps";
    std::u16string Log;
    // Where the script is put, and where the scene file is expected.
    std::filesystem::path ModelFile;
    std::filesystem::path SceneFile;
    std::filesystem::path LogFile;

    std::vector<std::pair<std::string, std::string>> Environment; // As in ProgramCall.

    uint64_t MemoryLimit = 0;   // Likewise.
    bool Unprivileged = false;  // Likewise.
    std::string ExpectedErrors; // On standard error output.

    ProgramResult Result;
    std::vector<std::string> Calls; // The library's record, without its remarks on faults.

    ScriptedRun();
};

// The exit code of a run that the scripted library was told to end in the middle.
constexpr int DeadExitCode = 99;

// Writes the script and runs the program once. Whatever the outcome, the program has to keep the
// library's contract, to begin with SUInitialize, to end with SUModelRelease and SUTerminate, and to say
// on standard error output what is expected; a breach of that fails the test. A run that dies has no end
// to check.
void RunScript(ScriptedRun& run, const Json& script);

// Expects the exit code and exactly these lines in the log and on standard output. In the lines, {src}
// and {dest} stand for the arguments, {out} for what stands before the last component of the second.
void ExpectOutcome(const ScriptedRun& run, int exitCode, const std::vector<std::u16string>& lines);

// The log file of these lines, and what standard output shows of them.
std::string LogBytes(const std::vector<std::u16string>& lines);
std::string OutputBytes(const std::vector<std::u16string>& lines);

// The scene file of a successful run; a failed test and no nodes if there is no sound one. All matrices
// have to be the identity.
StoredScene SceneOf(const ScriptedRun& run);

// RunScript, success expected, and SceneOf.
StoredScene Convert(const Json& script);

// A scene in one line: each mesh as material:triangles, or material@number:triangles with the number of
// its texture file; each group or instance in brackets, its name first, in quotes, if it has one. So
// "Default:2 brick@1:4 ['Wall' red:2 [red:2]]".
std::string Shape(const StoredScene& scene);

// The vertices of a mesh's triangles one after the other.
std::vector<StoredVertex> Corners(const StoredMesh& mesh);

// The triangle (x, 0, 0), (x + 1, 0, 0), (x, 1, 0) as a face; its texture coordinates have s = 0, 1, 2.
// Front and back are material indices, or null.
Json Triangle(double x = 0, Json front = nullptr, Json back = nullptr);

// A JSON array of just these elements: braces alone can mean an object or a copy to the JSON library.
Json List(const std::vector<Json>& elements);

// A script of one list of faces and nothing else.
Json Faces(const std::vector<Json>& faces);

// A script's list of faults with one entry. Call 0 stands for all calls.
Json Faults(const std::string& operation, uint64_t call, const std::string& kind, uint64_t value = 0);
