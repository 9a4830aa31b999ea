// A glTF file taken apart: its records and the bytes that they refer to. Nothing in the records has been
// checked against the bytes.
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
    std::vector<std::vector<uint8_t>> OwnBytes; // of the buffers that lie outside of the file
};

// The two parts of a binary file, or all of any other as Json.
struct GltfParts {
    std::string_view Json;
    std::span<const uint8_t> Binary;
};

// Takes a binary file apart. Gives false, and the reason in error, when the parts don't add up to the
// file.
bool SplitGlb(std::span<const uint8_t> bytes, GltfParts& parts, std::string& error);

// Fills an empty document of version 2. json is the tape of parts.Json. The document refers to the bytes
// of parts, which must outlive it. directory, with its closing separator, is where buffers are looked
// for.
bool ReadGltfDocument(const GltfParts& parts, const JsonTape& json, const std::u16string& directory,
                      GltfDocument& document, std::string& error);
