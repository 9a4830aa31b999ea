// Reads the numbers of accessors: a view of bytes for dense and sparse elements, and single components
// from it.
#include "provider/gltf/GltfAccessor.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

// The most elements of an accessor without bytes: all are zero, so a short file could request any
// number.
constexpr size_t MostZeroElements = size_t{1} << 24;

static_assert(std::endian::native == std::endian::little, "glTF numbers are copied without conversion");

namespace {

constexpr const char* OutsideReason = "the data is outside its buffer";

// Elements in bytes whose size is checked.
struct ElementView {
    const uint8_t* Bytes = nullptr; // null: all components are 0
    size_t Stride = 0;
    size_t Count = 0;
    size_t Components = 0;
    int ComponentType = 0;
    bool Normalized = false;
};

template <class Number> double LoadNumber(const uint8_t* bytes) {
    Number number;
    std::memcpy(&number, bytes, sizeof number);
    return static_cast<double>(number);
}

size_t SizeOfComponent(int type) {
    const int32_t size = tinygltf::GetComponentSizeInBytes(static_cast<uint32_t>(type));
    return size > 0 ? static_cast<size_t>(size) : 0;
}

double ComponentOf(const ElementView& view, size_t element, size_t component) {
    if (view.Bytes == nullptr) {
        return 0.0;
    }
    const uint8_t* bytes =
        view.Bytes + element * view.Stride + component * SizeOfComponent(view.ComponentType);
    const auto scaled = [&](double number, double most) {
        return view.Normalized ? std::max(number / most, -1.0) : number;
    };
    switch (view.ComponentType) {
    case TINYGLTF_COMPONENT_TYPE_BYTE:
        return scaled(LoadNumber<int8_t>(bytes), INT8_MAX);
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE:
        return scaled(LoadNumber<uint8_t>(bytes), UINT8_MAX);
    case TINYGLTF_COMPONENT_TYPE_SHORT:
        return scaled(LoadNumber<int16_t>(bytes), INT16_MAX);
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT:
        return scaled(LoadNumber<uint16_t>(bytes), UINT16_MAX);
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT:
        return LoadNumber<uint32_t>(bytes);
    default:
        return LoadNumber<float>(bytes);
    }
}

bool IsStoredType(int type) {
    return (type >= TINYGLTF_COMPONENT_TYPE_BYTE && type <= TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT) ||
           type == TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT || type == TINYGLTF_COMPONENT_TYPE_FLOAT;
}

// Sets the bytes and the stride of a view to those of a buffer view from an offset on.
bool PlaceView(const GltfDocument& document, int bufferView, size_t offset, ElementView& view) {
    std::span<const uint8_t> bytes;
    if (bufferView < 0 || !FindBufferView(document, static_cast<size_t>(bufferView), bytes)) {
        return false;
    }
    const size_t size = view.Components * SizeOfComponent(view.ComponentType);
    const size_t stated = document.Records.bufferViews[static_cast<size_t>(bufferView)].byteStride;
    view.Stride = stated != 0 ? stated : size;
    if (offset > bytes.size() || size == 0 || view.Count == 0) {
        return false;
    }
    const size_t available = bytes.size() - offset;
    if (available < size || (available - size) / view.Stride < view.Count - 1) {
        return false;
    }
    view.Bytes = bytes.data() + offset;
    return true;
}

const tinygltf::Accessor* FindAccessor(const GltfDocument& document, int index) {
    const std::vector<tinygltf::Accessor>& accessors = document.Records.accessors;
    return index >= 0 && static_cast<size_t>(index) < accessors.size()
               ? &accessors[static_cast<size_t>(index)]
               : nullptr;
}

// Returns null, or the reason why there is no view. found may be null.
const char* MakeView(const GltfDocument& document, const tinygltf::Accessor* found, ElementView& view) {
    if (found == nullptr) {
        return "the accessor does not exist";
    }
    const tinygltf::Accessor& accessor = *found;
    const int32_t components = tinygltf::GetNumComponentsInType(static_cast<uint32_t>(accessor.type));
    if (!IsStoredType(accessor.componentType) || components < 1) {
        return "the data type is not a glTF type";
    }
    view.Count = accessor.count;
    view.Components = static_cast<size_t>(components);
    view.ComponentType = accessor.componentType;
    view.Normalized = accessor.normalized;
    if (accessor.bufferView < 0) {
        return accessor.count <= MostZeroElements ? nullptr : "there are too many elements without data";
    }
    return PlaceView(document, accessor.bufferView, accessor.byteOffset, view) ? nullptr : OutsideReason;
}

// Calls set with the number of each replaced element and the position of its new value in values.
template <class Set> const char* ReplaceSparse(const GltfDocument& document,
                                               const tinygltf::Accessor& accessor,
                                               const ElementView& base, Set set) {
    const auto& sparse = accessor.sparse;
    if (!sparse.isSparse || sparse.count == 0) {
        return nullptr;
    }
    ElementView places;
    ElementView values = base;
    places.ComponentType = sparse.indices.componentType;
    places.Components = 1;
    places.Count = values.Count = sparse.count > 0 ? static_cast<size_t>(sparse.count) : 0;
    if (!IsStoredType(places.ComponentType) || sparse.indices.byteOffset < 0 ||
        sparse.values.byteOffset < 0 ||
        !PlaceView(document, sparse.indices.bufferView, static_cast<size_t>(sparse.indices.byteOffset),
                   places) ||
        !PlaceView(document, sparse.values.bufferView, static_cast<size_t>(sparse.values.byteOffset),
                   values)) {
        return OutsideReason;
    }
    for (size_t i = 0; i < places.Count; ++i) {
        const double place = ComponentOf(places, i, 0);
        if (!(place >= 0.0 && place < static_cast<double>(base.Count))) {
            return "a sparse index is not below the number of elements";
        }
        set(static_cast<size_t>(place), values, i);
    }
    return nullptr;
}

} // namespace

