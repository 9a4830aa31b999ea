// One run of orvane with the scripted library in its own folder, and its results.
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
    // The four arguments. Defaults: "maps", and the full paths of in\house.skp, out\house.bin and
    // logs\run.log in the folder.
    std::u16string Source;
    std::u16string Destination;
    std::u16string RelativeDirectory = u"maps";
    std::u16string Log;
    // Where the script is written, and where the scene file and the log are expected.
    std::filesystem::path ModelFile;
    std::filesystem::path SceneFile;
    std::filesystem::path LogFile;

    std::vector<std::pair<std::string, std::string>> Environment; // As in ProgramCall.

    uint64_t MemoryLimit = 0;   // As in ProgramCall.
    bool Unprivileged = false;  // As in ProgramCall.
    std::string ExpectedErrors; // On standard error output.

    ProgramResult Result;
    std::vector<std::string> Calls; // The library's record, without notes on faults.

    ScriptedRun();
};

// The exit code of a run that the fault "die" ends.
constexpr int DeadExitCode = 99;

// A JSON file below tests/.
Json TestData(const std::string& path);

// Writes the script and runs the program once. Fails the test unless the program obeys the library's
// contract, starts with SUInitialize, ends with SUModelRelease and SUTerminate (except after the fault
// "die"), and prints the expected standard error output.
void RunScript(ScriptedRun& run, const Json& script);

// Runs each scenario of a JSON file below tests/. The file has:
//   "models"     scripts by name. An element {"triangle": X, ...} is the Triangle at X with the rest
//   "scenarios"  [{"name", "model": a script or its name, "changes": {JSON pointer: value}}] with the
//                expected results:
//     "exit"    the exit code, 0 by default. Except for 0 an earlier scene file is unchanged
//     "log"     the lines of the log and of standard output, as for ExpectOutcome
//     "scene"   the Shape
//     "meshes"  the lines of Meshes
//     "files"   the contents of the pictures by name; no others exist
//     "calls"   all calls of the library
void RunScenarios(const std::string& path);

// Expects the exit code and exactly these lines in the log and on standard output. In the lines, {src}
// and {dest} mean the first two arguments, {out} the second one without its last component.
void ExpectOutcome(const ScriptedRun& run, int exitCode, const std::vector<std::u16string>& lines);

// The bytes of these lines on standard output.
std::string OutputBytes(const std::vector<std::u16string>& lines);

// The scene file of a run; fails the test if there is none, if it is invalid, or if a matrix is not the
// identity.
StoredScene SceneOf(const ScriptedRun& run);

// RunScript, expecting success, and SceneOf.
StoredScene Convert(const Json& script);

// A scene in one line: each mesh as material:triangles, or material@number:triangles with the number of
// its texture file, followed by the colour in parentheses if it isn't opaque white; each group or
// instance in brackets, with its name, if any, first and in quotes. Example: "Default:2 brick@1:4
// ['Wall' red:2 [red:2]]".
std::string Shape(const StoredScene& scene);

// The lines of each mesh: "x y z / normal / u v" for each vertex, then the indices.
std::vector<std::string> Meshes(const StoredScene& scene);

// The triangle (x, 0, 0), (x + 1, 0, 0), (x, 1, 0) as a face; its texture coordinates have s = 0, 1, 2.
// Front and back are material indices, or null.
Json Triangle(double x = 0, Json front = nullptr, Json back = nullptr);

// A JSON array of these elements: the JSON library can take braces for an object or a copy.
Json List(const std::vector<Json>& elements);

// A script with one list of faces.
Json Faces(const std::vector<Json>& faces);

// A script's list of faults with one entry. Call 0: all calls.
Json Faults(const std::string& operation, uint64_t call, const std::string& kind, uint64_t value = 0);
