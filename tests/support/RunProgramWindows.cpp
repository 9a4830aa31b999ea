// Child processes on Windows. Their output goes to temporary files, so that long output can't block.
#include "support/RunProgram.h"

#include "support/Files.h"

#include <cstdio>
#include <windows.h>

namespace {

constexpr int NotRun = 256;
constexpr DWORD MillisecondsPerSecond = 1000;

std::wstring Wide(const std::u16string& text) {
    return {text.begin(), text.end()};
}

// An argument quoted for the parser of the C run-time library: backslashes are doubled before a quote.
std::wstring Quoted(const std::wstring& argument) {
    std::wstring text = L"\"";
    size_t backslashes = 0;
    for (const wchar_t unit : argument) {
        if (unit == L'"') {
            text.append(backslashes + 1, L'\\');
        }
        backslashes = unit == L'\\' ? backslashes + 1 : 0;
        text.push_back(unit);
    }
    text.append(backslashes, L'\\');
    return text + L'"';
}

// A file that a child may inherit.
HANDLE CreateOutput(const std::filesystem::path& path) {
    SECURITY_ATTRIBUTES inheritable = {};
    inheritable.nLength = sizeof inheritable;
    inheritable.bInheritHandle = TRUE;
    return CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inheritable, CREATE_ALWAYS,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

void SetVariables(const ProgramCall& call, bool present) {
    for (const auto& [name, value] : call.Environment) {
        SetEnvironmentVariableA(name.c_str(), present ? value.c_str() : nullptr);
    }
}

// The child's exit code, or NotRun.
int Run(const std::filesystem::path& program, const ProgramCall& call, HANDLE output, HANDLE errors) {
    std::wstring commandLine = Quoted(program.wstring());
    for (const std::u16string& argument : call.Arguments) {
        commandLine += L' ' + Quoted(Wide(argument));
    }
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    startup.hStdOutput = output;
    startup.hStdError = errors;
    PROCESS_INFORMATION process = {};
    const std::wstring folder = call.WorkingDirectory.wstring();
    SetVariables(call, true);
    // On a busy machine Wine sometimes fails to start a process, so that starting is tried three times.
    bool started = false;
    for (int attempt = 0; attempt < 3 && !started; ++attempt) {
        started = CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                 folder.empty() ? nullptr : folder.c_str(), &startup, &process) != 0;
        if (!started) {
            std::fprintf(stderr, "the program was not started: error %lu\n", GetLastError());
            Sleep(500);
        }
    }
    SetVariables(call, false);
    if (!started) {
        return NotRun;
    }
    if (WaitForSingleObject(process.hProcess, ProgramSeconds * MillisecondsPerSecond) != WAIT_OBJECT_0) {
        TerminateProcess(process.hProcess, NotRun);
    }
    DWORD code = NotRun;
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return static_cast<int>(code);
}

} // namespace

ProgramResult RunProgram(const ProgramCall& call) {
    const TempFolder aside;
    const std::filesystem::path outputPath = aside.Path / "output";
    const std::filesystem::path errorsPath = aside.Path / "errors";
    // A program loads libraries from its own folder: the library's folder has a copy of the program.
    const std::filesystem::path program =
        call.LibraryDirectory.empty() ? call.Program : call.LibraryDirectory / call.Program.filename();
    HANDLE output = CreateOutput(outputPath);
    HANDLE errors = CreateOutput(errorsPath);
    ProgramResult result;
    result.ExitCode = Run(program, call, output, errors);
    CloseHandle(output);
    CloseHandle(errors);
    result.Output = ReadBytes(outputPath);
    result.Errors = ReadBytes(errorsPath);
    return result;
}
