// Models made up at random for the scripted library, hostile in everything that a script can say.
#pragma once

#include <cstdint>
#include <string>

// The script of a seed: the same on every system. Lists lie inside each other and inside themselves,
// numbers are anything or nothing, indices point outside, names are long.
std::string RandomScript(uint64_t seed);
