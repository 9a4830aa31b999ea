// The state behind the handles.
#include "provider/operations/ProviderState.h"

#include "platform/Files.h"
#include "platform/Text.h"

ProviderState& State() {
    static ProviderState state;
    return state;
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
        return EncodePng(picture, png) && WriteWholeFile(Utf16FromUtf8(path), png) == 0 ? Success
                                                                                        : Failure;
    });
}
