// Reads each kind of record straight from the tape.
#include "provider/gltf/records/ReadRecords.h"

#include "platform/Text.h"
#include "provider/gltf/records/GltfExtensions.h"
#include "provider/gltf/records/GltfFields.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <map>

// In the order of their enumerations, from the first known one on.
constexpr std::array<std::string_view, 3> MeshoptModes = {"ATTRIBUTES", "TRIANGLES", "INDICES"};
constexpr std::array<std::string_view, 4> MeshoptFilters = {"NONE", "OCTAHEDRAL", "QUATERNION",
                                                            "EXPONENTIAL"};

constexpr uint64_t LargestStride = 252; // bytes
// Of a primitive, and in its compressed mesh: for each attribute all are searched.
constexpr uint32_t MostAttributes = 256;
constexpr double TrianglesMode = 4; // also the default
constexpr double StripMode = 5;
constexpr double FanMode = 6;

namespace {

struct RecordReading {
    const JsonTape& Json;
    GltfRecords& Output;
    std::string& Error;
    std::map<std::string_view, uint32_t> Names; // of extensions that are not supported
};

bool Fail(RecordReading& reading, uint32_t value, const std::string& reason) {
    return FailAt(reading.Json, value, reason, reading.Error);
}

// The error about a required member that is missing or of another type. Always returns false.
bool FailRequired(RecordReading& reading, uint32_t object, std::string_view key,
                  const std::string& reason) {
    const uint32_t value = MemberOf(reading.Json, object, key);
    return value == 0 ? Fail(reading, object, "the key " + std::string(key) + " is missing")
                      : Fail(reading, value, reason);
}

bool RequireSize(RecordReading& reading, uint32_t object, std::string_view key, uint64_t& size) {
    return ReadSize(reading.Json, object, key, size) ||
           FailRequired(reading, object, key, "this must be a whole number and not negative");
}

bool RequireObject(RecordReading& reading, uint32_t object, std::string_view key, uint32_t& member) {
    member = ObjectMember(reading.Json, object, key);
    return member != 0 || FailRequired(reading, object, key, "this must be an object");
}

// A member that is an index. It may be missing.
uint32_t IndexOf(const RecordReading& reading, uint32_t object, std::string_view key) {
    return IndexMember(reading.Json, object, key);
}

// The index of the name of an extension; NoIndex if the name is empty.
uint32_t KeepName(RecordReading& reading, std::string_view name) {
    if (name.empty()) {
        return NoIndex;
    }
    std::vector<std::string>& names = reading.Output.Extensions;
    const auto [found, isNew] = reading.Names.emplace(name, static_cast<uint32_t>(names.size()));
    if (isNew) {
        names.emplace_back(name);
    }
    return found->second;
}

uint32_t UnknownOf(RecordReading& reading, uint32_t object) {
    return KeepName(reading, UnknownExtensionOf(reading.Json, object));
}

// Calls read for each element of an array at the top level. All of them must be objects.
template <class Read> bool ReadEach(RecordReading& reading, std::string_view key, Read read) {
    const JsonTape& json = reading.Json;
    const uint32_t array = RootArray(json, key);
    for (uint32_t i = array + 1; array != 0 && i < json.Values[array].Next; i = json.Values[i].Next) {
        if (KindOf(json, i) != JsonKind::Object) {
            return Fail(reading, i, "this must be an object");
        }
        if (!read(i)) {
            return false;
        }
    }
    return true;
}

// The number of a name in an enumeration whose first value is for unknown names.
uint8_t NumberOfName(std::span<const std::string_view> names, std::string_view name) {
    const auto found = std::ranges::find(names, name);
    return found != names.end() ? static_cast<uint8_t>(1 + (found - names.begin())) : uint8_t{0};
}

// Returns the index of the stream, or NoIndex if the buffer view has none.
uint32_t ReadMeshopt(RecordReading& reading, uint32_t object) {
    const JsonTape& json = reading.Json;
    const uint32_t extension = ExtensionOf(json, object, MeshoptExtension);
    if (extension == 0) {
        return NoIndex;
    }
    GltfMeshopt stream;
    stream.Buffer = IndexOf(reading, extension, "buffer");
    ReadSize(json, extension, "byteOffset", stream.Offset);
    ReadSize(json, extension, "byteLength", stream.Length);
    ReadSize(json, extension, "byteStride", stream.Stride);
    ReadSize(json, extension, "count", stream.Count);
    stream.Mode = MeshoptMode(NumberOfName(MeshoptModes, TextMember(json, extension, "mode")));
    const std::string_view filter = TextMember(json, extension, "filter");
    stream.Filter = MeshoptFilter(NumberOfName(MeshoptFilters, filter.empty() ? "NONE" : filter));
    reading.Output.Meshopt.push_back(stream);
    return static_cast<uint32_t>(reading.Output.Meshopt.size() - 1);
}

bool ReadBufferView(RecordReading& reading, uint32_t object) {
    GltfBufferView view;
    uint64_t stride = 0;
    uint64_t buffer = 0;
    if (!RequireSize(reading, object, "buffer", buffer) ||
        !RequireSize(reading, object, "byteLength", view.Length)) {
        return false;
    }
    view.Buffer = static_cast<uint32_t>(std::min<uint64_t>(buffer, NoIndex));
    ReadSize(reading.Json, object, "byteOffset", view.Offset);
    ReadSize(reading.Json, object, "byteStride", stride);
    if (stride > LargestStride || stride % 4 != 0) {
        return Fail(reading, MemberOf(reading.Json, object, "byteStride"),
                    "this must be a multiple of 4 up to 252");
    }
    view.Stride = static_cast<uint32_t>(stride);
    view.Meshopt = ReadMeshopt(reading, object);
    view.Extension = UnknownOf(reading, object);
    reading.Output.BufferViews.push_back(view);
    return true;
}

GltfType TypeOf(uint64_t number) {
    constexpr std::array<GltfType, 6> types = {GltfType::Int8,   GltfType::Uint8,  GltfType::Int16,
                                               GltfType::Uint16, GltfType::Uint32, GltfType::Float};
    const auto found = std::ranges::find(types, number, [](GltfType type) { return uint64_t(type); });
    return found != types.end() ? *found : GltfType::None;
}

uint8_t ComponentsOf(std::string_view type) {
    struct Shape {
        std::string_view Name;
        uint8_t Components;
    };
    constexpr std::array<Shape, 7> shapes = {
        {{"SCALAR", 1}, {"VEC2", 2}, {"VEC3", 3}, {"VEC4", 4}, {"MAT2", 4}, {"MAT3", 9}, {"MAT4", 16}}};
    const auto* const found = std::ranges::find(shapes, type, &Shape::Name);
    return found != shapes.end() ? found->Components : uint8_t{0};
}

bool ReadSparse(RecordReading& reading, uint32_t object, GltfAccessor& accessor) {
    const JsonTape& json = reading.Json;
    if (MemberOf(json, object, "sparse") == 0) {
        return true;
    }
    GltfSparse record;
    uint64_t type = 0;
    uint32_t sparse = 0;
    uint32_t places = 0;
    uint32_t values = 0;
    if (!RequireObject(reading, object, "sparse", sparse) ||
        !RequireObject(reading, sparse, "indices", places) ||
        !RequireObject(reading, sparse, "values", values) ||
        !RequireSize(reading, sparse, "count", record.Count) ||
        !RequireSize(reading, places, "componentType", type)) {
        return false;
    }
    record.PlaceType = TypeOf(type);
    record.PlaceView = IndexOf(reading, places, "bufferView");
    record.ValueView = IndexOf(reading, values, "bufferView");
    ReadSize(json, places, "byteOffset", record.PlaceOffset);
    ReadSize(json, values, "byteOffset", record.ValueOffset);
    if (record.Count > 0) {
        accessor.Sparse = static_cast<uint32_t>(reading.Output.Sparse.size());
        reading.Output.Sparse.push_back(record);
    }
    return true;
}

bool ReadAccessor(RecordReading& reading, uint32_t object) {
    const JsonTape& json = reading.Json;
    GltfAccessor accessor;
    uint64_t type = 0;
    if (!RequireSize(reading, object, "componentType", type) ||
        !RequireSize(reading, object, "count", accessor.Count)) {
        return false;
    }
    accessor.Type = TypeOf(type);
    accessor.Components = ComponentsOf(TextMember(json, object, "type"));
    if (accessor.Components == 0) {
        return FailRequired(reading, object, "type", "this is not a type of glTF");
    }
    accessor.View = IndexOf(reading, object, "bufferView");
    ReadSize(json, object, "byteOffset", accessor.Offset);
    accessor.Normalized = FlagMember(json, object, "normalized", false);
    accessor.Extension = UnknownOf(reading, object);
    if (!ReadSparse(reading, object, accessor)) {
        return false;
    }
    reading.Output.Accessors.push_back(accessor);
    return true;
}

// Splits a name such as TEXCOORD_1.
void ReadSemantic(std::string_view name, GltfAttribute& attribute) {
    struct Prefix {
        std::string_view Text;
        GltfSemantic Semantic;
    };
    constexpr std::array<Prefix, 3> prefixes = {{{"TEXCOORD_", GltfSemantic::Coordinates},
                                                 {"JOINTS_", GltfSemantic::Joints},
                                                 {"WEIGHTS_", GltfSemantic::Weights}}};
    if (name == "POSITION") {
        attribute.Semantic = GltfSemantic::Position;
    } else if (name == "NORMAL") {
        attribute.Semantic = GltfSemantic::Normal;
    }
    for (const auto& [prefix, semantic] : prefixes) {
        if (name.starts_with(prefix)) {
            const char* end = name.data() + name.size();
            const auto [last, fault] = std::from_chars(name.data() + prefix.size(), end, attribute.Set);
            attribute.Semantic = fault == std::errc() && last == end ? semantic : GltfSemantic::Other;
        }
    }
}

// The attributes that are used here. Returns none if one of all attributes isn't a number: such
// primitives are ignored. dracoIds is the object with the same names and the ids of the compressed mesh,
// or 0.
std::vector<GltfAttribute> ReadAttributes(const JsonTape& json, uint32_t object, uint32_t dracoIds) {
    std::vector<GltfAttribute> attributes;
    for (uint32_t i = object + 1; object != 0 && i < json.Values[object].Next; i = json.Values[i].Next) {
        if (KindOf(json, i) != JsonKind::Number) {
            return {};
        }
        GltfAttribute attribute;
        attribute.Accessor = IndexIn(json, i);
        attribute.DracoId = IndexMember(json, dracoIds, KeyOf(json, i));
        ReadSemantic(KeyOf(json, i), attribute);
        if (attribute.Semantic != GltfSemantic::Other) {
            attributes.push_back(attribute);
        }
    }
    return attributes;
}

GltfMode ReadMode(const JsonTape& json, uint32_t object) {
    const double mode = NumberMember(json, object, "mode", TrianglesMode);
    if (mode == TrianglesMode || mode != std::floor(mode)) {
        return GltfMode::Triangles;
    }
    if (mode == StripMode) {
        return GltfMode::Strip;
    }
    return mode == FanMode ? GltfMode::Fan : GltfMode::Other;
}

bool ReadMesh(RecordReading& reading, uint32_t object) {
    const JsonTape& json = reading.Json;
    GltfMesh mesh;
    mesh.Name = Utf16FromUtf8(TextMember(json, object, "name"));
    for (const uint32_t element : ElementsOf(json, ArrayMember(json, object, "primitives"))) {
        GltfPrimitive& primitive = mesh.Primitives.emplace_back();
        const uint32_t draco = ExtensionOf(json, element, DracoExtension);
        primitive.DracoView = IndexOf(reading, draco, "bufferView");
        const uint32_t attributes = ObjectMember(json, element, "attributes");
        const uint32_t dracoIds = ObjectMember(json, draco, "attributes");
        for (const uint32_t members : {attributes, dracoIds}) {
            if (members != 0 && CountIn(json, members) > MostAttributes) {
                return Fail(reading, members,
                            "there are more than " + std::to_string(MostAttributes) + " attributes");
            }
        }
        primitive.Attributes = ReadAttributes(json, attributes, dracoIds);
        for (const uint32_t target : ElementsOf(json, ArrayMember(json, element, "targets"))) {
            primitive.Targets.push_back(ReadAttributes(json, target, 0));
        }
        primitive.Indices = IndexOf(reading, element, "indices");
        primitive.Material = IndexOf(reading, element, "material");
        primitive.Mode = ReadMode(json, element);
        primitive.Extension = UnknownOf(reading, element);
    }
    mesh.Weights = NumbersMember(json, object, "weights");
    reading.Output.Meshes.push_back(std::move(mesh));
    return true;
}

bool ReadTexture(RecordReading& reading, uint32_t object) {
    const JsonTape& json = reading.Json;
    GltfTexture texture;
    texture.Image = IndexOf(reading, object, "source");
    if (texture.Image == NoIndex) {
        texture.Image = IndexOf(reading, ExtensionOf(json, object, WebpExtension), "source");
    }
    for (const std::string_view name : PictureExtensions) {
        if (texture.Image == NoIndex && ExtensionOf(json, object, name) != 0) {
            texture.Extension = KeepName(reading, name);
        }
    }
    reading.Output.Textures.push_back(texture);
    return true;
}

// Skins have no effect if they are broken.
void ReadSkins(RecordReading& reading) {
    const JsonTape& json = reading.Json;
    for (const uint32_t object : ElementsOf(json, RootArray(json, "skins"))) {
        GltfSkin& skin = reading.Output.Skins.emplace_back();
        for (const uint32_t joint : ElementsOf(json, ArrayMember(json, object, "joints"))) {
            skin.Joints.push_back(IndexIn(json, joint));
        }
        skin.InverseBindMatrices = IndexOf(reading, object, "inverseBindMatrices");
    }
}

} // namespace

bool ReadGltfRecords(const JsonTape& json, GltfRecords& records, std::string& error) {
    RecordReading reading = {json, records, error, {}};
    ReadSkins(reading);
    const auto with = [&](bool (*read)(RecordReading&, uint32_t)) {
        return [&reading, read](uint32_t object) {
            return read(reading, object);
        };
    };
    return ReadEach(reading, "bufferViews", with(ReadBufferView)) &&
           ReadEach(reading, "accessors", with(ReadAccessor)) &&
           ReadEach(reading, "meshes", with(ReadMesh)) &&
           ReadEach(reading, "textures", with(ReadTexture));
}
