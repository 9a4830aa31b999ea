// Random models for the scripted library, hostile in all that a script can express.
#pragma once

#include <cstdint>
#include <string>

// The script of a seed, the same on every system: recursive definitions, extreme and non-finite numbers,
// indices out of range, long names.
std::string RandomScript(uint64_t seed);
