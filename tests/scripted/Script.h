// The script of the scripted library: a JSON file in place of the model, with the faults to inject; and
// the library's record of all calls, for the tests.
//
// A script has these members, all but "entities" optional:
//   "materials"     [{"name", "color": [r, g, b, a], "useOpacity", "opacity", "type", "texture":
//                   {"file", "sScale", "tScale", "content"}}]
//   "materialList"  indices of "materials" (or null) as the model lists them; all of them if absent
//   "layers"        [{"visible"}]
//   "definitions"   [entities]
//   "entities"      {"faces", "groups", "instances", "images"}, each a list whose elements may be null
//   "faults"        [{"operation", "call" or "from", "kind", "value"}]
//   "random"        {"seed", "rate"}: each call has a random fault with a chance of one in "rate"
// Faces, groups, instances and images may have "hidden" and "layer" (an index); groups and instances
// "material" (an index) and "transform" (16 numbers). Further:
//   face            {"front", "back": material indices, "plane", "vertices", "normals", "frontStq",
//                   "backStq", "indices"}
//   group           {"name", "entities"};  instance {"definition": index}
//   image           {"file", "transform", "width", "height", "content"}
// "content" is the content of the picture file, by default the file name. "nan" and "inf" are valid
// numbers.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

// What a call does instead of its work, with the name in scripts. Another one, "die", ends the process
// with exit code 99.
enum class FaultKind {
    None,
    Fail,     // "fail": non-zero result, outputs untouched
    FailLate, // "fail late": outputs as usual, then a non-zero result
    Scribble, // "scribble": all outputs overwritten, then a non-zero result
    Silent,   // "silent": result 0, outputs untouched
    Lie,      // "lie": result 0, wrong numbers, or a text without closing NUL that fills its buffer
    Count,    // "count": returns "value" as the count; without a value one more than the true one
    Null,     // "null": result 0 and null handles
    Swap,     // "swap": result 0 and random earlier handles of the same type
};

struct Fault {
    FaultKind Kind = FaultKind::None;
    std::optional<uint64_t> Value = {};
};

// Reads the script; false if the file can't be opened or isn't JSON.
bool LoadScript(const std::string& path);

// The loaded script, or JSON null.
const nlohmann::json& Script();

// Records a call and returns its fault: that of the first entry for this operation, or "*" for any, and
// this call: the "call"-th, those from the "from"-th on, or all. Calls are counted from 1, for "*" over
// all operations.
Fault NextCall(const char* operation, const std::string& detail = "");

// Whether the current call's fault is of this kind. Records that it could be, as "# KIND".
bool Has(const Fault& fault, FaultKind kind);

// A number below the end, from the script's seed.
uint64_t Random(uint64_t end);

// Records that the current call breaks the library's contract.
void Violation(const std::string& text);

// Whether a call has had a fault.
bool HadFault();
