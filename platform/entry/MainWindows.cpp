// wmain on Windows: arguments are UTF-16.
#include "platform/entry/Main.h"

#include <span>
#include <string_view>

static std::span<wchar_t*> commandLine;

std::vector<std::u16string> CommandLine() {
    std::vector<std::u16string> arguments;
    for (size_t i = 1; i < commandLine.size(); ++i) {
        const std::wstring_view wide = commandLine[i];
        arguments.emplace_back(wide.begin(), wide.end());
    }
    return arguments;
}

extern "C" int wmain(int argc, wchar_t** argv) {
    commandLine = {argv, static_cast<size_t>(argc)};
    return Main();
}
