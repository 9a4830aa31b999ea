// Reads the buffers of a glTF document, and finds the bytes of buffer views in them. All ranges are
// checked against the bytes that are there, not against the sizes that the document states.
#include "provider/gltf/data/GltfDocument.h"

#include "platform/Files.h"
#include "platform/Text.h"
#include "provider/gltf/compression/Meshopt.h"
#include "provider/gltf/data/Uri.h"
#include "provider/gltf/records/GltfExtensions.h"
#include "provider/gltf/records/GltfFields.h"
#include "provider/gltf/records/ReadRecords.h"

// Draco meshes may have this many triangles per byte. A flat grid takes a fourteenth of a byte for each
// with the best settings; strips take less, so every document may exceed the limit by some triangles.
constexpr uint64_t TrianglesPerByte = 32;
constexpr uint64_t MostSpareTriangles = 65536;

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

bool FindRange(const GltfDocument& document, uint32_t buffer, uint64_t offset, uint64_t length,
               std::span<const uint8_t>& bytes) {
    if (buffer >= document.Buffers.size()) {
        return false;
    }
    const std::span<const uint8_t> whole = document.Buffers[buffer];
    if (offset > whole.size() || length > whole.size() - offset) {
        return false;
    }
    bytes = whole.subspan(offset, length);
    return true;
}

// Takes bytes to decode from those that are left.
bool TakeCompressed(GltfDocument& document, std::span<const uint8_t> bytes, std::string& reason) {
    if (bytes.size() > document.CompressedLeft) {
        reason = "overlaps other compressed data";
        return false;
    }
    document.CompressedLeft -= bytes.size();
    return true;
}

bool DecodeView(GltfDocument& document, uint32_t index, std::span<const uint8_t>& bytes,
                std::string& reason) {
    auto found = document.MeshoptViews.find(index);
    if (found == document.MeshoptViews.end()) {
        const GltfMeshopt& stream =
            document.Records.Meshopt[document.Records.BufferViews[index].Meshopt];
        std::span<const uint8_t> compressed;
        std::vector<uint8_t> elements;
        reason = "is outside its buffer";
        if (!FindRange(document, stream.Buffer, stream.Offset, stream.Length, compressed) ||
            !TakeCompressed(document, compressed, reason) ||
            !DecodeMeshopt(compressed, stream, elements, reason)) {
            reason = "the " + std::string(MeshoptExtension) + " stream of " +
                     PlaceIn("bufferViews", index) + " " + reason;
            return false;
        }
        found = document.MeshoptViews.emplace(index, std::move(elements)).first;
    }
    bytes = found->second;
    return true;
}

} // namespace

bool ReadGltfDocument(const GltfParts& parts, const JsonTape& json, const std::u16string& directory,
                      GltfDocument& document, std::string& error) {
    if (!CheckRequiredExtensions(json, error) || !ReadBuffers(parts, json, directory, document, error) ||
        !ReadGltfRecords(json, document.Records, error)) {
        return false;
    }
    for (const std::span<const uint8_t> buffer : document.Buffers) {
        document.CompressedLeft += buffer.size();
    }
    document.SpareTriangles = MostSpareTriangles;
    return true;
}

bool FindBufferView(GltfDocument& document, uint32_t index, std::span<const uint8_t>& bytes,
                    std::string& reason) {
    if (index >= document.Records.BufferViews.size()) {
        reason = "the buffer view does not exist";
        return false;
    }
    const GltfBufferView& view = document.Records.BufferViews[index];
    const bool isPlain = FindRange(document, view.Buffer, view.Offset, view.Length, bytes);
    if (view.Meshopt != NoIndex && (!isPlain || bytes.empty())) {
        return DecodeView(document, index, bytes, reason);
    }
    reason = PlaceIn("bufferViews", index) + " is outside its buffer";
    return isPlain;
}

const DracoMesh* FindDracoMesh(GltfDocument& document, uint32_t view, std::string& reason) {
    const auto found = document.DracoMeshes.find(view);
    if (found != document.DracoMeshes.end()) {
        return &found->second;
    }
    std::span<const uint8_t> compressed;
    if (!FindBufferView(document, view, compressed, reason)) {
        return nullptr;
    }
    DracoMesh mesh;
    const uint64_t allowed = compressed.size() * TrianglesPerByte;
    if (!TakeCompressed(document, compressed, reason) ||
        !DecodeDraco(compressed, allowed + document.SpareTriangles, mesh, reason)) {
        reason = "the data of " + PlaceIn("bufferViews", view) + " " + reason;
        return nullptr;
    }
    const uint64_t triangles = mesh.Indices.size() / 3;
    document.SpareTriangles -= triangles > allowed ? triangles - allowed : 0;
    return &document.DracoMeshes.emplace(view, std::move(mesh)).first->second;
}
