// Child processes on POSIX systems. Their output goes to unnamed files, so that long output can't block.
#include "support/RunProgram.h"

#include "platform/Platform.h"

#include <cstdio>
#include <cstdlib>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int NotStarted = 127;
constexpr int SignalBase = 256;

std::string ReadAll(std::FILE* file) {
    std::string bytes;
    std::rewind(file);
    for (int byte = std::fgetc(file); byte != EOF; byte = std::fgetc(file))
        bytes.push_back(char(byte));
    std::fclose(file);
    return bytes;
}

void LimitMemory(uint64_t limit) {
#ifdef __SANITIZE_ADDRESS__
    // The sanitizer's own address space is far above any limit.
    const std::string options =
        "allocator_may_return_null=1:max_allocation_size_mb=" + std::to_string(limit >> 20);
    setenv("ASAN_OPTIONS", options.c_str(), 1);
#else
    const rlimit both = {limit, limit};
    setrlimit(RLIMIT_AS, &both);
#endif
}

// In the child, after the fork.
[[noreturn]] void Become(const ProgramCall& call, int output, int errors) {
    std::vector<std::string> texts = {call.Program.string()};
    for (const std::u16string& argument : call.Arguments)
        texts.push_back(Utf8FromUtf16(argument));
    std::vector<char*> arguments;
    arguments.reserve(texts.size() + 1);
    for (std::string& text : texts)
        arguments.push_back(text.data());
    arguments.push_back(nullptr);
    for (const auto& [name, value] : call.Environment)
        setenv(name.c_str(), value.c_str(), 1);
    if (!call.LibraryDirectory.empty())
        setenv("LD_LIBRARY_PATH", call.LibraryDirectory.c_str(), 1);
    if (call.MemoryLimit != 0)
        LimitMemory(call.MemoryLimit);
    if (call.Unprivileged)
        for (const int capability : {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH})
            prctl(PR_CAPBSET_DROP, static_cast<unsigned long>(capability), 0, 0, 0);
    const bool placed = call.WorkingDirectory.empty() || chdir(call.WorkingDirectory.c_str()) == 0;
    if (placed && dup2(output, STDOUT_FILENO) >= 0 && dup2(errors, STDERR_FILENO) >= 0) {
        alarm(ProgramSeconds);
        execv(arguments[0], arguments.data());
    }
    _exit(NotStarted);
}

} // namespace

ProgramResult RunProgram(const ProgramCall& call) {
    std::FILE* output = std::tmpfile();
    std::FILE* errors = std::tmpfile();
    if (output == nullptr || errors == nullptr)
        return {SignalBase, "", "no temporary file"};
    const pid_t child = fork();
    if (child == 0)
        Become(call, fileno(output), fileno(errors));
    int status = 0;
    ProgramResult result;
    if (child > 0 && waitpid(child, &status, 0) == child)
        result.ExitCode = WIFEXITED(status) ? WEXITSTATUS(status) : SignalBase + WTERMSIG(status);
    else
        result.ExitCode = SignalBase;
    if (result.ExitCode == NotStarted)
        result.ExitCode += SignalBase;
    result.Output = ReadAll(output);
    result.Errors = ReadAll(errors);
    return result;
}
