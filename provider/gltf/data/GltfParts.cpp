// Splits binary glTF files: a header, then chunks with a length and a kind each.
#include "provider/gltf/data/GltfParts.h"

#include "platform/Bytes.h"

constexpr uint32_t JsonChunk = 0x4E4F534A;   // "JSON"
constexpr uint32_t BinaryChunk = 0x004E4942; // "BIN"
constexpr uint32_t GlbVersion = 2;
constexpr size_t GlbHeaderSize = 12;
constexpr size_t ChunkHeaderSize = 8;

bool SplitGlb(std::span<const uint8_t> bytes, GltfParts& parts, std::string& error) {
    if (bytes.size() < GlbHeaderSize + ChunkHeaderSize) {
        error = "the binary glTF file is truncated";
        return false;
    }
    if (LittleEndian(bytes, 4) != GlbVersion) {
        error = "this version of binary glTF is not supported";
        return false;
    }
    size_t at = GlbHeaderSize;
    for (size_t chunk = 0; bytes.size() - at >= ChunkHeaderSize; ++chunk) {
        const uint32_t length = LittleEndian(bytes, at);
        const uint32_t kind = LittleEndian(bytes, at + 4);
        at += ChunkHeaderSize;
        if (length > bytes.size() - at) {
            error = "the binary glTF file is truncated";
            return false;
        }
        const std::span<const uint8_t> content = bytes.subspan(at, length);
        if (chunk == 0 && kind != JsonChunk) {
            break;
        }
        if (chunk == 0) {
            parts.Json = TextOfBytes(content);
        } else if (kind == BinaryChunk && parts.Binary.empty()) {
            parts.Binary = content;
        }
        at += length;
    }
    if (parts.Json.empty()) {
        error = "the binary glTF file does not begin with JSON";
        return false;
    }
    return true;
}
