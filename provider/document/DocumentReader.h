// What the parts of the model document's reader share: the state of the reading, and the reading of
// single values. A node is the index of a value in Json; 0, the document itself, stands for a value that
// the document leaves out. All reading operations give false after an error, which then stands in Error,
// and all take node 0: it keeps what stands in their output.
#pragma once

#include "provider/model/Model.h"
#include "provider/reading/JsonTape.h"
#include "provider/reading/Triangulation.h"

#include <functional>
#include <initializer_list>
#include <span>
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

// A key that an object may have. Node receives its value; it is 0 before and stays so without the key.
struct Member {
    std::string_view Key;
    uint32_t* Node;
    bool Required = false;
};
// Reads an object that has no other keys than these, each once.
bool ReadMembers(DocumentReader& reader, uint32_t node, std::span<const Member> members);
bool ReadMembers(DocumentReader& reader, uint32_t node, std::initializer_list<Member> members);
// The same for the document itself.
bool ReadDocumentMembers(DocumentReader& reader, std::initializer_list<Member> members);

// Calls read for each element of an array.
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

// Reads the name of what comes next in a list, at the given index, and enters it in names.
bool ReadUniqueName(DocumentReader& reader, uint32_t node, size_t index,
                    std::unordered_map<std::string_view, uint32_t>& names, std::u16string& name);

// A text as a message quotes it.
std::string Quoted(std::string_view text);
// A number in the shortest form with six digits.
std::string NumberText(double number);
