// State and operations that the parts of the model document's reader share. A node is the index of a
// value in Json; 0, the document itself, means a value that the document omits. All reading operations
// accept node 0 and then leave their output unchanged. They return false after an error, which is in
// Error.
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
    std::u16string Directory; // of the pictures; ends with a separator
    std::string Error;        // place and reason

    std::unordered_map<std::string_view, uint32_t> Materials;
    std::unordered_map<std::string_view, uint32_t> Layers;
    std::unordered_map<std::string_view, uint32_t> Definitions;
    std::unordered_map<std::string_view, uint32_t> Pictures; // by file name as written
    std::vector<uint32_t> InstanceNodes;                     // of each instance in Output

    PolygonTriangulation Polygon; // kept to reuse its memory
};

// Records an error at a value. Always returns false.
bool Fail(DocumentReader& reader, uint32_t node, const std::string& reason);

// A key that an object may have. Node must be 0; it receives the value, if there is one.
struct Member {
    std::string_view Key;
    uint32_t* Node;
    bool Required = false;
};
// Reads an object that has only these keys, each at most once.
bool ReadMembers(DocumentReader& reader, uint32_t node, std::span<const Member> members);
bool ReadMembers(DocumentReader& reader, uint32_t node, std::initializer_list<Member> members);
// The same for the document itself.
bool ReadDocumentMembers(DocumentReader& reader, std::initializer_list<Member> members);

// Calls read for each element of an array.
bool ReadEach(DocumentReader& reader, uint32_t node, const std::function<bool(uint32_t element)>& read);

// Checks that a value is an array of at least smallestCount elements. what names them in a message,
// with a leading blank.
bool ReadArray(DocumentReader& reader, uint32_t node, uint32_t smallestCount, const char* what);
bool ReadNumber(DocumentReader& reader, uint32_t node, double& number);
bool ReadNumberIn(DocumentReader& reader, uint32_t node, double smallest, double largest,
                  double& number);
bool ReadLength(DocumentReader& reader, uint32_t node, double& length); // above 0
// A whole number below limit. Expects a value: node is not 0.
bool ReadWhole(DocumentReader& reader, uint32_t node, uint32_t limit, uint32_t& number);
bool ReadPoint(DocumentReader& reader, uint32_t node, Point3& point);
bool ReadDirection(DocumentReader& reader, uint32_t node, Point3& unit);
bool ReadFlag(DocumentReader& reader, uint32_t node, bool& flag);
bool ReadText(DocumentReader& reader, uint32_t node, std::string_view& text);
bool ReadText(DocumentReader& reader, uint32_t node, std::u16string& text);
// Looks up a name and sets its index. kind names the element in a message.
bool ReadReference(DocumentReader& reader, uint32_t node,
                   const std::unordered_map<std::string_view, uint32_t>& names, const char* kind,
                   uint32_t& index);

// Reads the unique name of the list element at the given index and adds it to names.
bool ReadUniqueName(DocumentReader& reader, uint32_t node, size_t index,
                    std::unordered_map<std::string_view, uint32_t>& names, std::u16string& name);

// A text in quotes, for messages.
std::string Quoted(std::string_view text);
// A number with at most six significant digits.
std::string NumberText(double number);
