// Numbers and names as text, the same whatever the locale.
#pragma once

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

// Floats in the shortest form that reads back to the same value.
template <typename T> std::u16string Number(T value) {
    char digits[64];
    char* const end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    return std::u16string(digits, end);
}

// "1.5 2 3"
template <typename List> std::u16string Numbers(const List& values) {
    std::u16string text;
    for (const auto value : values) {
        text += (text.empty() ? u"" : u" ") + Number(value);
    }
    return text;
}

// "1 mesh", "2 meshes"
std::u16string Counted(uint64_t count, std::u16string_view one, std::u16string_view several);

// The system's word for an error number, as " (No space left on device)"; nothing for 0.
std::u16string InBrackets(int errorNumber);

// The lowest digits of the value, as many as asked for.
std::u16string Hex(uint32_t value, unsigned digits);

// In quotes. Characters that a terminal may take for a command, or that change the order of others, come
// as \x1B or \u202E, so that a name from a file can't reach the terminal; quotes and backslashes come
// with a backslash in front. Of a name that is longer than 200 units the rest is left out, with an
// ellipsis behind the quotes.
std::u16string Quoted(std::u16string_view name);

// A node's name, its bytes taken as Windows-1252. Where the writing system had another code page,
// letters beyond ASCII come out as others.
std::u16string NodeNameText(std::string_view name);
