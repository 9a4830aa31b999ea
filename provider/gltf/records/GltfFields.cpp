// Reads members of JSON objects from the tape.
#include "provider/gltf/records/GltfFields.h"

#include "provider/model/Model.h"

#include <algorithm>
#include <cmath>

constexpr double LargestIndex = 2147483647.0;
constexpr double LargestSize = 9007199254740992.0; // whole numbers up to here are exact

namespace {

uint32_t FindMember(const JsonTape& json, uint32_t object, std::string_view key) {
    return object != 0 ? MemberOf(json, object, key) : 0;
}

uint32_t MemberOfKind(const JsonTape& json, uint32_t object, std::string_view key, JsonKind kind) {
    const uint32_t value = FindMember(json, object, key);
    return value != 0 && KindOf(json, value) == kind ? value : 0;
}

bool IsWhole(const JsonTape& json, uint32_t value, double largest) {
    if (value == 0 || KindOf(json, value) != JsonKind::Number) {
        return false;
    }
    const double number = NumberOf(json, value);
    return number >= 0.0 && number <= largest && number == std::floor(number);
}

bool HasNumbers(const JsonTape& json, uint32_t array) {
    for (uint32_t i = array + 1; i < json.Values[array].Next; i = json.Values[i].Next) {
        if (KindOf(json, i) != JsonKind::Number) {
            return false;
        }
    }
    return true;
}

} // namespace

uint32_t IndexIn(const JsonTape& json, uint32_t value) {
    return IsWhole(json, value, LargestIndex) ? static_cast<uint32_t>(NumberOf(json, value)) : NoIndex;
}

uint32_t IndexMember(const JsonTape& json, uint32_t object, std::string_view key) {
    return IndexIn(json, FindMember(json, object, key));
}

bool ReadSize(const JsonTape& json, uint32_t object, std::string_view key, uint64_t& size) {
    const uint32_t value = FindMember(json, object, key);
    if (!IsWhole(json, value, LargestSize)) {
        return false;
    }
    size = static_cast<uint64_t>(NumberOf(json, value));
    return true;
}

bool ReadNumbers(const JsonTape& json, uint32_t object, std::string_view key,
                 std::span<double> numbers) {
    const uint32_t array = ArrayMember(json, object, key);
    // Numbers take one place each, so the end of an array of numbers shows how many there are.
    if (array == 0 || json.Values[array].Next - array - 1 != numbers.size() ||
        !HasNumbers(json, array)) {
        return false;
    }
    for (size_t i = 0; i < numbers.size(); ++i) {
        numbers[i] = NumberOf(json, array + 1 + static_cast<uint32_t>(i));
    }
    return true;
}

void ReadSomeNumbers(const JsonTape& json, uint32_t object, std::string_view key,
                     std::span<double> numbers) {
    const std::vector<uint32_t> elements = ElementsOf(json, ArrayMember(json, object, key));
    for (size_t i = 0; i < std::min(numbers.size(), elements.size()); ++i) {
        if (KindOf(json, elements[i]) == JsonKind::Number) {
            numbers[i] = NumberOf(json, elements[i]);
        }
    }
}

std::vector<double> NumbersMember(const JsonTape& json, uint32_t object, std::string_view key) {
    const uint32_t array = ArrayMember(json, object, key);
    std::vector<double> numbers(array != 0 && HasNumbers(json, array) ? CountIn(json, array) : 0);
    ReadNumbers(json, object, key, numbers);
    return numbers;
}

double NumberMember(const JsonTape& json, uint32_t object, std::string_view key, double fallback) {
    const uint32_t value = MemberOfKind(json, object, key, JsonKind::Number);
    return value != 0 ? NumberOf(json, value) : fallback;
}

bool FlagMember(const JsonTape& json, uint32_t object, std::string_view key, bool fallback) {
    const uint32_t value = MemberOfKind(json, object, key, JsonKind::Bool);
    return value != 0 ? json.Values[value].Content != 0 : fallback;
}

uint32_t ObjectMember(const JsonTape& json, uint32_t object, std::string_view key) {
    return MemberOfKind(json, object, key, JsonKind::Object);
}

uint32_t ArrayMember(const JsonTape& json, uint32_t object, std::string_view key) {
    return MemberOfKind(json, object, key, JsonKind::Array);
}

uint32_t RootArray(const JsonTape& json, std::string_view key) {
    const uint32_t value = MemberOf(json, 0, key);
    return value != 0 && KindOf(json, value) == JsonKind::Array ? value : 0;
}

uint32_t ExtensionOf(const JsonTape& json, uint32_t object, std::string_view name) {
    return ObjectMember(json, ObjectMember(json, object, "extensions"), name);
}

std::vector<uint32_t> ElementsOf(const JsonTape& json, uint32_t array) {
    std::vector<uint32_t> elements;
    for (uint32_t i = array + 1; array != 0 && i < json.Values[array].Next; i = json.Values[i].Next) {
        elements.push_back(i);
    }
    return elements;
}

bool FailAt(const JsonTape& json, uint32_t value, const std::string& reason, std::string& error) {
    error = PlaceOf(json, value) + ": " + reason;
    return false;
}
