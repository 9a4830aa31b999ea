// Reads the buffers of a glTF document, and finds the bytes of buffer views in them. All ranges are
// checked against the bytes that are there, not against the sizes that the document states.
#include "provider/gltf/data/GltfDocument.h"

#include "platform/Files.h"
#include "platform/Text.h"
#include "provider/gltf/data/Uri.h"
#include "provider/gltf/records/GltfExtensions.h"
#include "provider/gltf/records/GltfFields.h"
#include "provider/gltf/records/ReadRecords.h"

namespace {

bool ReadBuffers(const GltfParts& parts, const JsonTape& json, const std::u16string& directory,
                 GltfDocument& document, std::string& error) {
    for (const uint32_t element : ElementsOf(json, RootArray(json, "buffers"))) {
        const std::string_view uri = TextMember(json, element, "uri");
        document.OwnBytes.emplace_back();
        std::vector<uint8_t>& own = document.OwnBytes.back();
        if (uri.empty()) {
            document.Buffers.push_back(document.Buffers.empty() ? parts.Binary
                                                                : std::span<const uint8_t>());
            continue;
        }
        if (IsDataUri(uri)) {
            if (!DecodeDataUri(uri, own)) {
                return FailAt(json, MemberOf(json, element, "uri"), "the data URI is broken", error);
            }
        } else {
            const std::u16string file = Utf16FromUtf8(DecodePercent(uri));
            if (!ReadWholeFile(PathIn(directory, file), own)) {
                return FailAt(json, MemberOf(json, element, "uri"),
                              "the file \"" + Utf8FromUtf16(file) + "\" can't be found or read", error);
            }
        }
        document.Buffers.emplace_back(own);
    }
    return true;
}

} // namespace

bool ReadGltfDocument(const GltfParts& parts, const JsonTape& json, const std::u16string& directory,
                      GltfDocument& document, std::string& error) {
    return CheckRequiredExtensions(json, error) &&
           ReadBuffers(parts, json, directory, document, error) &&
           ReadGltfRecords(json, document.Records, error);
}

bool FindBufferView(GltfDocument& document, uint32_t index, std::span<const uint8_t>& bytes,
                    std::string& reason) {
    if (index >= document.Records.BufferViews.size()) {
        reason = "the buffer view does not exist";
        return false;
    }
    const GltfBufferView& view = document.Records.BufferViews[index];
    const std::span<const uint8_t> buffer = view.Buffer < document.Buffers.size()
                                                ? document.Buffers[view.Buffer]
                                                : std::span<const uint8_t>();
    if (view.Offset > buffer.size() || view.Length > buffer.size() - view.Offset) {
        reason = PlaceIn("bufferViews", index) + " is outside its buffer";
        return false;
    }
    bytes = buffer.subspan(view.Offset, view.Length);
    return true;
}
