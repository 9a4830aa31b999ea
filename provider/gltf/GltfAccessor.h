// The numbers behind the accessors of a glTF document. All ranges are checked here: against the buffers
// as they are, not as the document states them.
#pragma once

#include "provider/gltf/GltfDocument.h"
#include "provider/model/Model.h"

// The bytes of a buffer view. Gives false when it doesn't lie within its buffer.
bool FindBufferView(const GltfDocument& document, size_t index, std::span<const uint8_t>& bytes);

// The number of elements of an accessor. Gives false when there is no such accessor or its elements
// can't all be there.
bool CountElements(const GltfDocument& document, int accessor, uint32_t& count);

// Reads elements of two or three components; the third is 0 where there are two. Gives null, or the
// reason why they can't be read.
const char* ReadPoints(const GltfDocument& document, int accessor, IndexRange range,
                       std::vector<Point3>& points);

// Reads all elements of one whole number each.
const char* ReadIndices(const GltfDocument& document, int accessor, std::vector<uint32_t>& indices);
