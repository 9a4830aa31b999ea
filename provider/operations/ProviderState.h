// The state behind the handles: the open model, and the strings and image reps of callers.
//
// A handle holds its kind, a serial number and an index, so that every operation rejects null, handles
// of other kinds, those of a released model, and any other value.
//   bits 56 to 63  HandleKind
//   bits 52 to 55  for a drawing element: ElementKind
//   bits 32 to 51  serial number of the model, or of the use of a slot
//   bits  0 to 31  index
#pragma once

#include "api/SketchUpAPI.h"
#include "provider/model/Model.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

constexpr int32_t Success = 0;
constexpr int32_t Failure = 1;

enum class HandleKind : uint8_t {
    Model = 1,
    Entities,
    Face,
    Group,
    Instance,
    Definition,
    Image,
    ImageRep,
    Entity,
    DrawingElement,
    Layer,
    Material,
    Texture,
    TextureWriter,
    String,
    UVHelper,
    MeshHelper
};

// The kind of the element behind a drawing element.
enum class ElementKind : uint8_t { None, Face, Group, Instance, Image };

constexpr int KindShift = 56;
constexpr int ElementShift = 52;
constexpr int SerialShift = 32;
constexpr uint64_t SerialMask = 0xFFFFF;

struct HandleParts {
    HandleKind Kind = {};
    ElementKind Element = ElementKind::None;
    uint32_t Serial = 0;
    uint32_t Index = 0;
};

constexpr uint64_t HandleValue(HandleParts parts) {
    return uint64_t{static_cast<uint8_t>(parts.Kind)} << KindShift |
           uint64_t{static_cast<uint8_t>(parts.Element)} << ElementShift |
           (parts.Serial & SerialMask) << SerialShift | parts.Index;
}

constexpr HandleParts PartsOf(uint64_t value) {
    return {static_cast<HandleKind>(value >> KindShift),
            static_cast<ElementKind>(value >> ElementShift & 0xF),
            static_cast<uint32_t>(value >> SerialShift & SerialMask), static_cast<uint32_t>(value)};
}

// Objects that callers create and release, in slots that are reused. Serial grows with each use of a
// slot, so that a handle becomes invalid on release.
template <class Content> struct Slot {
    Content Value = {};
    uint32_t Serial = 0;
    bool Used = false;
};

struct ImageRep {
    uint64_t Width = 0; // pixels; 0 until an image fills the rep
    uint64_t Height = 0;
};

struct ProviderState {
    std::unique_ptr<Model> Open; // null while no model is open
    uint32_t Serial = 0;         // of the model opened last
    bool HasTextureWriter = false;
    std::vector<Slot<std::u16string>> Strings;
    std::vector<Slot<ImageRep>> ImageReps;
};

// The state of the library. C operations have no other place for it.
ProviderState& State();

// A handle of the open model.
inline uint64_t ModelHandleValue(HandleKind kind, uint32_t index,
                                 ElementKind element = ElementKind::None) {
    return HandleValue({kind, element, State().Serial, index});
}

// Whether a handle has this kind and belongs to the open model. Its index isn't checked.
inline bool DecodeHandle(uint64_t value, HandleKind kind, HandleParts& parts) {
    const ProviderState& state = State();
    parts = PartsOf(value);
    return state.Open != nullptr && parts.Kind == kind && parts.Serial == (state.Serial & SerialMask);
}

// The element of an array of the open model that a handle refers to, or null.
template <class Element>
const Element* FindElement(uint64_t value, HandleKind kind, const std::vector<Element> Model::*array) {
    HandleParts parts;
    if (!DecodeHandle(value, kind, parts) || parts.Element != ElementKind::None) {
        return nullptr;
    }
    const std::vector<Element>& elements = State().Open.get()->*array;
    return parts.Index < elements.size() ? &elements[parts.Index] : nullptr;
}

// Runs work that can run out of memory: no exception may leave a C operation.
template <class Work> int32_t WithoutExceptions(Work work) {
    try {
        return work();
    } catch (...) {
        return Failure;
    }
}

// Takes a free slot or a new one.
template <class Content> uint64_t UseSlot(std::vector<Slot<Content>>& slots, HandleKind kind) {
    uint32_t index = 0;
    while (index < slots.size() && slots[index].Used) {
        ++index;
    }
    if (index == slots.size()) {
        slots.emplace_back();
    }
    slots[index].Used = true;
    ++slots[index].Serial;
    return HandleValue({kind, ElementKind::None, slots[index].Serial, index});
}

// The slot in use that a handle refers to, or null.
template <class Content>
Slot<Content>* FindSlot(std::vector<Slot<Content>>& slots, HandleKind kind, uint64_t value) {
    const HandleParts parts = PartsOf(value);
    if (parts.Kind != kind || parts.Element != ElementKind::None || parts.Index >= slots.size()) {
        return nullptr;
    }
    Slot<Content>& slot = slots[parts.Index];
    return slot.Used && (slot.Serial & SerialMask) == parts.Serial ? &slot : nullptr;
}

// Creates an object in a slot and writes its handle.
template <class Content, class Handle>
int32_t CreateInSlot(std::vector<Slot<Content>>& slots, HandleKind kind, Handle* handle) {
    if (handle == nullptr) {
        return Failure;
    }
    return WithoutExceptions([&] {
        handle->Value = UseSlot(slots, kind);
        return Success;
    });
}

// Releases the slot of a handle and sets the handle to null.
template <class Content, class Handle>
int32_t ReleaseSlot(std::vector<Slot<Content>>& slots, HandleKind kind, Handle* handle) {
    Slot<Content>* slot = handle != nullptr ? FindSlot(slots, kind, handle->Value) : nullptr;
    if (slot == nullptr) {
        return Failure;
    }
    slot->Value = {};
    slot->Used = false;
    handle->Value = 0;
    return Success;
}

// The handle of an element as a drawing element; null if found is null.
inline DrawingElementHandle DrawingElementOf(const void* found, uint64_t value, ElementKind element) {
    if (found == nullptr) {
        return {0};
    }
    return {ModelHandleValue(HandleKind::DrawingElement, PartsOf(value).Index, element)};
}

// Writes the transformation of a group, an instance or an image, which may be null.
template <class Element> int32_t WritePlacement(const Element* found, double* transform) {
    if (found == nullptr || transform == nullptr) {
        return Failure;
    }
    std::ranges::copy(found->Placement, transform);
    return Success;
}

// Writes the handles of a range of elements, as many as fit, and their number.
template <class Handle> int32_t WriteHandles(HandleKind kind, IndexRange range, uint64_t count,
                                             Handle handles[], uint64_t* returned) {
    if (returned == nullptr || (handles == nullptr && count > 0)) {
        return Failure;
    }
    uint32_t written = 0;
    for (; written < range.Count && written < count; ++written) {
        handles[written].Value = ModelHandleValue(kind, range.First + written);
    }
    *returned = written;
    return Success;
}

// Sets a caller's string.
int32_t FillString(StringHandle* string, const std::u16string& text);

// The same for the name of a picture file, with "_" for line ends and what else a terminal would obey:
// callers print it.
int32_t FillFileName(StringHandle* string, const std::u16string& name);

// Prints one line on standard error: the path, a colon, and the text. What a terminal would obey becomes
// blanks, what isn't UTF-8 U+FFFD, and a line of more than 4096 units ends there.
void ReportLine(std::string_view path, std::string_view text);

// Writes a picture as PNG to a path in UTF-8. Reports a picture that can't be encoded.
int32_t WritePicture(const ModelPicture& picture, const char* path);
