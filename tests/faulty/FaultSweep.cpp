// Runs orvane thousands of times with injected faults and checks how every run ends.
//
//   fault-sweep PROGRAMS calls EACH SCRIPT       the scripted library: each kind of fault in each
//               operation, at the first EACH calls, then at as many again in equal strides
//   fault-sweep PROGRAMS random RUNS FIRST       the scripted library: random scripts with random
//               faults, from seed FIRST on
//   fault-sweep PROGRAMS memory EACH DOCUMENT... the open library: refused requests for memory, chosen
//               like the calls (not with sanitizers)
//   fault-sweep PROGRAMS machine STEPS DOCUMENT...   file size limits, signals, closed streams
//
// PROGRAMS is the build folder. Prints the number of runs. Exit code 0: no run was at fault.
#include "RandomScript.h"
#include "inspect/stored/SceneReader.h"
#include "platform/Platform.h"
#include "support/Files.h"
#include "support/RunProgram.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <thread>

namespace fs = std::filesystem;
using Json = nlohmann::json;

namespace {

constexpr int OutOfMemoryCode = 20;
constexpr int SignalBase = 256;
const std::string EarlierScene = "an earlier scene file";
const std::string SceneName = "out/house.bin";

// All parameters of a run.
struct Job {
    std::string Model = {}; // path of a document or script; empty: the random script of the seed
    uint64_t Seed = 0;
    Json Fault = {};       // of a script
    ProgramCall Call = {}; // environment, limits and signals
};

// The files of a run.
struct Place {
    fs::path Folder;
    fs::path Scene;
    fs::path Log;

