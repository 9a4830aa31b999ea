// Runs a program as a child process and waits for its end. One implementation per system.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// Where standard output goes.
enum class OutputTo { Result, Closed, BrokenPipe };

struct ProgramCall {
    std::filesystem::path Program;
    std::vector<std::u16string> Arguments;  // Without the program's name; may be empty.
    std::filesystem::path WorkingDirectory; // Must exist; empty: the caller's.
    // The first folder that is searched for shared libraries. Empty: the default search.
    std::filesystem::path LibraryDirectory;
    // Additional environment variables: names and values in ASCII.
    std::vector<std::pair<std::string, std::string>> Environment;
    // Limit of the address space in bytes; 0: none. With sanitizers, limit of each request. Not on
    // Windows.
    uint64_t MemoryLimit = 0;
    // Whether file permissions apply even if the caller is root. Not on Windows.
    bool Unprivileged = false;
    // Limit of the size of a file in bytes. Not on Windows.
    std::optional<uint64_t> FileLimit = {};
    // A signal, if not 0, and the microseconds from the start until then. Not on Windows.
    int Signal = 0;
    unsigned SignalDelay = 0;
    OutputTo Output = OutputTo::Result; // Not on Windows.
};

struct ProgramResult {
    int ExitCode = -1;  // Above 255: not started, or killed by the signal with this number above 256.
    std::string Output; // Standard output, byte for byte.
    std::string Errors; // Standard error output, byte for byte.
};

// A program that runs for longer is ended.
constexpr unsigned ProgramSeconds = 60;

ProgramResult RunProgram(const ProgramCall& call);
