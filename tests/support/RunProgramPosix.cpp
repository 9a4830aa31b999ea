// Child processes on POSIX systems. Errors go to an unnamed file, so that long output can't
// block; standard output goes through a pipe, to which a limit of file sizes doesn't apply.
#include "support/RunProgram.h"

#include "platform/Platform.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
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
    for (int byte = std::fgetc(file); byte != EOF; byte = std::fgetc(file))
        bytes.push_back(char(byte));
    std::fclose(file);
    return bytes;
}

// This process's environment with the changes of the call.
std::vector<std::string> EnvironmentOf(const ProgramCall& call) {
    auto changes = call.Environment;
    if (!call.LibraryDirectory.empty())
        changes.emplace_back("LD_LIBRARY_PATH", call.LibraryDirectory);
#ifdef __SANITIZE_ADDRESS__
    // The sanitizer's own address space is far above any limit.
    if (call.MemoryLimit != 0)
        changes.emplace_back("ASAN_OPTIONS", "allocator_may_return_null=1:max_allocation_size_mb=" +
                                                 std::to_string(call.MemoryLimit >> 20));
#endif
    std::vector<std::string> texts;
    for (char** text = environ; *text != nullptr; ++text)
        texts.emplace_back(*text);
    for (const auto& change : changes) {
        std::string text = change.first + "=";
        std::erase_if(texts, [&](const std::string& other) { return other.starts_with(text); });
        texts.push_back(text += change.second);
    }
    return texts;
}

std::vector<char*> PointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

// In the child, after the fork. Allocates nothing: another thread may have held the allocator's lock.
[[noreturn]] void Become(const ProgramCall& call, char* const* arguments, char* const* environment,
                         int output, int errors) {
#ifndef __SANITIZE_ADDRESS__
    if (call.MemoryLimit != 0) {
        const rlimit both = {call.MemoryLimit, call.MemoryLimit};
        setrlimit(RLIMIT_AS, &both);
    }
#endif
    if (call.FileLimit) {
        const rlimit both = {*call.FileLimit, *call.FileLimit};
        setrlimit(RLIMIT_FSIZE, &both);
    }
    if (call.Unprivileged)
        for (const int capability : {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH})
            prctl(PR_CAPBSET_DROP, static_cast<unsigned long>(capability), 0, 0, 0);
    const bool placed = call.WorkingDirectory.empty() || chdir(call.WorkingDirectory.c_str()) == 0;
    if (placed && dup2(output, STDOUT_FILENO) >= 0 && dup2(errors, STDERR_FILENO) >= 0) {
        if (call.Output == OutputTo::Closed)
            close(STDOUT_FILENO);
        alarm(ProgramSeconds);
        execve(arguments[0], arguments, environment);
    }
    _exit(NotStarted);
}

} // namespace

ProgramResult RunProgram(const ProgramCall& call) {
    int ends[2] = {};
    std::FILE* errors = std::tmpfile();
    if (errors == nullptr || pipe2(ends, O_CLOEXEC) != 0)
        return {SignalBase, "", "no temporary file or pipe"};
    std::FILE* output = fdopen(ends[0], "r");
    if (call.Output == OutputTo::BrokenPipe)
        std::fclose(output);
    std::vector<std::string> arguments = {call.Program.string()};
    for (const std::u16string& argument : call.Arguments)
        arguments.push_back(Utf8FromUtf16(argument));
    std::vector<std::string> environment = EnvironmentOf(call);
    const std::vector<char*> argumentPointers = PointersTo(arguments);
    const std::vector<char*> environmentPointers = PointersTo(environment);
    const pid_t child = fork();
    if (child == 0)
        Become(call, argumentPointers.data(), environmentPointers.data(), ends[1], fileno(errors));
    close(ends[1]);
    if (call.Signal != 0) {
        usleep(call.SignalDelay);
        kill(child, call.Signal);
    }
    ProgramResult result;
    if (call.Output != OutputTo::BrokenPipe)
        result.Output = ReadAll(output);
    int status = 0;
    if (child > 0 && waitpid(child, &status, 0) == child)
        result.ExitCode = WIFEXITED(status) ? WEXITSTATUS(status) : SignalBase + WTERMSIG(status);
    else
        result.ExitCode = SignalBase;
    if (result.ExitCode == NotStarted)
        result.ExitCode += SignalBase;
    std::rewind(errors);
    result.Errors = ReadAll(errors);
    return result;
}
