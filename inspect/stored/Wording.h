// Numbers and names as text, independent of the locale.
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

// The system's message for an error number, as " (No space left on device)"; empty for 0.
std::u16string InBrackets(int errorNumber);

// The given number of lowest digits of the value.
std::u16string Hex(uint32_t value, unsigned digits);

// In quotes. Characters that a terminal may take for a command, or that change the order of others,
// become \x1B or \u202E, so that a name from a file can't control the terminal. Quotes and backslashes
// are escaped with a backslash. Names longer than 200 units are truncated, with an ellipsis after the
// quotes.
std::u16string Quoted(std::u16string_view name);

// A node's name, with its bytes read as Windows-1252. If the writing system had another code page,
// letters beyond ASCII come out as others.
std::u16string NodeNameText(std::string_view name);
