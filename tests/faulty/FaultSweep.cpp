// Runs orvane thousands of times with injected faults and checks how every run ends.
//
//   fault-sweep PROGRAMS calls EACH DOCUMENT...    each kind of fault in each operation, and failing
//               memory requests: at the first EACH calls, then at as many again in equal strides
//   fault-sweep PROGRAMS random RUNS FIRST DOCUMENT...    random faults from seed FIRST on, with the
//               documents and with random models of the scripted library
//   fault-sweep PROGRAMS machine STEPS DOCUMENT...    file size limits, signals, closed streams
//
// PROGRAMS is the build folder. Prints the number of runs. Exit code 0: no run was at fault.
#include "RandomScript.h"
#include "inspect/stored/SceneReader.h"
#include "platform/Platform.h"
#include "support/Files.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <map>
#include <new>
#include <set>
#include <spawn.h>
#include <sstream>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr unsigned RunSeconds = 60; // limit of a run
constexpr int OutOfMemoryCode = 20;
constexpr int SignalBase = 256;
constexpr uint64_t Unlimited = ~uint64_t(0);
const std::string EarlierScene = "an earlier scene file";

enum class Trouble { None, FileLimit, Signal, ClosedOutput, BrokenPipe };

// All parameters of a run.
struct Job {
    std::string Document = {}; // path; or the seed of a random script
    bool Scripted = false;
    std::string Fault = {};     // ORVANE_FAULT
    std::string CallsFile = {}; // ORVANE_FAULT_CALLS
    Trouble What = Trouble::None;
    uint64_t Value = 0; // bytes of the limit, or microseconds until the signal
};

struct Outcome {
    int Code = -1;
    std::string Output;
    std::string Errors;
};

// A worker's folder and the paths of its runs.
struct Place {
    fs::path Folder;
    fs::path Scene;
    fs::path Log;

    explicit Place(const fs::path& folder)
        : Folder(folder), Scene(folder / "out" / "house.bin"), Log(folder / "out" / "run.log") {
        fs::create_directories(folder / "out");
    }
};

struct Counters {
    std::atomic<uint64_t> Runs;
    std::atomic<uint64_t> Faults;
    std::array<std::atomic<uint64_t>, size_t{2} * SignalBase> Codes;
};

fs::path programs;
std::map<std::string, std::string> wholeScenes; // of undisturbed runs, by document
Counters* counters = nullptr;
volatile pid_t running = 0; // for the alarm

std::string Text(const Job& job) {
    std::ostringstream text;
    text << (job.Scripted ? "script " : "") << job.Document << ": " << job.Fault;
    if (job.What != Trouble::None) {
        text << "trouble " << int(job.What) << " " << job.Value;
    }
    return text.str();
}

std::string ReadRest(int descriptor) {
    std::string bytes;
    char part[4096];
    for (ssize_t count = read(descriptor, part, sizeof part); count > 0;
         count = read(descriptor, part, sizeof part)) {
        bytes.append(part, size_t(count));
    }
    return bytes;
}

std::string SourceOf(const Job& job, const Place& place) {
    return job.Scripted ? (place.Folder / "script.json").string() : job.Document;
}

void SetFileLimit(uint64_t bytes) {
    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = std::min(bytes, uint64_t(limit.rlim_max));
    setrlimit(RLIMIT_FSIZE, &limit);
}