    explicit Place(const fs::path& folder)
        : Folder(folder), Scene(folder / SceneName), Log(folder / "out" / "run.log") {
    }
};

// The results of an undisturbed run.
struct Whole {
    std::string Scene;
    std::string Output;
};

fs::path programs;
std::map<std::string, Whole> wholes; // by document
std::atomic<uint64_t> faults = 0;
std::mutex codesMutex;
std::map<int, uint64_t> codes; // runs by exit code

bool IsScripted(const Job& job) {
    return job.Model.empty() || !job.Fault.is_null();
}

std::string Text(const Job& job) {
    std::ostringstream text;
    text << (job.Model.empty() ? "seed " + std::to_string(job.Seed) : job.Model) << " " << job.Fault;
    for (const auto& [name, value] : job.Call.Environment)
        text << " " << name << "=" << value;
    if (job.Call.FileLimit)
        text << " file limit " << *job.Call.FileLimit;
    text << " signal " << job.Call.Signal << " after " << job.Call.SignalDelay << " output "
         << int(job.Call.Output);
    return text.str();
}

// Whether the output is that of a run with this exit code.
bool IsSequence(const std::string& output, int code, const std::string& source) {
    using Lines = std::vector<std::string>;
    Lines lines;
    for (size_t start = 0; start < output.size();) {
        const size_t end = output.find("\r\n", start);
        if (end == output.npos)
            return false;
        lines.push_back(output.substr(start, end - start));
        start = end + 2;
    }
    if (lines.empty() || lines[0] != "Importing " + source + " to " + SceneName)
        return false;
    size_t at = 1;
    while (at < lines.size() && lines[at].starts_with("Writing: "))
        ++at;
    const bool picture =
        at < lines.size() && lines[at].starts_with("Error: SKP library could not write ");
    const bool atOnce = at == 1 && !picture;
    const Lines rest(lines.begin() + ptrdiff_t(at + picture), lines.end());
    const std::string rc = "Error importing " + source + " (rc=" + std::to_string(code) + ")";
    switch (code) {
    case 0:
        return !picture && rest == Lines{"Success. " + source + " imported to " + SceneName};
    case 10:
        return atOnce && rest == Lines{"Error opening " + source, rc};
    case 11:
        return !picture && rest == Lines{"Error writing " + SceneName};
    case 12:
        return picture && rest == Lines{rc};
    case 13:
        return rest == Lines{"SKP Import failed - error reading file", rc} ||
               (atOnce && rest == Lines{"Error creating texture writer", rc});
    default:
        return false;
    }
}

// The fault in what a run with limits, signals or closed streams leaves; empty if there is none.
std::string CheckTrouble(const Job& job, int code, const std::string& scene, const std::string& log,
                         bool isSound) {
    const Whole& whole = wholes.at(job.Model);
    if (job.Call.Signal != 0 && code >= SignalBase) {
        const bool isCutOff = whole.Scene.starts_with(scene) && !isSound;
        return scene == EarlierScene || scene == whole.Scene || isCutOff ? "" : "a scene of other bytes";
    }
    if (code == 0 && scene != whole.Scene)
        return "another scene than without the trouble";
    if (code == 0 && !job.Call.FileLimit && log != LogBytes(whole.Output))
        return "another log than without the trouble";
    if (job.Call.Output != OutputTo::Result && code != 0)
        return "output that nobody reads ends the run with " + std::to_string(code);
    return {};
}

// The fault in the outcome of a run; empty if there is none.
std::string Check(const Job& job, const Place& place, const std::string& source,
                  const ProgramResult& result) {
    const int code = result.ExitCode;
    const std::string scene = fs::exists(place.Scene) ? ReadBytes(place.Scene) : "";
    const std::string log = fs::exists(place.Log) ? ReadBytes(place.Log) : "";
    StoredScene stored;
    const auto fault = ReadStoredSceneFile(place.Scene.u16string(), stored);
    if (wholes.contains(job.Model)) {
        std::string wrong = CheckTrouble(job, code, scene, log, !fault);
        const bool isEnded = job.Call.Signal != 0 && code >= SignalBase;
        if (!wrong.empty() || isEnded || job.Call.Output != OutputTo::Result)
            return wrong;
    }
    const bool noMemory = code == OutOfMemoryCode && !job.Call.Environment.empty();
    const std::set<int> allowed = job.Call.FileLimit ? std::set{0, 11, 12} : std::set{0, 10, 12, 13};
    if (!allowed.contains(code) && !noMemory)
        return "exit code " + std::to_string(code) + ": " + result.Errors.substr(0, 2000);
    if (code == 0 && fault)
        return "scene file: " + Utf8FromUtf16(FaultText(*fault));
    if (code != 0 && code != 11 && !noMemory && scene != EarlierScene)
        return "an earlier scene file is gone";
    if (noMemory) {
        // Memory can run out between the two: then only the log has the last line.
        const std::string begin = log.empty() ? result.Output : LogBytes(result.Output);
        if (result.Errors.find("out of memory") == std::string::npos || !log.starts_with(begin) ||
            std::count(log.begin() + ptrdiff_t(begin.size()), log.end(), '\n') > 1)
            return "out of memory with another message or log: " + result.Errors;
        return {};
    }
    if (!IsSequence(result.Output, code, source))
        return "output: " + result.Output;
    // A file limit can cut the log.
    return job.Call.FileLimit || log == LogBytes(result.Output) ? "" : "another log than the output";
}

// The result of the last run in the place.
ProgramResult RunJob(const Job& job, const Place& place) {
    WriteBytes(place.Scene, EarlierScene);
    fs::remove(place.Log);
    const std::string source = IsScripted(job) ? "script.json" : job.Model;
    if (IsScripted(job)) {
        Json script = Json::parse(job.Model.empty() ? RandomScript(job.Seed) : ReadBytes(job.Model));
        if (!job.Model.empty())
            script["faults"] = {job.Fault};
        WriteBytes(place.Folder / source, script.dump());
    }
    ProgramCall call = job.Call;
    call.Program = programs / "orvane";
    call.Arguments = {Utf16FromUtf8(source), Utf16FromUtf8(SceneName), u"maps", u"out/run.log"};
    call.WorkingDirectory = place.Folder;
    call.LibraryDirectory = IsScripted(job) ? programs / "scripted" : programs;
    ProgramResult result = RunProgram(call);
    const std::string wrong = Check(job, place, source, result);
    const std::scoped_lock lock(codesMutex);
    ++codes[result.ExitCode];
    if (!wrong.empty()) {
        ++faults;
        std::fprintf(stderr, "FAULT: %s: %s\n", Text(job).c_str(), wrong.c_str());
    }
    return result;
}

// The calls or requests to inject a fault at.
std::vector<uint64_t> Chosen(uint64_t count, uint64_t each) {
    std::vector<uint64_t> chosen;
    for (uint64_t call = 1; call <= std::min(count, each); ++call)
        chosen.push_back(call);
    const uint64_t stride = count <= 2 * each ? 1 : (count - each) / each;
    for (uint64_t call = each + stride; call <= count; call += stride)
        chosen.push_back(call);
    return chosen;
}

std::vector<Job> CallJobs(const std::string& script, uint64_t each, const Place& place) {
    const fs::path record = place.Folder / "calls";
    Job probe = {.Model = script, .Fault = {{"operation", "none"}, {"kind", "fail"}}};
    probe.Call.Environment = {{"ORVANE_SCRIPTED_RECORD", record.string()}};
    RunJob(probe, place);
    // By operation: the number of calls, and the kinds of fault that they can have.
    std::map<std::string, std::pair<uint64_t, std::set<std::string>>> operations;
    std::istringstream lines(ReadBytes(record));
    std::string operation;
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with("# ")) {
            operations[operation].second.insert(line.substr(2));
        } else {
            operation = line.substr(0, line.find(' '));
            ++operations[operation].first;
        }
    std::vector<Job> jobs;
    for (const auto& [name, callsAndKinds] : operations)
        for (const std::string& kind : callsAndKinds.second)
            for (const uint64_t call : Chosen(callsAndKinds.first, each))
                for (const char* span : {"call", "from"}) {
                    if (span == std::string("from") && call == callsAndKinds.first)
                        continue;
                    Json fault = {{"operation", name}, {"kind", kind}, {span, call}};
                    jobs.push_back({.Model = script, .Fault = fault});
                    for (const uint64_t count : {uint64_t(0), uint64_t(1) << 31, ~uint64_t(0)})
                        if (kind == "count") {
                            fault["value"] = count;
                            jobs.push_back({.Model = script, .Fault = fault});
                        }
                }
    std::printf("%zu of the 64 operations are reached\n", operations.size());
    return jobs;
}

