// wmain on Windows: the arguments come as UTF-16.
#include "platform/Main.h"

extern "C" int wmain(int argc, wchar_t** argv) {
    std::vector<std::u16string> arguments;
    for (int i = 1; i < argc; ++i) {
        const std::wstring wide = argv[i];
        arguments.emplace_back(wide.begin(), wide.end());
    }
    return Main(arguments);
}
