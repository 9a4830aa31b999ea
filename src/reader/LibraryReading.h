// Shared by all readers: the fixed call sequences that read lists and texts from the library, and the
// conversion of transformations, layers and paths.
#pragma once

#include "api/SketchUpAPI.h"
#include "platform/LargeArray.h"
#include "scene/Matrix.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

// The most elements of one list. A larger count is a failed call; no memory is allocated for it.
constexpr uint64_t MaxElementCount = std::numeric_limits<int32_t>::max();

// How the returned count of an array is checked.
enum class ReturnedCount { MustMatch, NotRead };

// Zeroed elements for the library to fill. Large fresh memory is zero already and not touched until it
// is written, so a false count costs little.
template <class Element> struct ClearedArray {
    LargeArray<Element> Elements;
    uint64_t Count = 0;
    uint64_t Written = 0; // elements from the first on that may not be zero

    // Makes it an array of count zeroed elements, in the present memory if they fit.
    void Clear(uint64_t count) {
        const bool isNew = count * sizeof(Element) > Elements.Memory.Room;
        const bool wasMapped = Elements.Memory.Reserved != 0;
        Elements.Clear(); // nothing is to be copied
        Elements.Resize(count);
        if (isNew && !wasMapped) {
            Written = Elements.Memory.Reserved != 0 ? 0 : count;
        }
        std::fill_n(Elements.begin(), std::min(count, Written), Element{});
        Written = std::max(Written, count);
        Count = count;
    }
    void ReleaseLarge() {
        Elements.ReleaseLarge();
        Written = Elements.Memory.Room != 0 ? Written : 0;
    }
    const Element* begin() const {
        return Elements.begin();
    }
    const Element* end() const {
        return Elements.end();
    }
};

// Reads all elements of one kind: the count, then an array of that size. Empty on any failure. An
// element that the library doesn't write is null.
template <class Element, class Owner>
ClearedArray<Element> ReadList(Owner owner, int32_t (*getCount)(Owner, uint64_t*),
                               int32_t (*getElements)(Owner, uint64_t, Element[], uint64_t*),
                               ReturnedCount rule) {
    uint64_t count = 0;
    if (getCount(owner, &count) != 0 || count == 0 || count > MaxElementCount) {
        return {};
    }
    ClearedArray<Element> elements;
    elements.Clear(count);
    uint64_t returned = 0;
    if (getElements(owner, count, elements.Elements.begin(), &returned) != 0) {
        return {};
    }
    if (rule == ReturnedCount::MustMatch && returned != count) {
        return {};
    }
    return elements;
}

// Returns the text that a getter stores in a string of the library, truncated to TextLimit units. Empty
// if the getter fails.
template <class Owner> std::u16string ReadText(Owner owner, int32_t (*getText)(Owner, StringHandle*)) {
    // One unit more than the library's limit: the text always ends inside the buffer.
    char16_t buffer[TextLimit + 1] = {};
    StringHandle string = {};
    SUStringCreate(&string);
    if (getText(owner, &string) == 0) {
        uint64_t length = 0;
        SUStringGetUTF16(string, TextLimit, buffer, &length);
        buffer[TextLimit] = 0;
    }
    SUStringRelease(&string);
    return buffer;
}

// Converts a transformation of the model, translation in 12 to 14, to a scene matrix. Values are rounded
// to floats first; Y and Z are exchanged in rows and columns, and the fourth column keeps its place.
Matrix4 ConvertTransform(const double transform[TransformValues]);

// Whether an element is skipped because its layer is invisible. False if the element itself is hidden,
// is null, or a query about it fails.
bool IsExcludedByLayer(DrawingElementHandle element);

// Returns a path for the library: UTF-8, otherwise unchanged. Returns nothing if it exceeds the
// library's limit: the call is then not made and counts as failed.
std::optional<std::string> LibraryPath(const std::u16string& path);