std::vector<Job> MemoryJobs(const std::string& document, uint64_t each, const Place& place) {
    const fs::path counted = place.Folder / "requests";
    Job job = {.Model = document};
    job.Call.Environment = {{"LD_PRELOAD", (programs / "libFailingNew.so").string()},
                            {"ORVANE_COUNT_NEW", counted.string()}};
    RunJob(job, place);
    std::vector<Job> jobs;
    for (const uint64_t request : Chosen(std::stoull(ReadBytes(counted)), each))
        for (const char* span : {" only", " from"}) {
            job.Call.Environment[1] = {"ORVANE_FAIL_NEW", std::to_string(request) + span};
            jobs.push_back(job);
        }
    return jobs;
}

std::vector<Job> MachineJobs(const std::string& document, uint64_t steps, const Place& place) {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    const ProgramResult result = RunJob({.Model = document}, place);
    const auto took = uint64_t((Clock::now() - start) / std::chrono::microseconds(1));
    const std::string scene = ReadBytes(place.Scene);
    wholes[document] = {scene, result.Output};
    std::vector<Job> jobs(2 * steps + 2, {.Model = document});
    for (uint64_t step = 0; step < steps; ++step) {
        jobs[2 * step].Call.Signal = step % 2 == 0 ? SIGTERM : SIGKILL;
        jobs[2 * step].Call.SignalDelay = unsigned(took * step / steps);
        jobs[2 * step + 1].Call.FileLimit = scene.size() * step / steps;
    }
    jobs[2 * steps].Call.Output = OutputTo::Closed;
    jobs[2 * steps + 1].Call.Output = OutputTo::BrokenPipe;
    return jobs;
}

// Distributes the jobs over one thread per processor.
void RunAll(const std::vector<Job>& jobs, const fs::path& folder) {
    const size_t count = std::max(1u, std::thread::hardware_concurrency());
    std::vector<std::jthread> workers;
    for (size_t worker = 0; worker < count; ++worker)
        workers.emplace_back([&jobs, place = Place(folder / std::to_string(worker)), worker, count] {
            for (size_t i = worker; i < jobs.size(); i += count)
                RunJob(jobs[i], place);
        });
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    const std::string mode = arguments.size() > 3 ? arguments[1] : "";
    if (mode != "calls" && mode != "random" && mode != "memory" && mode != "machine") {
        std::fprintf(stderr, "fault-sweep PROGRAMS calls EACH SCRIPT | random RUNS FIRST |\n"
                             "            memory EACH DOCUMENT... | machine STEPS DOCUMENT...\n");
        return 2;
    }
    programs = fs::absolute(arguments[0]);
    const uint64_t amount = std::stoull(arguments[2]);
    const TempFolder folder;
    const Place place(folder.Path / "first");
    std::vector<Job> jobs;
    if (mode == "random") {
        const uint64_t first = std::stoull(arguments[3]);
        for (uint64_t i = 0; i < amount; ++i)
            jobs.push_back({.Seed = first + i});
    }
    for (size_t i = 3; i < arguments.size() && mode != "random"; ++i) {
        const auto jobsOf = mode == "calls" ? CallJobs : mode == "memory" ? MemoryJobs : MachineJobs;
        const std::vector<Job> more = jobsOf(fs::absolute(arguments[i]).string(), amount, place);
        jobs.insert(jobs.end(), more.begin(), more.end());
    }
    RunAll(jobs, folder.Path);
    uint64_t runs = 0;
    std::string text;
    for (const auto& [code, count] : codes) {
        runs += count;
        text += " " + std::to_string(code) + ": " + std::to_string(count);
    }
    std::printf("%llu runs, %llu faults; exit codes:%s\n", static_cast<unsigned long long>(runs),
                static_cast<unsigned long long>(faults), text.c_str());
    return faults == 0 ? 0 : 1;
}