Outcome RunOnce(const Job& job, const Place& place) {
    const fs::path faulty = programs / "faulty";
    const std::string library =
        (programs / (job.Scripted ? "scripted/libSketchUpAPI.so" : "libSketchUpAPI.so")).string();
    std::vector<std::string> texts = {(programs / "orvane").string(), SourceOf(job, place),
                                      place.Scene.string(), "maps", place.Log.string()};
    std::vector<std::string> settings = {"ORVANE_FAULT_LIBRARY=" + library, "ORVANE_FAULT=" + job.Fault};
    if (job.What == Trouble::None) {
        settings.push_back("LD_LIBRARY_PATH=" + faulty.string());
    }
    if (!job.CallsFile.empty()) {
        settings.push_back("ORVANE_FAULT_CALLS=" + job.CallsFile);
    }
    for (const char* name : {"ASAN_OPTIONS", "UBSAN_OPTIONS"}) {
        const char* value = std::getenv(name);
        if (value != nullptr) {
            settings.push_back(name + ("=" + std::string(value)));
        }
    }
    const auto pointers = [](std::vector<std::string>& from) {
        std::vector<char*> result;
        result.reserve(from.size() + 1);
        for (std::string& text : from) {
            result.push_back(text.data());
        }
        result.push_back(nullptr);
        return result;
    };

    int output[2] = {};
    if (pipe2(output, O_CLOEXEC) != 0) {
        std::abort();
    }
    const int errors = open(place.Folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
    if (job.What == Trouble::ClosedOutput) {
        posix_spawn_file_actions_addclose(&actions, STDOUT_FILENO);
    }
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    Outcome outcome;
    pid_t child = 0;
    SetFileLimit(job.What == Trouble::FileLimit ? job.Value : Unlimited);
    const int failed = posix_spawn(&child, texts[0].c_str(), &actions, &attributes,
                                   pointers(texts).data(), pointers(settings).data());
    SetFileLimit(Unlimited);
    close(output[1]);
    if (job.What == Trouble::BrokenPipe) {
        close(output[0]);
    }
    if (failed == 0) {
        running = child;
        alarm(RunSeconds);
        if (job.What == Trouble::Signal) {
            usleep(useconds_t(job.Value));
            kill(child, job.Value % 2 == 0 ? SIGTERM : SIGKILL);
        }
        if (job.What != Trouble::BrokenPipe) {
            outcome.Output = ReadRest(output[0]);
        }
        int status = 0;
        waitpid(child, &status, 0);
        alarm(0);
        outcome.Code = WIFEXITED(status) ? WEXITSTATUS(status) : SignalBase + WTERMSIG(status);
    }
    if (job.What != Trouble::BrokenPipe) {
        close(output[0]);
    }
    lseek(errors, 0, SEEK_SET);
    outcome.Errors = ReadRest(errors);
    close(errors);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    return outcome;
}

// The text of a log as UTF-8; empty if the bytes are not a log.
std::string TextOfLog(const std::string& bytes) {
    if (bytes.size() % 2 != 0 || !bytes.starts_with("\xFF\xFE")) {
        return {};
    }
    std::u16string units;
    for (size_t i = 2; i < bytes.size(); i += 2) {
        units.push_back(char16_t(uint8_t(bytes[i]) | uint8_t(bytes[i + 1]) << 8));
    }
    return Utf8FromUtf16(units);
}

// Whether the lines are valid for a run with this exit code.
bool IsSequence(const std::string& text, int code, const std::string& source, const std::string& scene) {
    std::vector<std::string> lines;
    for (size_t start = 0; start < text.size();) {
        const size_t end = text.find("\r\n", start);
        if (end == text.npos) {
            return false;
        }
        lines.push_back(text.substr(start, end - start));
        start = end + 2;
    }
    const std::string rc = "Error importing " + source + " (rc=" + std::to_string(code) + ")";
    if (code == OutOfMemoryCode) {
        return true; // ends anywhere
    }
    if (lines.empty() || lines[0] != "Importing " + source + " to " + scene) {
        return false;
    }
    size_t at = 1;
    while (at < lines.size() && lines[at].starts_with("Writing: ")) {
        ++at;
    }
    const bool picture =
        at < lines.size() && lines[at].starts_with("Error: SKP library could not write ");
    const bool atOnce = at == 1 && !picture;
    const std::vector<std::string> rest(lines.begin() + ptrdiff_t(at + picture), lines.end());
    using Lines = std::vector<std::string>;
    switch (code) {
    case 0:
        return !picture && rest == Lines{"Success. " + source + " imported to " + scene};
    case 10:
        return atOnce && rest == Lines{"Error opening " + source, rc};
    case 11:
        return !picture && rest == Lines{"Error writing " + scene};
    case 12:
        return picture && rest == Lines{rc};
    case 13:
        return rest == Lines{"SKP Import failed - error reading file", rc} ||
               (atOnce && rest == Lines{"Error creating texture writer", rc});
    default:
        return false;
    }
}

// The fault in the outcome of a run; empty if there is none.
std::string Check(const Job& job, const Place& place, const Outcome& outcome) {
    const std::string source = SourceOf(job, place);
    const std::string scene = fs::exists(place.Scene) ? ReadBytes(place.Scene) : "";
    const std::string logBytes = fs::exists(place.Log) ? ReadBytes(place.Log) : "";
    StoredScene stored;
    const auto fault = ReadStoredSceneFile(place.Scene.u16string(), stored);
    const std::string whole = job.What == Trouble::None ? "" : wholeScenes.at(job.Document);
    if (job.What == Trouble::Signal && outcome.Code >= SignalBase) {
        const bool isCutOff = whole.starts_with(scene) && fault.has_value();
        return scene == EarlierScene || scene == whole || isCutOff ? "" : "a scene of other bytes";
    }
    if (job.What != Trouble::None && outcome.Code == 0 && scene != whole) {
        return "another scene than without the trouble";
    }
    if ((job.What == Trouble::ClosedOutput || job.What == Trouble::BrokenPipe) && outcome.Code != 0) {
        return "output that nobody reads ends the run with " + std::to_string(outcome.Code);
    }
    const bool ownMemory = job.Fault.starts_with("new ");
    const std::set<int> codes = job.What == Trouble::FileLimit ? std::set{0, 11, 12}
                                : ownMemory                    ? std::set{0, 10, 12, 13, OutOfMemoryCode}
                                                               : std::set{0, 10, 12, 13};
    if (codes.count(outcome.Code) == 0) {
        return "exit code " + std::to_string(outcome.Code) + ": " + outcome.Errors.substr(0, 2000);
    }
    if (outcome.Code == 0 && fault) {
        return "scene file: " + Utf8FromUtf16(FaultText(*fault));
    }
    if (outcome.Code != 0 && outcome.Code != 11 && scene != EarlierScene &&
        outcome.Code != OutOfMemoryCode) {
        return "an earlier scene file is gone";
    }
    if (outcome.Code == OutOfMemoryCode && outcome.Errors.find("out of memory") == std::string::npos) {
        return "out of memory without a message";
    }
    // A file limit can cut the log, but not standard output.
    const std::string log = job.What == Trouble::FileLimit ? outcome.Output : TextOfLog(logBytes);
    if (!IsSequence(log, outcome.Code, source, place.Scene.string())) {
        return "log: " + log;
    }
    // Memory can run out between the two: then only the log has the last line.
    const bool isCutOff =
        outcome.Code == OutOfMemoryCode && log.starts_with(outcome.Output) &&
        std::count(log.begin() + static_cast<ptrdiff_t>(outcome.Output.size()), log.end(), '\n') <= 1;
    if (job.What == Trouble::None && outcome.Output != log && !isCutOff) {
        return "standard output is not the log: " + outcome.Output;
    }
    return {};
}

void RunJob(const Job& job, const Place& place) {
    WriteBytes(place.Scene, EarlierScene);
    fs::remove(place.Log);
    if (job.Scripted) {
        WriteBytes(SourceOf(job, place), RandomScript(std::stoull(job.Document)));
    }
    const Outcome outcome = RunOnce(job, place);
    ++counters->Runs;
    ++counters->Codes[size_t(outcome.Code) % counters->Codes.size()];
    const std::string wrong = Check(job, place, outcome);
    if (!wrong.empty()) {
        ++counters->Faults;
        std::fprintf(stderr, "FAULT: %s: %s\n", Text(job).c_str(), wrong.c_str());
    }
}

// The calls to inject a fault at.
std::vector<uint64_t> ChosenCalls(uint64_t calls, uint64_t each) {
    std::vector<uint64_t> chosen;
    for (uint64_t call = 1; call <= std::min(calls, each); ++call) {
        chosen.push_back(call);
    }
    const uint64_t stride = calls <= 2 * each ? 1 : (calls - each) / each;
    for (uint64_t call = each + stride; call <= calls; call += stride) {
        chosen.push_back(call);
    }
    return chosen;
}

// An operation in a document's run: name, number of calls, kinds of fault that apply.
struct OperationCalls {
    std::string Name;
    uint64_t Calls = 0;
    std::vector<std::string> Kinds;
};

std::vector<OperationCalls> CallsOf(const std::string& document, const Place& place) {
    const fs::path record = place.Folder / "calls";
    RunJob({.Document = document, .CallsFile = record.string()}, place);
    std::vector<OperationCalls> operations;
    std::ifstream lines(record);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        OperationCalls& operation = operations.emplace_back();
        words >> operation.Name >> operation.Calls;
        for (std::string kind; words >> kind;) {
            for (const char* value : {"0", "+1", "2147483648", "18446744073709551615"}) {
                operation.Kinds.push_back(kind == "count" ? kind + " " + value : kind);
                if (kind != "count") {
                    break;
                }
            }
        }
    }
    return operations;
}

