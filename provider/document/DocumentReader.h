// What the parts of the model document's reader share: the state of the reading, and the reading of
// single values. All reading operations give false after an error, which then stands in Error; a node is
// the index of a value in Json, and node 0, the document itself, stands for a value that isn't there.
#pragma once

#include "provider/model/Model.h"
#include "provider/reading/JsonTape.h"
#include "provider/reading/Triangulation.h"

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

struct DocumentReader {
    const JsonTape& Json;
    Model& Output;
    std::u16string Directory; // where pictures are looked for, with its closing separator
    std::string Error;        // place and reason

    std::unordered_map<std::string_view, uint32_t> Materials;
    std::unordered_map<std::string_view, uint32_t> Layers;
    std::unordered_map<std::string_view, uint32_t> Definitions;
    std::unordered_map<std::string_view, uint32_t> Pictures; // by file name as written
    std::vector<uint32_t> InstanceNodes;                     // of each instance in Output

    PolygonTriangulation Polygon; // kept from face to face for its memory
};

// Notes an error at a value. Always gives false.
bool Fail(DocumentReader& reader, uint32_t node, const std::string& reason);

// A key that an object may have. Node receives its value and is left alone where the key is missing.
struct Member {
    std::string_view Key;
    uint32_t* Node;
    bool Required = false;
};
bool ReadMembers(DocumentReader& reader, uint32_t node, std::initializer_list<Member> members);

// Calls read for each element of an array. Nothing to do for node 0.
bool ReadEach(DocumentReader& reader, uint32_t node, const std::function<bool(uint32_t element)>& read);

// Checks that a value is an array of enough elements; what is how a message calls them, after a blank.
bool ReadArray(DocumentReader& reader, uint32_t node, uint32_t smallestCount, const char* what);
bool ReadNumber(DocumentReader& reader, uint32_t node, double& number);
bool ReadNumberIn(DocumentReader& reader, uint32_t node, double smallest, double largest,
                  double& number);
bool ReadLength(DocumentReader& reader, uint32_t node, double& length); // above 0
// A whole number below limit.
bool ReadWhole(DocumentReader& reader, uint32_t node, uint32_t limit, uint32_t& number);
bool ReadPoint(DocumentReader& reader, uint32_t node, Point3& point);
bool ReadDirection(DocumentReader& reader, uint32_t node, Point3& unit);
bool ReadFlag(DocumentReader& reader, uint32_t node, bool& flag);
bool ReadText(DocumentReader& reader, uint32_t node, std::string_view& text);
bool ReadText(DocumentReader& reader, uint32_t node, std::u16string& text);
// The index of something that is referred to by name; kind is what a message calls it.
bool ReadReference(DocumentReader& reader, uint32_t node,
                   const std::unordered_map<std::string_view, uint32_t>& names, const char* kind,
                   uint32_t& index);

// A text as a message quotes it.
std::string Quoted(std::string_view text);
// A number in the shortest form with six digits.
std::string NumberText(double number);

// A face of the document: one or, for a triangulation that turns to all sides, several in Output.
bool ReadFace(DocumentReader& reader, uint32_t node);