bool FindBufferView(const GltfDocument& document, size_t index, std::span<const uint8_t>& bytes) {
    if (index >= document.Records.bufferViews.size()) {
        return false;
    }
    const tinygltf::BufferView& view = document.Records.bufferViews[index];
    if (view.buffer < 0 || static_cast<size_t>(view.buffer) >= document.Buffers.size()) {
        return false;
    }
    const std::span<const uint8_t> buffer = document.Buffers[static_cast<size_t>(view.buffer)];
    if (view.byteOffset > buffer.size() || view.byteLength > buffer.size() - view.byteOffset) {
        return false;
    }
    bytes = buffer.subspan(view.byteOffset, view.byteLength);
    return true;
}

bool CountElements(const GltfDocument& document, int accessor, uint32_t& count) {
    const tinygltf::Accessor* found = FindAccessor(document, accessor);
    ElementView view;
    if (MakeView(document, found, view) != nullptr || found->count >= NoIndex) {
        return false;
    }
    count = static_cast<uint32_t>(found->count);
    return true;
}

const char* ReadPoints(const GltfDocument& document, int accessor, IndexRange range,
                       std::vector<Point3>& points) {
    const tinygltf::Accessor* found = FindAccessor(document, accessor);
    ElementView view;
    if (const char* reason = MakeView(document, found, view)) {
        return reason;
    }
    if (view.Components != 2 && view.Components != 3) {
        return "the elements do not have two or three components";
    }
    if (range.First > view.Count || range.Count > view.Count - range.First) {
        return "there are fewer elements than vertices";
    }
    const auto pointAt = [](const ElementView& from, size_t element) {
        // The type of nearly all data.
        if (from.ComponentType == TINYGLTF_COMPONENT_TYPE_FLOAT && from.Bytes != nullptr) {
            std::array<float, 3> floats = {};
            std::memcpy(floats.data(), from.Bytes + element * from.Stride,
                        from.Components * sizeof(float));
            return Point3{static_cast<double>(floats[0]), static_cast<double>(floats[1]),
                          static_cast<double>(floats[2])};
        }
        return Point3{ComponentOf(from, element, 0), ComponentOf(from, element, 1),
                      from.Components == 3 ? ComponentOf(from, element, 2) : 0.0};
    };
    points.resize(range.Count);
    for (size_t i = 0; i < range.Count; ++i) {
        points[i] = pointAt(view, range.First + i);
    }
    return ReplaceSparse(document, *found, view,
                         [&](size_t place, const ElementView& values, size_t element) {
                             if (place >= range.First && place - range.First < range.Count) {
                                 points[place - range.First] = pointAt(values, element);
                             }
                         });
}

const char* ReadIndices(const GltfDocument& document, int accessor, std::vector<uint32_t>& indices) {
    const tinygltf::Accessor* found = FindAccessor(document, accessor);
    ElementView view;
    if (const char* reason = MakeView(document, found, view)) {
        return reason;
    }
    // A double holds every unsigned 32-bit number.
    const bool isUnsigned = view.ComponentType == TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE ||
                            view.ComponentType == TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT ||
                            view.ComponentType == TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT;
    if (view.Components != 1 || !isUnsigned) {
        return "indices must be single unsigned numbers";
    }
    view.Normalized = false;
    indices.resize(view.Count);
    for (size_t i = 0; i < view.Count; ++i) {
        indices[i] = static_cast<uint32_t>(ComponentOf(view, i, 0));
    }
    return ReplaceSparse(document, *found, view,
                         [&](size_t place, const ElementView& values, size_t element) {
                             indices[place] = static_cast<uint32_t>(ComponentOf(values, element, 0));
                         });
}
