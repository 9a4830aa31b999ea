// Views of the elements of accessors, dense and sparse, and single components from them.
#include "provider/gltf/data/GltfElements.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

// The most elements of an accessor without bytes: all are zero, so a short file could request any
// number.
constexpr size_t MostZeroElements = size_t{1} << 24;

static_assert(std::endian::native == std::endian::little, "glTF numbers are copied without conversion");

namespace {

constexpr const char* TypeReason = "the data type is not a glTF type";
constexpr const char* TooFewReason = "there are fewer elements than vertices";

template <class Number> Number LoadNumber(const uint8_t* bytes) {
    Number number;
    std::memcpy(&number, bytes, sizeof number);
    return number;
}

size_t SizeOf(GltfType type) {
    switch (type) {
    case GltfType::Int8:
    case GltfType::Uint8:
        return 1;
    case GltfType::Int16:
    case GltfType::Uint16:
        return 2;
    case GltfType::Uint32:
    case GltfType::Float:
        return 4;
    case GltfType::None:
        break;
    }
    return 0;
}

double ComponentOf(const ElementView& view, size_t element, size_t component) {
    if (view.Bytes == nullptr) {
        return 0.0;
    }
    const uint8_t* bytes = view.Bytes + element * view.Stride + component * SizeOf(view.Type);
    const auto scaled = [&](double number, double most) {
        return view.Normalized ? std::max(number / most, -1.0) : number;
    };
    switch (view.Type) {
    case GltfType::Int8:
        return scaled(LoadNumber<int8_t>(bytes), INT8_MAX);
    case GltfType::Uint8:
        return scaled(LoadNumber<uint8_t>(bytes), UINT8_MAX);
    case GltfType::Int16:
        return scaled(LoadNumber<int16_t>(bytes), INT16_MAX);
    case GltfType::Uint16:
        return scaled(LoadNumber<uint16_t>(bytes), UINT16_MAX);
    case GltfType::Uint32:
        return LoadNumber<uint32_t>(bytes);
    default:
        return static_cast<double>(LoadNumber<float>(bytes));
    }
}

// Sets the bytes and the stride of a view to those of a buffer view from an offset on.
bool PlaceView(GltfDocument& document, uint32_t bufferView, uint64_t offset, ElementView& view,
               std::string& reason) {
    std::span<const uint8_t> bytes;
    if (!FindBufferView(document, bufferView, bytes, reason)) {
        return false;
    }
    const size_t size = view.Components * SizeOf(view.Type);
    const size_t stated = document.Records.BufferViews[bufferView].Stride;
    view.Stride = stated != 0 ? stated : size;
    reason = "the data is outside its buffer";
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

bool FindReplaced(GltfDocument& document, const GltfSparse& sparse, GltfElements& elements,
                  std::string& reason) {
    elements.Values = elements.Base;
    elements.Places.Type = sparse.PlaceType;
    elements.Places.Components = 1;
    elements.Places.Count = elements.Values.Count = sparse.Count;
    return PlaceView(document, sparse.PlaceView, sparse.PlaceOffset, elements.Places, reason) &&
           PlaceView(document, sparse.ValueView, sparse.ValueOffset, elements.Values, reason);
}

// Calls set with the number of each replaced element and the position of its new value in Values.
template <class Set> const char* ReplaceSparse(const GltfElements& elements, Set set) {
    for (size_t i = 0; i < elements.Places.Count; ++i) {
        const double place = ComponentOf(elements.Places, i, 0);
        if (!(place >= 0.0 && place < static_cast<double>(elements.Base.Count))) {
            return "a sparse index is not below the number of elements";
        }
        set(static_cast<size_t>(place), i);
    }
    return nullptr;
}

Point3 PointAt(const ElementView& view, size_t element) {
    // The type of nearly all data.
    if (view.Type == GltfType::Float && view.Bytes != nullptr) {
        std::array<float, 3> floats = {};
        std::memcpy(floats.data(), view.Bytes + element * view.Stride, view.Components * sizeof(float));
        return {static_cast<double>(floats[0]), static_cast<double>(floats[1]),
                static_cast<double>(floats[2])};
    }
    return {ComponentOf(view, element, 0), ComponentOf(view, element, 1),
            view.Components == 3 ? ComponentOf(view, element, 2) : 0.0};
}

bool HasRange(const ElementView& view, IndexRange range) {
    return range.First <= view.Count && range.Count <= view.Count - range.First;
}

// Calls read with a view, the number of an element in it and its place in the range: for all elements of
// the range, then again for those that are replaced.
template <class Read> const char* ReadRange(const GltfElements& elements, IndexRange range, Read read) {
    for (size_t i = 0; i < range.Count; ++i) {
        read(elements.Base, range.First + i, i);
    }
    return ReplaceSparse(elements, [&](size_t place, size_t element) {
        if (place >= range.First && place - range.First < range.Count) {
            read(elements.Values, element, place - range.First);
        }
    });
}

template <class Number> void LoadIndices(const ElementView& view, std::vector<uint32_t>& indices) {
    for (size_t i = 0; i < view.Count; ++i) {
        indices[i] = LoadNumber<Number>(view.Bytes + i * view.Stride);
    }
}

} // namespace

bool FindElements(GltfDocument& document, uint32_t accessor, GltfElements& elements,
                  std::string& reason) {
    if (accessor >= document.Records.Accessors.size()) {
        reason = "the accessor does not exist";
        return false;
    }
    const GltfAccessor& record = document.Records.Accessors[accessor];
    if (record.Type == GltfType::None) {
        reason = TypeReason;
        return false;
    }
    elements = {};
    elements.Base.Count = record.Count;
    elements.Base.Components = record.Components;
    elements.Base.Type = record.Type;
    elements.Base.Normalized = record.Normalized;
    if (record.View == NoIndex) {
        if (record.Count > MostZeroElements) {
            reason = "there are too many elements without data";
            return false;
        }
    } else if (!PlaceView(document, record.View, record.Offset, elements.Base, reason)) {
        return false;
    }
    return record.Sparse == NoIndex ||
           FindReplaced(document, document.Records.Sparse[record.Sparse], elements, reason);
}

const char* ReadPoints(const GltfElements& elements, IndexRange range, std::vector<Point3>& points) {
    const ElementView& base = elements.Base;
    if (base.Components != 2 && base.Components != 3) {
        return "the elements do not have two or three components";
    }
    if (!HasRange(base, range)) {
        return TooFewReason;
    }
    points.resize(range.Count);
    return ReadRange(elements, range, [&](const ElementView& from, size_t element, size_t at) {
        points[at] = PointAt(from, element);
    });
}

const char* ReadTuples(const GltfElements& elements, IndexRange range, size_t components,
                       std::vector<double>& numbers) {
    if (elements.Base.Components != components) {
        return "the elements have another number of components";
    }
    if (!HasRange(elements.Base, range)) {
        return TooFewReason;
    }
    numbers.resize(range.Count * components);
    return ReadRange(elements, range, [&](const ElementView& from, size_t element, size_t at) {
        for (size_t i = 0; i < components; ++i) {
            numbers[at * components + i] = ComponentOf(from, element, i);
        }
    });
}

const char* ReadIndices(const GltfElements& elements, std::vector<uint32_t>& indices) {
    const ElementView& base = elements.Base;
    const bool isUnsigned =
        base.Type == GltfType::Uint8 || base.Type == GltfType::Uint16 || base.Type == GltfType::Uint32;
    if (base.Components != 1 || !isUnsigned) {
        return "indices must be single unsigned numbers";
    }
    indices.resize(base.Count);
    if (base.Bytes == nullptr) {
        std::ranges::fill(indices, 0);
    } else if (base.Type == GltfType::Uint8) {
        LoadIndices<uint8_t>(base, indices);
    } else if (base.Type == GltfType::Uint16) {
        LoadIndices<uint16_t>(base, indices);
    } else {
        LoadIndices<uint32_t>(base, indices);
    }
    ElementView values = elements.Values;
    values.Normalized = false;
    return ReplaceSparse(elements, [&](size_t place, size_t element) {
        indices[place] = static_cast<uint32_t>(ComponentOf(values, element, 0));
    });
}
