// Loads scripts, chooses faults, and records calls: one call per line in the file that the environment
// variable ORVANE_SCRIPTED_RECORD names.
#include "Script.h"

#include "platform/Platform.h"

#include <cstdio>
#include <cstdlib>
#include <map>

using Json = nlohmann::json;

namespace {

constexpr int DeadExitCode = 99;

// Global, because the library's C interface has no object.
Json script;
std::map<std::string, uint64_t> calls;
uint64_t allCalls = 0;
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
    static const std::map<std::string, FaultKind> Kinds = {
        {"fail", FaultKind::Fail},     {"fail late", FaultKind::FailLate},
        {"silent", FaultKind::Silent}, {"null", FaultKind::Null},
        {"count", FaultKind::Count},   {"unterminated", FaultKind::Unterminated},
    };
    const auto found = Kinds.find(name);
    if (found == Kinds.end())
        Violation("unknown kind of fault: " + name);
    return found == Kinds.end() ? FaultKind::None : found->second;
}

} // namespace

bool LoadScript(const std::string& path) {
    std::FILE* file = OpenForReading(Utf16FromUtf8(path));
    if (file == nullptr)
        return false;
    script = Json::parse(file, nullptr, false);
    std::fclose(file);
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
    if (faults == script.end())
        return {};
    for (const Json& fault : *faults) {
        const bool any = fault["operation"] == "*";
        const uint64_t call = any ? allCalls : ofOperation;
        if ((any || fault["operation"] == operation) && fault.value("call", call) == call &&
            fault.value("from", call) <= call) {
            hadFault = true;
            Record("# " + fault["kind"].get<std::string>());
            if (fault["kind"] == "die")
                std::_Exit(DeadExitCode);
            return {KindFrom(fault["kind"]), fault.value("value", uint64_t(0))};
        }
    }
    return {};
}

void Violation(const std::string& text) {
    Record("! " + text);
}

bool HadFault() {
    return hadFault;
}