std::vector<Job> CallJobs(const std::vector<std::string>& documents, uint64_t each, const Place& place) {
    std::vector<Job> jobs;
    std::set<std::string> reached;
    for (const std::string& document : documents) {
        for (const OperationCalls& operation : CallsOf(document, place)) {
            reached.insert(operation.Name);
            for (const uint64_t call : ChosenCalls(operation.Calls, each)) {
                for (const std::string& kind : operation.Kinds) {
                    for (const char* span : {" only ", " from "}) {
                        jobs.push_back(
                            {.Document = document,
                             .Fault = operation.Name + " " + std::to_string(call) + span + kind});
                    }
                }
            }
        }
    }
    std::printf("%zu of the 62 operations that can fail are reached\n", reached.size() - 1);
    return jobs;
}

std::vector<Job> RandomJobs(const std::vector<std::string>& documents, uint64_t runs, uint64_t seed) {
    constexpr uint64_t documentsShare = 8; // one run in this many uses a document
    constexpr uint64_t rates[] = {3, 20, 100, 1000000};
    std::vector<Job> jobs;
    for (uint64_t i = 0; i < runs; ++i) {
        Job& job = jobs.emplace_back();
        job.Scripted = i % documentsShare != 0;
        job.Document =
            job.Scripted ? std::to_string(seed + i) : documents[(i / documentsShare) % documents.size()];
        job.Fault = "random " + std::to_string(seed + i) + " " + std::to_string(rates[i / 3 % 4]);
    }
    return jobs;
}

