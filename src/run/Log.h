// The log of a run: lines in the log file and on standard output.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

struct ModelImporter;

// The most UTF-16 units of one message. A longer one is truncated.
constexpr size_t MessageLimit = 4095;

// The text that replaces one conversion in a format.
struct FormatArgument {
    FormatArgument(std::u16string_view text) : Text(text) {
    }
    FormatArgument(const std::u16string& text) : Text(text) {
    }
    FormatArgument(const char16_t* text) : Text(text) {
    }
    FormatArgument(int32_t number);

    std::u16string Text;
};

// Returns the format with its conversions "%s" and "%d" replaced by the arguments in order. All other
// units, including percent signs in arguments, stay unchanged.
std::u16string Format(std::u16string_view format, std::initializer_list<FormatArgument> arguments);

// Writes one line to the log file, if it is open, and to standard output. Failures are ignored. The line
// is flushed to the file before the return.
void Log(ModelImporter& importer, std::u16string_view format,
         std::initializer_list<FormatArgument> arguments);
