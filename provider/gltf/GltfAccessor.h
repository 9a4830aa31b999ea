// Reads the numbers of the accessors of a glTF document. All ranges are checked here, against the
// actual buffers, not their stated sizes.
#pragma once

#include "provider/gltf/GltfDocument.h"
#include "provider/model/Model.h"

// The bytes of a buffer view. Returns false if it isn't within its buffer.
bool FindBufferView(const GltfDocument& document, size_t index, std::span<const uint8_t>& bytes);

// The number of elements of an accessor. Returns false if the accessor does not exist or its data isn't
// within its buffer.
bool CountElements(const GltfDocument& document, int accessor, uint32_t& count);

// Reads elements of two or three components; the third is 0 if there are two. Returns null, or the
// reason why they can't be read.
const char* ReadPoints(const GltfDocument& document, int accessor, IndexRange range,
                       std::vector<Point3>& points);

// The same for all elements, of one whole number each.
const char* ReadIndices(const GltfDocument& document, int accessor, std::vector<uint32_t>& indices);
