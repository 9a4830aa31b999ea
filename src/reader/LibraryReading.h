// What all readers share: the two fixed sequences in which lists and texts are read from the library,
// and transformations, layers and paths on their way in and out.
#pragma once

#include "api/SketchUpAPI.h"
#include "scene/Matrix.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>

// The most elements of one list. A greater count is taken for a failed call, before memory is asked for.
constexpr uint64_t MaxElementCount = std::numeric_limits<int32_t>::max();

// What a returned count has to be for an array to be used.
enum class ReturnedCount { MustMatch, NotRead };

// Elements for the library to fill. Fresh memory that nobody writes to is not touched, so that a count
// which is a lie costs little.
template <class Element> struct ClearedArray {
    std::unique_ptr<Element[], decltype(&std::free)> Elements = {nullptr, std::free};
    uint64_t Count = 0;
    uint64_t Room = 0; // elements that fit the memory

    // Makes it an array of so many cleared elements, in the memory that it has if they fit.
    void Clear(uint64_t count) {
        Count = count;
        if (count <= Room) {
            std::fill_n(Elements.get(), count, Element{});
            return;
        }
        Elements.reset();
        Room = 0;
        Elements.reset(static_cast<Element*>(std::calloc(count, sizeof(Element))));
        if (Elements == nullptr) {
            throw std::bad_alloc();
        }
        Room = count;
    }
    const Element* begin() const {
        return Elements.get();
    }
    const Element* end() const {
        return Elements.get() + Count;
    }
};

// All elements of one kind of an owner: the count, then an array of that size. Empty on any failure. An
// element that the library left alone is null.
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
    if (getElements(owner, count, elements.Elements.get(), &returned) != 0) {
        return {};
    }
    if (rule == ReturnedCount::MustMatch && returned != count) {
        return {};
    }
    return elements;
}

// The text that a getter puts into a string of the library, cut at TextLimit units. Empty if the getter
// fails.
template <class Owner> std::u16string ReadText(Owner owner, int32_t (*getText)(Owner, StringHandle*)) {
    // One unit more than the library is told of: the text ends inside the buffer whatever is written.
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

// A transformation of the model, translation in 12 to 14, as a matrix of the scene. Values are rounded
// to floats first; Y and Z are exchanged in rows and columns, and the fourth column keeps its place.
Matrix4 ConvertTransform(const double transform[TransformValues]);

// Whether an element is left out: its layer is invisible and it isn't hidden itself. A null element, and
// one about which a query fails, stays in.
bool IsExcludedByLayer(DrawingElementHandle element);

// A path as the library takes it: UTF-8, otherwise as it stands. Nothing if it doesn't fit the library's
// limit: such a path is never handed on, and the call that needed it counts as failed.
std::optional<std::string> LibraryPath(const std::u16string& path);
