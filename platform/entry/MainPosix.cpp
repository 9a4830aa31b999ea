// main on POSIX: arguments are UTF-8, whatever the locale.
#include "platform/Platform.h"
#include "platform/entry/Main.h"

#include <csignal>
#include <fcntl.h>
#include <span>

// Opens closed standard streams on the null device. Otherwise the next file opened would become standard
// output and receive its lines.
static void FillStandardStreams() {
    for (int descriptor = 0; descriptor <= 2; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) == -1 && open("/dev/null", O_RDWR) == -1) {
            return;
        }
    }
}

static std::span<char*> commandLine;

std::vector<std::u16string> CommandLine() {
    std::vector<std::u16string> arguments;
    for (size_t i = 1; i < commandLine.size(); ++i) {
        arguments.push_back(Utf16FromUtf8(commandLine[i]));
    }
    return arguments;
}

int main(int argc, char** argv) {
    commandLine = {argv, static_cast<size_t>(argc)};
    FillStandardStreams();
    // A closed reader of standard output must not end the run: the write just fails.
    std::signal(SIGPIPE, SIG_IGN);
    // Nor must the file size limit: it counts as a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
    return Main();
}
