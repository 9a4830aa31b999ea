// A glTF document: its records, and the bytes that they refer to.
#pragma once

#include "provider/gltf/compression/Draco.h"
#include "provider/gltf/data/GltfParts.h"
#include "provider/gltf/records/GltfRecords.h"
#include "provider/reading/JsonTape.h"

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

struct GltfDocument {
    GltfRecords Records;
    std::vector<std::span<const uint8_t>> Buffers;
    std::vector<std::vector<uint8_t>> OwnBytes; // of buffers in data URIs and other files

    // What has been decoded so far, by buffer view.
    std::map<uint32_t, std::vector<uint8_t>> MeshoptViews;
    std::map<uint32_t, DracoMesh> DracoMeshes;
    // Bytes that may still be decoded: all bytes of the buffers once. Otherwise buffer views that share
    // a range could multiply it.
    uint64_t CompressedLeft = 0;
    uint64_t SpareTriangles = 0; // that Draco meshes may still have above the number for their size
};

// Fills an empty document of version 2. json is the tape of parts.Json. The document refers to the
// binary part, which must outlive it, but not to the tape. Buffers are looked up in directory, which
// ends with a separator. Returns false, with place and reason in error, if the document can't be used.
bool ReadGltfDocument(const GltfParts& parts, const JsonTape& json, const std::u16string& directory,
                      GltfDocument& document, std::string& error);

// The bytes of a buffer view, decoded if its buffer has only compressed ones. Returns false, with the
// reason, if it doesn't exist, isn't within its buffer, or can't be decoded.
bool FindBufferView(GltfDocument& document, uint32_t index, std::span<const uint8_t>& bytes,
                    std::string& reason);

// The mesh compressed by Draco in a buffer view; null, with the reason, if it can't be decoded.
const DracoMesh* FindDracoMesh(GltfDocument& document, uint32_t view, std::string& reason);