std::vector<Job> MachineJobs(const std::vector<std::string>& documents, uint64_t steps,
                             const Place& place) {
    std::vector<Job> jobs;
    for (const std::string& document : documents) {
        timeval start = {};
        gettimeofday(&start, nullptr);
        RunJob({.Document = document}, place);
        timeval end = {};
        gettimeofday(&end, nullptr);
        const auto took = uint64_t((end.tv_sec - start.tv_sec) * 1000000 + end.tv_usec - start.tv_usec);
        const uint64_t size = fs::file_size(place.Scene);
        wholeScenes[document] = ReadBytes(place.Scene);
        for (uint64_t step = 0; step < steps; ++step) {
            jobs.push_back(
                {.Document = document, .What = Trouble::Signal, .Value = took * step / steps});
            jobs.push_back(
                {.Document = document, .What = Trouble::FileLimit, .Value = size * step / steps});
        }
        jobs.push_back({.Document = document, .What = Trouble::ClosedOutput});
        jobs.push_back({.Document = document, .What = Trouble::BrokenPipe});
    }
    return jobs;
}

// Distributes the jobs over one process per processor.
void RunAll(const std::vector<Job>& jobs, const fs::path& folder) {
    const auto workers = size_t(sysconf(_SC_NPROCESSORS_ONLN));
    for (size_t worker = 0; worker < workers; ++worker) {
        if (fork() == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            std::signal(SIGALRM, [](int) { kill(running, SIGKILL); });
            const Place place(folder / std::to_string(worker));
            for (size_t i = worker; i < jobs.size(); i += workers) {
                RunJob(jobs[i], place);
            }
            _exit(0);
        }
    }
    for (size_t worker = 0; worker < workers; ++worker) {
        int status = 0;
        wait(&status);
        if (status != 0) {
            std::fprintf(stderr, "FAULT: a worker has died\n");
            ++counters->Faults;
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    const std::string mode = arguments.size() > 3 ? arguments[1] : "";
    const size_t options = mode == "random" ? 4 : 3;
    if ((mode != "calls" && mode != "random" && mode != "machine") || arguments.size() <= options) {
        std::fprintf(
            stderr, "fault-sweep PROGRAMS calls EACH | random RUNS FIRST | machine STEPS DOCUMENT...\n");
        return 2;
    }
    programs = fs::absolute(arguments[0]);
    const uint64_t amount = std::stoull(arguments[2]);
    std::vector<std::string> documents;
    for (size_t i = options; i < arguments.size(); ++i) {
        documents.push_back(fs::absolute(arguments[i]).string());
    }
    counters =
        new (mmap(nullptr, sizeof(Counters), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))
            Counters();
    const TempFolder folder;
    const Place place(folder.Path / "first");
    const std::vector<Job> jobs = mode == "calls" ? CallJobs(documents, amount, place)
                                  : mode == "random"
                                      ? RandomJobs(documents, amount, std::stoull(arguments[3]))
                                      : MachineJobs(documents, amount, place);
    RunAll(jobs, folder.Path);
    std::printf("%llu runs, %llu faults; exit codes:", static_cast<unsigned long long>(counters->Runs),
                static_cast<unsigned long long>(counters->Faults));
    for (size_t code = 0; code < counters->Codes.size(); ++code) {
        if (counters->Codes[code] != 0) {
            std::printf(" %zu: %llu", code, static_cast<unsigned long long>(counters->Codes[code]));
        }
    }
    std::printf("\n");
    return counters->Faults == 0 ? 0 : 1;
}
