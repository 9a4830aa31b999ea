// The operations by their signatures, and a walk that calls each with all that the others give.
#pragma once

#include "api/SketchUpAPI.h"

#include <array>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

constexpr size_t MostParameters = 5;
constexpr uint64_t ListLimit = 16; // elements that are read of a list
constexpr uint8_t Untouched = 0xA5;

// The arguments of one call. Each pointer gets bytes of its own, which are larger than any output.
struct Call {
    std::vector<uint64_t> Values;
    std::string Path;
    size_t Null = MostParameters; // the parameter that gets a null pointer
    uint64_t Returned = 0;        // the handle that five operations return
    alignas(double) std::array<std::array<uint8_t, 512>, MostParameters> Outputs = {};
};

struct Parameter {
    std::string Kind;    // of a handle
    bool IsRead = false; // a handle that comes from the caller
    bool IsPointer = false;
    uint64_t Plain = 0; // what is passed for a number
    size_t Size = 0;    // of what an output points to
    std::string (*Show)(const uint8_t* bytes) = nullptr;
};

struct Operation {
    std::string Name;
    std::vector<Parameter> Parameters;
    std::string ReturnedKind;
    std::function<bool(Call&)> Run; // whether it succeeds
};

// All operations, in the order of their header.
extern const std::vector<Operation> Operations;

// What an open model gives: its handles by their kinds, and the calls that succeed with their results.
struct World {
    std::map<std::string, std::vector<uint64_t>> Handles;
    std::string Path; // for pictures
    std::set<std::string> Made;
    std::string Text;
};

// Opens a model and calls every operation but the releases with every handle that another one gives,
// until there are no new ones. The text starts with what the library reports; if the model doesn't open,
// that is all. The caller has to call SUTerminate.
World WalkModel(const std::u16string& path);

// Every choice of known handles for the parameters of an operation.
std::vector<std::vector<uint64_t>> ArgumentsFor(const World& world, const Operation& operation);

// Makes a call, with all outputs untouched before.
bool Succeeds(const Operation& operation, Call& call);

// The number at the start of an output.
uint64_t NumberAt(const Call& call, size_t at);

std::string TextOfString(uint64_t string);
