// A glTF document: its records, and the bytes that they refer to.
#pragma once

#include "provider/gltf/data/GltfParts.h"
#include "provider/gltf/records/GltfRecords.h"
#include "provider/reading/JsonTape.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

struct GltfDocument {
    GltfRecords Records;
    std::vector<std::span<const uint8_t>> Buffers;
    std::vector<std::vector<uint8_t>> OwnBytes; // of buffers in data URIs and other files
};

// Fills an empty document of version 2. json is the tape of parts.Json. The document refers to the
// binary part, which must outlive it, but not to the tape. Buffers are looked up in directory, which
// ends with a separator. Returns false, with place and reason in error, if the document can't be used.
bool ReadGltfDocument(const GltfParts& parts, const JsonTape& json, const std::u16string& directory,
                      GltfDocument& document, std::string& error);

// The bytes of a buffer view. Returns false, with the reason, if it doesn't exist or isn't within its
// buffer.
bool FindBufferView(GltfDocument& document, uint32_t index, std::span<const uint8_t>& bytes,
                    std::string& reason);
