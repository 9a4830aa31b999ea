// The state behind the handles.
#include "provider/operations/ProviderState.h"

#include "platform/Files.h"
#include "platform/Text.h"

#include <cstdio>

ProviderState& State() {
    static ProviderState state;
    return state;
}

void ReportLine(std::string_view path, std::string_view text) {
    std::string line = std::string(path) + ": " + std::string(text);
    for (char& c : line) {
        if (static_cast<unsigned char>(c) < ' ') {
            c = ' ';
        }
    }
    line += '\n';
    std::fputs(line.c_str(), stderr);
}

int32_t FillString(StringHandle* string, const std::u16string& text) {
    return WithoutExceptions([&] {
        Slot<std::u16string>* slot =
            string == nullptr ? nullptr : FindSlot(State().Strings, HandleKind::String, string->Value);
        if (slot == nullptr) {
            return Failure;
        }
        slot->Value = text;
        return Success;
    });
}

int32_t WritePicture(const ModelPicture& picture, const char* path) {
    if (path == nullptr) {
        return Failure;
    }
    return WithoutExceptions([&] {
        std::vector<uint8_t> png;
        std::string reason;
        if (!EncodePng(picture, png, reason)) {
            ReportLine(path, "the picture " + reason);
            return Failure;
        }
        return WriteWholeFile(Utf16FromUtf8(path), png) == 0 ? Success : Failure;
    });
}
