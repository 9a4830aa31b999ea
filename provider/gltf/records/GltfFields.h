// Members of the JSON objects of a glTF document. An optional member of an unexpected type counts as
// absent, because files with such members are read everywhere. Object 0 has no members; those of the
// document itself are found by RootArray and MemberOf.
#pragma once

#include "provider/reading/JsonTape.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// The index that a value holds: a whole number from 0 to 2^31 - 1; otherwise NoIndex of the model.
uint32_t IndexIn(const JsonTape& json, uint32_t value);
uint32_t IndexMember(const JsonTape& json, uint32_t object, std::string_view key);

// A whole number from 0 to 2^53. Returns false, and leaves size unchanged, if there is none.
bool ReadSize(const JsonTape& json, uint32_t object, std::string_view key, uint64_t& size);

// An array of exactly as many numbers as the span has. Returns false, and leaves them unchanged, if
// there is none.
bool ReadNumbers(const JsonTape& json, uint32_t object, std::string_view key, std::span<double> numbers);

// The same for an array of another length or with other values: replaces the numbers that it has.
void ReadSomeNumbers(const JsonTape& json, uint32_t object, std::string_view key,
                     std::span<double> numbers);

// The numbers of an array; none if it isn't an array of numbers.
std::vector<double> NumbersMember(const JsonTape& json, uint32_t object, std::string_view key);

double NumberMember(const JsonTape& json, uint32_t object, std::string_view key, double fallback);
bool FlagMember(const JsonTape& json, uint32_t object, std::string_view key, bool fallback);

// The object or array of a key; 0 if there is none.
uint32_t ObjectMember(const JsonTape& json, uint32_t object, std::string_view key);
uint32_t ArrayMember(const JsonTape& json, uint32_t object, std::string_view key);

// An array at the top level of the document; 0 if there is none.
uint32_t RootArray(const JsonTape& json, std::string_view key);

// The object of an extension of an object; 0 if there is none.
uint32_t ExtensionOf(const JsonTape& json, uint32_t object, std::string_view name);

// The values in an array, in their order; none for 0.
std::vector<uint32_t> ElementsOf(const JsonTape& json, uint32_t array);

// Sets error to the place of a value and a reason. Always returns false.
bool FailAt(const JsonTape& json, uint32_t value, const std::string& reason, std::string& error);
