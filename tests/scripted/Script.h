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
#include <string>

// What a call does instead of its work, with the name in scripts. Another one, "die", ends the process
// with exit code 99.
enum class FaultKind {
    None,
    Fail,         // "fail": non-zero result, outputs untouched
    FailLate,     // "fail late": outputs as usual, then a non-zero result
    Silent,       // "silent": result 0, outputs untouched
    Null,         // "null": result 0 and a null handle
    Count,        // "count": returns "value" as the count
    Unterminated, // "unterminated": a text without closing NUL fills its buffer
};

struct Fault {
    FaultKind Kind = FaultKind::None;
    uint64_t Value = 0;
};

// Reads the script; false if the file can't be opened or isn't JSON.
bool LoadScript(const std::string& path);

// The loaded script, or JSON null.
const nlohmann::json& Script();

// Records a call and returns its fault: that of the first entry for this operation, or "*" for any, and
// this call: the "call"-th, those from the "from"-th on, or all. Calls are counted from 1, for "*" over
// all operations.
Fault NextCall(const char* operation, const std::string& detail = "");

// Records that the current call breaks the library's contract.
void Violation(const std::string& text);

// Whether a call has had a fault.
bool HadFault();
