// A JSON text as one flat array of values, filled from the events of nlohmann's parser.
#include "provider/reading/JsonTape.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <limits>
#include <unordered_map>

constexpr uint32_t TextLengthBits = 32;
// Distinct keys that fit into the key field of a value.
constexpr size_t MostKeys = (size_t{1} << 29) - 1;

// Bytes of the last token that a message shows.
constexpr size_t LongestToken = 40;

namespace {

// Receives the parser's events under the parser's names. Returning false ends the parsing.
struct TapeBuilder {
    JsonTape& Tape;
    std::vector<uint32_t> Open; // arrays and objects that are not closed yet
    std::unordered_map<std::string, uint32_t> KeyNumbers;
    uint32_t PendingKey = 0;
    std::string Error;
    size_t ErrorPosition = 0; // bytes read up to the error; 0 if unknown

    bool Add(JsonKind kind, uint64_t content) {
        if (Tape.Values.size() >= std::numeric_limits<uint32_t>::max()) {
            Error = "the document has too many values";
            return false;
        }
        JsonValue value;
        value.Content = content;
        value.Next = static_cast<uint32_t>(Tape.Values.size() + 1);
        value.Kind = static_cast<uint32_t>(kind) & 7U;
        value.Key = PendingKey & static_cast<uint32_t>(MostKeys);
        PendingKey = 0;
        Tape.Values.push_back(value);
        return true;
    }

    bool Begin(JsonKind kind) {
        if (Open.size() >= DeepestJson) {
            Error = "arrays and objects are nested too deeply";
            return false;
        }
        Open.push_back(static_cast<uint32_t>(Tape.Values.size()));
        return Add(kind, 0);
    }

    bool End() {
        Tape.Values[Open.back()].Next = static_cast<uint32_t>(Tape.Values.size());
        Open.pop_back();
        return true;
    }

    // The library defines the names below.
    // NOLINTBEGIN(readability-identifier-naming)
    bool null() {
        return Add(JsonKind::Null, 0);
    }
    bool boolean(bool value) {
        return Add(JsonKind::Bool, value ? 1 : 0);
    }
    bool number_integer(int64_t value) {
        return Add(JsonKind::Number, std::bit_cast<uint64_t>(static_cast<double>(value)));
    }
    bool number_unsigned(uint64_t value) {
        return Add(JsonKind::Number, std::bit_cast<uint64_t>(static_cast<double>(value)));
    }
    bool number_float(double value, const std::string&) {
        return Add(JsonKind::Number, std::bit_cast<uint64_t>(value));
    }
    bool string(const std::string& text) {
        const uint64_t offset = Tape.Texts.size();
        Tape.Texts += text;
        return Add(JsonKind::Text, offset << TextLengthBits | text.size());
    }
    bool binary(const std::vector<uint8_t>&) {
        return false; // does not occur in text
    }
    bool start_object(size_t) {
        return Begin(JsonKind::Object);
    }
    bool key(const std::string& name) {
        const auto [found, added] =
            KeyNumbers.try_emplace(name, static_cast<uint32_t>(Tape.Keys.size()));
        if (added) {
            if (Tape.Keys.size() > MostKeys) {
                Error = "the document has too many keys";
                return false;
            }
            Tape.Keys.push_back(name);
        }
        PendingKey = found->second;
        return true;
    }
    bool end_object() {
        return End();
    }
    bool start_array(size_t) {
        return Begin(JsonKind::Array);
    }
    bool end_array() {
        return End();
    }
    bool parse_error(size_t position, const std::string& lastToken,
                     const nlohmann::json::exception& exception) {
        constexpr int numberOutOfRange = 406; // the library's error number
        Error = exception.id == numberOutOfRange ? "the number is too large" : "this is not valid JSON";
        Error += " (last read: '" + lastToken.substr(0, LongestToken) + "')";
        ErrorPosition = position;
        return false;
    }
    // NOLINTEND(readability-identifier-naming)
};

} // namespace

bool ParseJson(std::string_view text, JsonTape& tape, std::string& error) {
    tape = {};
    tape.Keys.emplace_back();
    // Offsets of texts must fit into their half of a value.
    if (text.size() > std::numeric_limits<uint32_t>::max()) {
        error = "the document is too large";
        return false;
    }
    // Every value but the first follows a comma or the beginning of an array or object, and takes two
    // bytes with it.
    const auto marks =
        std::ranges::count_if(text, [](char c) { return c == ',' || c == '[' || c == '{'; });
    tape.Values.reserve(std::min(static_cast<size_t>(marks), text.size() / 2) + 1);
    TapeBuilder builder = {tape, {}, {}, 0, {}, 0};
    if (nlohmann::json::sax_parse(text.begin(), text.end(), &builder,
                                  nlohmann::json::input_format_t::json, true, true)) {
        return true;
    }
    error = builder.Error;
    if (builder.ErrorPosition > 0) {
        const std::string_view before =
            text.substr(0, std::min(builder.ErrorPosition, text.size() + 1) - 1);
        const size_t lineStart = before.rfind('\n') + 1; // 0 without a line end
        error = "line " + std::to_string(std::ranges::count(before, '\n') + 1) + ", column " +
                std::to_string(before.size() - lineStart + 1) + ": " + error;
    }
    return false;
}

std::string_view TextOf(const JsonTape& tape, uint32_t value) {
    const uint64_t content = tape.Values[value].Content;
    return std::string_view(tape.Texts)
        .substr(content >> TextLengthBits, static_cast<uint32_t>(content));
}

std::string_view KeyOf(const JsonTape& tape, uint32_t value) {
    return tape.Keys[tape.Values[value].Key];
}

uint32_t MemberOf(const JsonTape& tape, uint32_t object, std::string_view key) {
    if (KindOf(tape, object) != JsonKind::Object) {
        return 0;
    }
    for (uint32_t i = object + 1; i < tape.Values[object].Next; i = tape.Values[i].Next) {
        if (KeyOf(tape, i) == key) {
            return i;
        }
    }
    return 0;
}

std::string_view TextMember(const JsonTape& tape, uint32_t object, std::string_view key) {
    const uint32_t value = MemberOf(tape, object, key);
    return value != 0 && KindOf(tape, value) == JsonKind::Text ? TextOf(tape, value) : "";
}

uint32_t CountIn(const JsonTape& tape, uint32_t container) {
    uint32_t count = 0;
    for (uint32_t i = container + 1; i < tape.Values[container].Next; i = tape.Values[i].Next) {
        ++count;
    }
    return count;
}

uint32_t ValueIn(const JsonTape& tape, uint32_t container, uint32_t number) {
    uint32_t value = container + 1;
    for (; number > 0; --number) {
        value = tape.Values[value].Next;
    }
    return value;
}

std::string PlaceOf(const JsonTape& tape, uint32_t value) {
    std::string place;
    uint32_t container = 0;
    while (container != value) {
        uint32_t inside = container + 1;
        uint32_t number = 0;
        while (tape.Values[inside].Next <= value) {
            inside = tape.Values[inside].Next;
            ++number;
        }
        if (KindOf(tape, container) == JsonKind::Array) {
            place += "[" + std::to_string(number) + "]";
        } else {
            place += (place.empty() ? "" : ".") + std::string(KeyOf(tape, inside));
        }
        container = inside;
    }
    return place;
}
