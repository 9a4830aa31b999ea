// The entry point of a program, called by the system's main, and its command line in UTF-16.
#pragma once

#include <string>
#include <vector>

// Defined by each program. Returns the exit code.
int Main();

// Returns the arguments without the program's name.
std::vector<std::u16string> CommandLine();
