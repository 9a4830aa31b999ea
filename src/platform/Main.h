// The start of a program, behind the system's own main: the command line as UTF-16.
#pragma once

#include <string>
#include <vector>

// Defined by each program. The arguments come without the program's own name; the result is the exit
// code.
int Main(const std::vector<std::u16string>& arguments);
