// The streams of EXT_meshopt_compression.
#pragma once

#include "provider/gltf/records/GltfRecords.h"

#include <span>

// The largest ratio of elements to compressed bytes: a byte that is the same in 256 vertices of four
// bytes still takes four.
constexpr uint64_t LargestMeshoptGrowth = 64;

// Decodes the elements of a stream. Needs memory for at most LargestMeshoptGrowth bytes per compressed
// byte. Returns false, with the reason, if the stream can't be decoded; the reason completes the
// sentence "the stream ...".
bool DecodeMeshopt(std::span<const uint8_t> bytes, const GltfMeshopt& stream,
                   std::vector<uint8_t>& elements, std::string& reason);
