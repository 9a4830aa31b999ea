// Formats and writes lines of the log.
#include "run/Log.h"

#include "platform/Platform.h"
#include "run/ModelImporter.h"

#include <cassert>

FormatArgument::FormatArgument(int32_t number) {
    for (const char digit : std::to_string(number)) {
        Text.push_back(static_cast<char16_t>(digit));
    }
}

std::u16string Format(std::u16string_view format, std::initializer_list<FormatArgument> arguments) {
    std::u16string text;
    const FormatArgument* argument = arguments.begin();
    for (size_t i = 0; i < format.size(); ++i) {
        if (format[i] == u'%' && i + 1 < format.size() &&
            (format[i + 1] == u's' || format[i + 1] == u'd')) {
            assert(argument != arguments.end());
            text += argument->Text;
            ++argument;
            ++i;
        } else {
            text.push_back(format[i]);
        }
    }
    return text;
}

void Log(ModelImporter& importer, std::u16string_view format,
         std::initializer_list<FormatArgument> arguments) {
    std::u16string line = Format(format, arguments).substr(0, MessageLimit);
    line += u"\r\n";
    // Failures are ignored: the log never makes a run fail.
    importer.LogFile.Write(line.data(), static_cast<uint32_t>(line.size() * sizeof(char16_t)));
    EraseProgress(importer.Progress);
    PrintToStandardOutput(line);
    importer.LogFile.Flush();
}
