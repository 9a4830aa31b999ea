// Runs a program as a child process and waits for its end. One side per system.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

struct ProgramCall {
    std::filesystem::path Program;
    std::vector<std::u16string> Arguments;  // Without the program's own name; any text, also empty ones.
    std::filesystem::path WorkingDirectory; // Has to exist; empty stands for the caller's.
    // Shared libraries are taken from here before any other place. Empty: the program's own ways.
    std::filesystem::path LibraryDirectory;
    // Variables on top of the caller's environment: names and values in ASCII.
    std::vector<std::pair<std::string, std::string>> Environment;
    // The most memory the program may ask for, in bytes; 0 for no limit. Not on Windows. With sanitizers
    // it bounds each request by itself.
    uint64_t MemoryLimit = 0;
    // Whether permissions bind the program also where the caller is root. Not on Windows.
    bool Unprivileged = false;
};

struct ProgramResult {
    int ExitCode = -1;  // Above 255 if the program was ended by the system, or could not be started.
    std::string Output; // Standard output, byte for byte.
    std::string Errors; // Standard error output, byte for byte.
};

// A program that runs for more than ProgramSeconds is ended.
constexpr unsigned ProgramSeconds = 60;

ProgramResult RunProgram(const ProgramCall& call);
