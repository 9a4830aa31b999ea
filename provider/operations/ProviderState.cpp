// The state behind the handles.
#include "provider/operations/ProviderState.h"

#include "platform/Files.h"
#include "platform/Text.h"

#include <cstdio>

// UTF-16 units. Names and keys of a model can be as long as its file.
static constexpr size_t LongestLine = 4096;

ProviderState& State() {
    static ProviderState state;
    return state;
}

void ReportLine(std::string_view path, std::string_view text) {
    std::u16string line = Utf16FromUtf8(std::string(path) + ": " + std::string(text));
    if (line.size() > LongestLine) {
        line = line.substr(0, LongestLine - 1) + u'\u2026';
    }
    std::ranges::replace_if(line, IsObeyed, u' ');
    std::fputs(Utf8FromUtf16(line + u'\n').c_str(), stderr);
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

int32_t FillFileName(StringHandle* string, const std::u16string& name) {
    return WithoutExceptions([&] {
        std::u16string shown = name;
        std::ranges::replace_if(shown, IsObeyed, u'_');
        return FillString(string, shown);
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
