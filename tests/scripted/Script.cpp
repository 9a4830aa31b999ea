// Loads scripts, chooses faults, and records calls: one call per line in the file that the environment
// variable ORVANE_SCRIPTED_RECORD names.
#include "Script.h"

#include "platform/Platform.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <map>
#include <random>

using Json = nlohmann::json;

namespace {

constexpr int DeadExitCode = 99;

// In the order of FaultKind.
constexpr const char* KindNames[] = {"none", "fail",  "fail late", "scribble", "silent",
                                     "lie",  "count", "null",      "swap"};

// Global, because the library's C interface has no object.
Json script;
std::map<std::string, uint64_t> calls;
uint64_t allCalls = 0;
uint64_t rate = 0; // of random faults
std::mt19937_64 engine;
bool hadFault = false;

void Record(const std::string& line) {
    static std::FILE* const File = [] {
        const char* path = std::getenv("ORVANE_SCRIPTED_RECORD");
        return path != nullptr ? OpenForWriting(Utf16FromUtf8(path)) : nullptr;
    }();
    if (File != nullptr) {
        std::fputs((line + "\n").c_str(), File);
        std::fflush(File);
    }
}

FaultKind KindFrom(const std::string& name) {
    const auto* const found = std::ranges::find(KindNames, name);
    if (found == std::end(KindNames))
        Violation("unknown kind of fault: " + name);
    return found == std::end(KindNames) ? FaultKind::None : FaultKind(found - KindNames);
}

Fault RandomFault() {
    constexpr uint64_t counts[] = {0,          1,    2, 1000, 1u << 31, 1ull << 32, (1ull << 32) + 1,
                                   1ull << 63, ~0ull};
    if (rate == 0 || Random(rate) != 0)
        return {};
    const auto kind = FaultKind(1 + Random(std::size(KindNames) - 1));
    return Random(2) == 0 ? Fault{kind} : Fault{kind, counts[Random(std::size(counts))]};
}

} // namespace

bool LoadScript(const std::string& path) {
    std::FILE* file = OpenForReading(Utf16FromUtf8(path));
    if (file == nullptr)
        return false;
    script = Json::parse(file, nullptr, false);
    std::fclose(file);
    if (script.contains("random")) {
        engine.seed(script["random"]["seed"].get<uint64_t>());
        rate = script["random"]["rate"];
    }
    return !script.is_discarded();
}

const Json& Script() {
    return script;
}

Fault NextCall(const char* operation, const std::string& detail) {
    Record(detail.empty() ? operation : operation + (" " + detail));
    const uint64_t ofOperation = ++calls[operation];
    ++allCalls;
    const auto faults = script.find("faults");
    if (faults != script.end())
        for (const Json& fault : *faults) {
            const bool any = fault["operation"] == "*";
            const uint64_t call = any ? allCalls : ofOperation;
            if ((any || fault["operation"] == operation) && fault.value("call", call) == call &&
                fault.value("from", call) <= call) {
                hadFault = true;
                if (fault["kind"] == "die")
                    std::_Exit(DeadExitCode);
                const Fault found = {KindFrom(fault["kind"])};
                return fault.contains("value") ? Fault{found.Kind, fault["value"].get<uint64_t>()}
                                               : found;
            }
        }
    const Fault fault = RandomFault();
    hadFault = hadFault || fault.Kind != FaultKind::None;
    return fault;
}

bool Has(const Fault& fault, FaultKind kind) {
    Record(std::string("# ") + KindNames[size_t(kind)]);
    return fault.Kind == kind;
}

uint64_t Random(uint64_t end) {
    return engine() % end;
}

void Violation(const std::string& text) {
    Record("! " + text);
}

bool HadFault() {
    return hadFault;
}
