// The script behind the scripted library: a JSON file that stands in for the model, the faults it asks
// for, and the record of all calls that the library keeps for the tests.
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
// "content" is what the picture file will hold, the file name if absent. "nan" and "inf" serve as
// numbers.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

// What a call does in place of its work. The names in the script are given behind each kind. One more,
// "die", ends the process there and then with exit code 99.
enum class FaultKind {
    None,
    Fail,         // "fail": non-zero result, outputs untouched
    FailLate,     // "fail late": outputs as usual, then a non-zero result
    Silent,       // "silent": result 0, outputs untouched
    Null,         // "null": result 0 and a null handle
    Count,        // "count": the count that is given is "value" instead
    Unterminated, // "unterminated": a text fills its buffer and has no closing NUL
};

struct Fault {
    FaultKind Kind = FaultKind::None;
    uint64_t Value = 0;
};

// Reads the script; false if there is none at the path or it isn't JSON.
bool LoadScript(const std::string& path);

// The script that was loaded, or JSON null.
const nlohmann::json& Script();

// Records a call and tells the fault that it is to have: that of the first entry that names the
// operation, or "*" for any, and this call: the "call"-th, those from the "from"-th on, or all.
// Calls are counted from 1, for "*" over all operations.
Fault NextCall(const char* operation, const std::string& detail = "");

// Records that the caller broke the library's contract in the call that runs.
void Violation(const std::string& text);

// Whether any call had a fault so far.
bool HadFault();
