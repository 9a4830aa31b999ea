// The elements of accessors: views of the bytes of the file, and the numbers in them.
#pragma once

#include "provider/gltf/data/GltfDocument.h"

// Elements in bytes whose range is checked.
struct ElementView {
    const uint8_t* Bytes = nullptr; // null: all components are 0
    size_t Stride = 0;              // bytes
    size_t Count = 0;
    size_t Components = 0;
    GltfType Type = GltfType::None;
    bool Normalized = false;
};

struct GltfElements {
    ElementView Base;
    // The element of Base whose number is in Places is replaced by the one of Values, one after the
    // other.
    ElementView Places;
    ElementView Values;
};

// Whether some of the numbers are in the file; otherwise all are 0.
inline bool HasData(const GltfElements& elements) {
    return elements.Base.Bytes != nullptr || elements.Places.Count > 0;
}

// Finds the elements of an accessor. Returns false, with the reason, if the accessor does not exist, its
// type isn't one of glTF, or its data isn't within its buffer.
bool FindElements(GltfDocument& document, uint32_t accessor, GltfElements& elements,
                  std::string& reason);

// Reads elements of two or three components; the third is 0 if there are two. Returns null, or the
// reason why they can't be read.
const char* ReadPoints(const GltfElements& elements, IndexRange range, std::vector<Point3>& points);

// The same for elements of exactly as many components as stated, one after the other in numbers.
const char* ReadTuples(const GltfElements& elements, IndexRange range, size_t components,
                       std::vector<double>& numbers);

// The same for all elements, of one whole number each.
const char* ReadIndices(const GltfElements& elements, std::vector<uint32_t>& indices);
