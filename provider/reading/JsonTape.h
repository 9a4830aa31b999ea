// A JSON text as one flat array of values in the order of the text. It takes a fraction of the memory
// of a tree of objects, and messages can state the place of every value.
#pragma once

#include <bit>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// The largest depth of nested arrays and objects.
constexpr size_t DeepestJson = 256;

enum class JsonKind : uint32_t { Null, Bool, Number, Text, Array, Object };

// One value. The values in an array or object follow it directly, each with its contents.
struct JsonValue {
    uint64_t Content = 0;  // number: its bits as a double; bool: 0 or 1; text: offset and length
    uint32_t Next = 0;     // index of the value after this one and its contents
    uint32_t Kind : 3 = 0; // a JsonKind
    uint32_t Key : 29 = 0; // of a value in an object, in JsonTape::Keys
};
static_assert(sizeof(JsonValue) == 16);

struct JsonTape {
    std::vector<JsonValue> Values; // the first is the whole document
    std::string Texts;
    std::vector<std::string> Keys; // the first means none
};

// Parses a whole text in UTF-8, with comments. Returns false, with the reason in error, if it isn't
// JSON or has a number too large for a double, both with line and column, or if it is nested too
// deeply.
bool ParseJson(std::string_view text, JsonTape& tape, std::string& error);

inline JsonKind KindOf(const JsonTape& tape, uint32_t value) {
    return static_cast<JsonKind>(tape.Values[value].Kind);
}

inline double NumberOf(const JsonTape& tape, uint32_t value) {
    return std::bit_cast<double>(tape.Values[value].Content);
}

// Valid as long as the tape.
std::string_view TextOf(const JsonTape& tape, uint32_t value);
std::string_view KeyOf(const JsonTape& tape, uint32_t value);

// The value of a key in an object; 0, which is the whole document, if there is no such key or the value
// isn't an object.
uint32_t MemberOf(const JsonTape& tape, uint32_t object, std::string_view key);
// The text of a key in an object; empty if there is none. Valid as long as the tape.
std::string_view TextMember(const JsonTape& tape, uint32_t object, std::string_view key);

// The number of values directly in an array or object, and the one at a position, which must exist.
uint32_t CountIn(const JsonTape& tape, uint32_t container);
uint32_t ValueIn(const JsonTape& tape, uint32_t container, uint32_t number);

// The path to a value, such as entities.groups[2].faces[0].outer[1]; empty for the whole document.
std::string PlaceOf(const JsonTape& tape, uint32_t value);
