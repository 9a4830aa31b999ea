// A glTF file split into its records and the bytes that they refer to. The records are not checked
// against the bytes.
#pragma once

#include "provider/reading/JsonTape.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <tiny_gltf.h>
#include <vector>

struct GltfImage {
    std::string Name;
    std::string Uri;                    // as written
    std::optional<uint32_t> BufferView; // instead of Uri
};

struct GltfDocument {
    tinygltf::Model Records; // without buffers, images, animations and skins
    std::vector<GltfImage> Images;
    std::vector<std::span<const uint8_t>> Buffers;
    std::vector<std::vector<uint8_t>> OwnBytes; // of buffers in data URIs and other files
};

// The two parts of a binary file; any other file is Json as a whole.
struct GltfParts {
    std::string_view Json;
    std::span<const uint8_t> Binary;
};

// Splits a binary file. Returns false, with the reason in error, if the file is truncated or malformed.
bool SplitGlb(std::span<const uint8_t> bytes, GltfParts& parts, std::string& error);

// Fills an empty document of version 2. json is the tape of parts.Json. The document refers to the
// bytes of parts, which must outlive it. Buffers are looked up in directory, which ends with a
// separator.
bool ReadGltfDocument(const GltfParts& parts, const JsonTape& json, const std::u16string& directory,
                      GltfDocument& document, std::string& error);
