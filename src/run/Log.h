// The report of a run: lines that go to the log file and to standard output.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

struct ModelImporter;

// The most UTF-16 units of one message. A longer one is cut.
constexpr size_t MessageLimit = 4095;

// What takes the place of one conversion in a format.
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

// The format with its conversions "%s" and "%d" replaced by the arguments in their order. Every other
// unit, percent signs of the arguments among them, stands as it is.
std::u16string Format(std::u16string_view format, std::initializer_list<FormatArgument> arguments);

// Sends one line to the log file, if it is open, and to standard output. Failures are ignored. The file
// holds the whole line when this returns.
void Log(ModelImporter& importer, std::u16string_view format,
         std::initializer_list<FormatArgument> arguments);
