// The start of a program, behind the system's own main, and its command line as UTF-16.
#pragma once

#include <string>
#include <vector>

// Defined by each program; the result is the exit code.
int Main();

// The arguments, without the program's own name.
std::vector<std::u16string> CommandLine();
