// Single values of a model document.
#include "provider/document/DocumentReader.h"

#include "platform/Text.h"

#include <cstdio>
#include <limits>

bool Fail(DocumentReader& reader, uint32_t node, const std::string& reason) {
    const std::string place = PlaceOf(reader.Json, node);
    reader.Error = place.empty() ? reason : place + ": " + reason;
    return false;
}

namespace {

bool Expect(DocumentReader& reader, uint32_t node, JsonKind kind, const char* what) {
    return KindOf(reader.Json, node) == kind || Fail(reader, node, std::string("this must be ") + what);
}

// node may be the document itself.
bool ReadObject(DocumentReader& reader, uint32_t node, std::span<const Member> members) {
    if (!Expect(reader, node, JsonKind::Object, "an object")) {
        return false;
    }
    for (uint32_t i = node + 1; i < reader.Json.Values[node].Next; i = reader.Json.Values[i].Next) {
        const std::string_view key = KeyOf(reader.Json, i);
        const Member* known = nullptr;
        for (const Member& member : members) {
            if (member.Key == key) {
                known = &member;
            }
        }
        if (known == nullptr) {
            return Fail(reader, i, "unknown key");
        }
        if (*known->Node != 0) {
            return Fail(reader, i, "duplicate key");
        }
        *known->Node = i;
    }
    for (const Member& member : members) {
        if (member.Required && *member.Node == 0) {
            return Fail(reader, node, "the key " + std::string(member.Key) + " is missing");
        }
    }
    return true;
}

} // namespace

bool ReadMembers(DocumentReader& reader, uint32_t node, std::span<const Member> members) {
    return node == 0 || ReadObject(reader, node, members);
}

bool ReadMembers(DocumentReader& reader, uint32_t node, std::initializer_list<Member> members) {
    return ReadMembers(reader, node, std::span(members.begin(), members.size()));
}

bool ReadDocumentMembers(DocumentReader& reader, std::initializer_list<Member> members) {
    return ReadObject(reader, 0, std::span(members.begin(), members.size()));
}

bool ReadEach(DocumentReader& reader, uint32_t node, const std::function<bool(uint32_t element)>& read) {
    if (node == 0) {
        return true;
    }
    if (!Expect(reader, node, JsonKind::Array, "an array")) {
        return false;
    }
    for (uint32_t i = node + 1; i < reader.Json.Values[node].Next; i = reader.Json.Values[i].Next) {
        if (!read(i)) {
            return false;
        }
    }
    return true;
}

bool ReadArray(DocumentReader& reader, uint32_t node, uint32_t smallestCount, const char* what) {
    if (node == 0) {
        return true;
    }
    if (!Expect(reader, node, JsonKind::Array, "an array")) {
        return false;
    }
    return CountIn(reader.Json, node) >= smallestCount ||
           Fail(reader, node,
                std::string("this must have at least ") + std::to_string(smallestCount) + what);
}

bool ReadNumber(DocumentReader& reader, uint32_t node, double& number) {
    if (node == 0) {
        return true;
    }
    if (!Expect(reader, node, JsonKind::Number, "a number")) {
        return false;
    }
    number = NumberOf(reader.Json, node);
    return true;
}

bool ReadNumberIn(DocumentReader& reader, uint32_t node, double smallest, double largest,
                  double& number) {
    if (node == 0) {
        return true;
    }
    if (!ReadNumber(reader, node, number)) {
        return false;
    }
    return (number >= smallest && number <= largest) ||
           Fail(reader, node,
                "this must be between " + NumberText(smallest) + " and " + NumberText(largest));
}

bool ReadLength(DocumentReader& reader, uint32_t node, double& length) {
    if (node == 0) {
        return true;
    }
    if (!ReadNumber(reader, node, length)) {
        return false;
    }
    return (std::isnormal(length) && length > 0.0) || Fail(reader, node, "this must be above 0");
}

bool ReadWhole(DocumentReader& reader, uint32_t node, uint32_t limit, uint32_t& number) {
    double value = 0.0;
    if (!ReadNumber(reader, node, value)) {
        return false;
    }
    if (!(value >= 0.0 && value < static_cast<double>(limit) && value == std::floor(value))) {
        return Fail(reader, node,
                    "this must be a whole number from 0 to " + std::to_string(int64_t{limit} - 1));
    }
    number = static_cast<uint32_t>(value);
    return true;
}

bool ReadPoint(DocumentReader& reader, uint32_t node, Point3& point) {
    if (node == 0) {
        return true;
    }
    const bool isPoint = KindOf(reader.Json, node) == JsonKind::Array && CountIn(reader.Json, node) == 3;
    if (!isPoint) {
        return Fail(reader, node, "this must be an array of three numbers");
    }
    return ReadNumber(reader, ValueIn(reader.Json, node, 0), point.X) &&
           ReadNumber(reader, ValueIn(reader.Json, node, 1), point.Y) &&
           ReadNumber(reader, ValueIn(reader.Json, node, 2), point.Z);
}

bool ReadDirection(DocumentReader& reader, uint32_t node, Point3& unit) {
    if (node == 0) {
        return true;
    }
    Point3 direction;
    return ReadPoint(reader, node, direction) &&
           (MakeUnit(direction, unit) || Fail(reader, node, "this vector has no length"));
}

bool ReadFlag(DocumentReader& reader, uint32_t node, bool& flag) {
    if (node == 0) {
        return true;
    }
    if (!Expect(reader, node, JsonKind::Bool, "true or false")) {
        return false;
    }
    flag = reader.Json.Values[node].Content != 0;
    return true;
}

bool ReadText(DocumentReader& reader, uint32_t node, std::string_view& text) {
    if (node == 0) {
        return true;
    }
    if (!Expect(reader, node, JsonKind::Text, "text")) {
        return false;
    }
    text = TextOf(reader.Json, node);
    return true;
}

bool ReadText(DocumentReader& reader, uint32_t node, std::u16string& text) {
    if (node == 0) {
        return true;
    }
    std::string_view utf8;
    if (!ReadText(reader, node, utf8)) {
        return false;
    }
    text = Utf16FromUtf8(utf8);
    return true;
}

bool ReadReference(DocumentReader& reader, uint32_t node,
                   const std::unordered_map<std::string_view, uint32_t>& names, const char* kind,
                   uint32_t& index) {
    if (node == 0) {
        return true;
    }
    std::string_view name;
    if (!ReadText(reader, node, name)) {
        return false;
    }
    const auto found = names.find(name);
    if (found == names.end()) {
        return Fail(reader, node, std::string("there is no ") + kind + " " + Quoted(name));
    }
    index = found->second;
    return true;
}

bool ReadUniqueName(DocumentReader& reader, uint32_t node, size_t index,
                    std::unordered_map<std::string_view, uint32_t>& names, std::u16string& name) {
    std::string_view utf8;
    if (node == 0) {
        return true;
    }
    if (!ReadText(reader, node, utf8)) {
        return false;
    }
    name = Utf16FromUtf8(utf8);
    return names.emplace(utf8, static_cast<uint32_t>(index)).second ||
           Fail(reader, node, "the name " + Quoted(utf8) + " is already in use");
}

std::string Quoted(std::string_view text) {
    return "\"" + std::string(text) + "\"";
}

std::string NumberText(double number) {
    char text[std::numeric_limits<double>::max_digits10 + 16];
    std::snprintf(text, sizeof text, "%g", number);
    return text;
}
