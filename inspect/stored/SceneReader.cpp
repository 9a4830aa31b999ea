// The scene file reader: one pass over the bytes, with a stack of counts instead of recursion. It
// requests no more memory than the bytes read so far have filled, except for one step.
#include "inspect/stored/SceneReader.h"

#include "inspect/stored/Wording.h"

#include "platform/Platform.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cmath>
#include <cstring>

// Numbers are copied from the file without conversion.
static_assert(std::endian::native == std::endian::little);

namespace {

constexpr uint32_t HeaderMagic = 0x11111111;
constexpr uint32_t NodeMagic = 0x22222222;
constexpr uint32_t MeshMagic = 0x42424242;
constexpr uint32_t MaterialMagic = 0x32443244;
constexpr uint32_t FormatVersion = 107;

// Sizes in bytes.
constexpr size_t HeaderSize = 12;
constexpr size_t NodeSize = 340;
constexpr size_t NodeNameSize = 256;
constexpr size_t MeshSize = 52;
constexpr size_t MaterialSize = 124;
// Offset of the four colour floats in a material record.
constexpr size_t ColourAt = 12;
// The smallest mesh block: its two records and two strings of one NUL each.
constexpr size_t SmallestMeshBlock = MeshSize + MaterialSize + 2 + 2;
constexpr size_t TriangleSize = 12;
// Arrays are read in steps of this size.
constexpr size_t StepSize = size_t{1} << 15;

// A record from the file, with its offset and its name for messages.
template <size_t RecordSize> struct Record {
    std::array<uint8_t, RecordSize> Data;
    uint64_t Start = 0;
    const char16_t* What = nullptr;
};

template <typename T> T At(const uint8_t* data) {
    T value;
    std::memcpy(&value, data, sizeof value);
    return value;
}

bool Fail(SceneReading& reading, uint64_t offset, const std::u16string& reason) {
    if (!reading.Fault) {
        reading.Fault = SceneFault{offset, reason};
    }
    return false;
}

bool Fail(SceneReading& reading, uint64_t offset, const char16_t* what, const std::u16string& reason) {
    return Fail(reading, offset, what + (u": " + reason));
}

// Shows the share of a file that is read, if its size is known.
void ShowShare(SceneReading& reading, size_t bytes) {
    constexpr size_t bytesPerStep = 256;
    if (reading.Progress == nullptr || !IsProgressDue(*reading.Progress, 1 + bytes / bytesPerStep)) {
        return;
    }
    const uint64_t size = reading.Size.value_or(0);
    ShowProgress(*reading.Progress,
                 size != 0 ? "Reading: " + std::to_string(reading.Position * 100 / size) + " %"
                           : "Reading: " + std::to_string(reading.Position / 1000000) + " MB");
}

// Reads up to size bytes and returns their number. Sets the fault if the file can't be read.
size_t Fetch(SceneReading& reading, void* to, size_t size) {
    size_t got = 0;
    if (reading.File != nullptr) {
        errno = 0;
        got = std::fread(to, 1, size, reading.File.get());
        if (got < size && std::ferror(reading.File.get()) != 0) {
            Fail(reading, reading.Position + got, u"the file can't be read" + InBrackets(errno));
        }
    } else {
        const auto rest = reading.Bytes.subspan(static_cast<size_t>(reading.Position));
        got = std::min(size, rest.size());
        std::copy_n(rest.begin(), got, static_cast<uint8_t*>(to));
    }
    reading.Position += got;
    ShowShare(reading, got);
    return got;
}

bool FailShort(SceneReading& reading, uint64_t start, const char16_t* what, uint64_t needed,
               uint64_t got) {
    return Fail(reading, start, what, Number(needed) + u" bytes needed, " + Number(got) + u" left");
}

template <size_t RecordSize>
bool Take(SceneReading& reading, const char16_t* what, Record<RecordSize>& record) {
    record.Start = reading.Position;
    record.What = what;
    const size_t got = Fetch(reading, record.Data.data(), RecordSize);
    return got == RecordSize || FailShort(reading, record.Start, what, RecordSize, got);
}

// Nothing if the file's size is unknown.
std::optional<uint64_t> BytesLeft(const SceneReading& reading) {
    if (!reading.Size) {
        return std::nullopt;
    }
    return *reading.Size - std::min(*reading.Size, reading.Position);
}

// Reads an array of count items and passes it on in parts. use(items, number of the first) returns
// false if it finds a fault.
template <typename T, typename Use>
bool TakeArray(SceneReading& reading, uint64_t count, const char16_t* what, Use use) {
    const uint64_t start = reading.Position;
    const uint64_t needed = count * sizeof(T);
    if (const auto left = BytesLeft(reading); left && needed > *left) {
        return FailShort(reading, start, what, needed, *left);
    }
    std::array<T, StepSize / sizeof(T)> step;
    uint64_t done = 0;
    while (done < count) {
        const auto wanted = static_cast<size_t>(std::min<uint64_t>(step.size(), count - done));
        const size_t got = Fetch(reading, step.data(), wanted * sizeof(T));
        if (got < wanted * sizeof(T)) {
            return FailShort(reading, start, what, needed, reading.Position - start);
        }
        if (!use(std::span<const T>(step.data(), wanted), done)) {
            return false;
        }
        done += wanted;
    }
    return true;
}

// Clears the vector, and reserves memory for count items if the file is known to have their bytes.
template <typename T> void Prepare(const SceneReading& reading, uint64_t count, std::vector<T>& values) {
    values.clear();
    if (const auto left = BytesLeft(reading); left && count * sizeof(T) <= *left) {
        values.reserve(static_cast<size_t>(count));
    }
}

template <typename T> void Append(std::vector<T>& values, std::span<const T> more) {
    values.insert(values.end(), more.begin(), more.end());
}

template <size_t RecordSize> bool CheckWord(SceneReading& reading, const Record<RecordSize>& record,
                                            size_t at, uint32_t expected, const char16_t* field) {
    const auto word = At<uint32_t>(record.Data.data() + at);
    return word == expected ||
           Fail(reading, record.Start + at, record.What,
                std::u16string(field) + u" is " + Hex(word, 8) + u", not " + Hex(expected, 8));
}

bool CheckZero(SceneReading& reading, std::span<const uint8_t> bytes, uint64_t start,
               const char16_t* what, const char16_t* field) {
    const auto place = std::find_if(bytes.begin(), bytes.end(), [](uint8_t byte) { return byte != 0; });
    return place == bytes.end() ||
           Fail(reading, start + static_cast<uint64_t>(place - bytes.begin()), what,
                std::u16string(field) + u" is " + Hex(*place, 2) + u", not 00");
}

template <size_t RecordSize> bool CheckZero(SceneReading& reading, const Record<RecordSize>& record,
                                            size_t from, size_t size, const char16_t* field) {
    return CheckZero(reading, std::span(record.Data).subspan(from, size), record.Start + from,
                     record.What, field);
}

template <size_t RecordSize>
bool CheckReserved(SceneReading& reading, const Record<RecordSize>& record, size_t from, size_t size) {
    return CheckZero(reading, record, from, size, u"reserved byte");
}

template <size_t RecordSize>
bool CheckOne(SceneReading& reading, const Record<RecordSize>& record, size_t at) {
    return CheckWord(reading, record, at, std::bit_cast<uint32_t>(1.0F), u"fixed float");
}

// The largest allowed count, and the reason for the limit.
struct Limit {
    uint64_t Most;
    const char16_t* Setter;
};
constexpr Limit MeshVertices = {99999, u"the most that a mesh can have"};

// The largest count of items of at least itemSize bytes that fit into the rest of the file, without its
// bytes reserved for others. No limit if the file's size is unknown.
Limit FileLimit(const SceneReading& reading, uint64_t reserved, size_t itemSize) {
    constexpr auto setter = u"the most that the rest of the file can hold";
    const auto left = BytesLeft(reading);
    if (!left) {
        return {UINT64_MAX, setter};
    }
    return {(*left - std::min(*left, reserved)) / itemSize, setter};
}

// Checks a signed count.
template <size_t RecordSize> bool CheckCount(SceneReading& reading, const Record<RecordSize>& record,
                                             size_t at, Limit limit, const char16_t* field,
                                             uint32_t& count) {
    const auto value = At<int32_t>(record.Data.data() + at);
    if (value < 0) {
        return Fail(reading, record.Start + at, record.What,
                    std::u16string(field) + u" is negative: " + Number(value));
    }
    count = static_cast<uint32_t>(value);
    return count <= limit.Most || Fail(reading, record.Start + at, record.What,
                                       std::u16string(field) + u" is " + Number(count) + u", above " +
                                           Number(limit.Most) + u", " + limit.Setter);
}

bool ReadHeader(SceneReading& reading) {
    Record<HeaderSize> header;
    return Take(reading, u"file header", header) &&
           CheckWord(reading, header, 0, HeaderMagic, u"magic") &&
           CheckWord(reading, header, 4, FormatVersion, u"version") &&
           CheckReserved(reading, header, 8, 4);
}

// UTF-16 of length units. The last one, and no other, must be NUL.
bool ReadString(SceneReading& reading, uint32_t length, const char16_t* what, std::u16string& text) {
    const uint64_t start = reading.Position;
    text.clear();
    const auto use = [&](std::span<const char16_t> units, uint64_t first) {
        for (size_t unit = 0; unit < units.size(); ++unit) {
            const bool last = first + unit == length - 1;
            if ((units[unit] == 0) != last) {
                return Fail(reading, start + (first + unit) * 2, what,
                            last ? u"no NUL at its end" : u"NUL before its end");
            }
        }
        text.append(units.begin(), units.end());
        return true;
    };
    if (!TakeArray<char16_t>(reading, length, what, use)) {
        return false;
    }
    text.pop_back();
    return true;
}

template <size_t RecordSize> bool CheckLength(SceneReading& reading, const Record<RecordSize>& record,
                                              size_t at, const char16_t* field, uint32_t& length) {
    length = At<uint32_t>(record.Data.data() + at);
    return length != 0 || Fail(reading, record.Start + at, record.What,
                               std::u16string(field) + u" is 0, with no room for the closing NUL");
}

// Every channel of a colour is a byte divided by 255.
bool CheckColour(SceneReading& reading, const Record<MaterialSize>& record, size_t at, float& colour) {
    colour = At<float>(record.Data.data() + at);
    const float steps = colour * 255.0F;
    const bool inRange = steps >= 0.0F && steps < 255.5F && !std::signbit(colour);
    return (inRange && std::round(steps) / 255.0F == colour) ||
           Fail(reading, record.Start + at, record.What,
                u"colour " + Hex(At<uint32_t>(record.Data.data() + at), 8) +
                    u" isn't a byte divided by 255");
}

bool ReadMaterial(SceneReading& reading, StoredMaterial& material) {
    Record<MaterialSize> record;
    uint32_t nameLength = 0;
    uint32_t pathLength = 0;
    if (!Take(reading, u"material record", record) ||
        !CheckWord(reading, record, 0, MaterialMagic, u"magic") ||
        !CheckLength(reading, record, 4, u"name length", nameLength) ||
        !CheckReserved(reading, record, 8, 4)) {
        return false;
    }
    for (size_t channel = 0; channel < 4; ++channel) {
        if (!CheckColour(reading, record, ColourAt + channel * 4, material.Colour[channel])) {
            return false;
        }
    }
    if (!CheckReserved(reading, record, 28, 16) ||
        !CheckLength(reading, record, 44, u"texture path length", pathLength) ||
        !CheckReserved(reading, record, 48, 4) || !CheckOne(reading, record, 52) ||
        !CheckReserved(reading, record, 56, 16) || !CheckOne(reading, record, 72) ||
        !CheckReserved(reading, record, 76, 48) ||
        !ReadString(reading, nameLength, u"material name", material.Name) ||
        !ReadString(reading, pathLength, u"texture path", material.TexturePath)) {
        return false;
    }
    for (size_t channel = 0; channel < 3 && !material.TexturePath.empty(); ++channel) {
        if (material.Colour[channel] != 1.0F) {
            return Fail(reading, record.Start + ColourAt + channel * 4, record.What,
                        u"a material with a texture isn't white");
        }
    }
    return true;
}

bool ReadVertices(SceneReading& reading, uint32_t count, StoredMesh& mesh) {
    Prepare(reading, count, mesh.Vertices);
    const auto append = [&](std::span<const StoredVertex> vertices, uint64_t) {
        Append(mesh.Vertices, vertices);
        return true;
    };
    if (!TakeArray<StoredVertex>(reading, count, u"vertex array", append)) {
        return false;
    }
    const uint64_t start = reading.Position;
    const auto check = [&](std::span<const uint8_t> bytes, uint64_t first) {
        return CheckZero(reading, bytes, start + first, u"zero array", u"byte");
    };
    return TakeArray<uint8_t>(reading, uint64_t{count} * 4, u"zero array", check);
}

bool ReadIndices(SceneReading& reading, uint64_t count, StoredMesh& mesh) {
    const uint64_t start = reading.Position;
    const size_t vertexCount = mesh.Vertices.size();
    Prepare(reading, count, mesh.Indices);
    const auto append = [&](std::span<const uint32_t> indices, uint64_t first) {
        for (size_t position = 0; position < indices.size(); ++position) {
            if (indices[position] >= vertexCount) {
                return Fail(reading, start + (first + position) * 4, u"index array",
                            u"index " + Number(indices[position]) + u" isn't below the vertex count " +
                                Number(vertexCount));
            }
        }
        Append(mesh.Indices, indices);
        return true;
    };
    return TakeArray<uint32_t>(reading, count, u"index array", append);
}

bool ReadMesh(SceneReading& reading) {
    Record<MeshSize> record;
    uint32_t vertexCount = 0;
    uint32_t triangleCount = 0;
    return Take(reading, u"mesh record", record) && CheckWord(reading, record, 0, MeshMagic, u"magic") &&
           CheckCount(reading, record, 4, MeshVertices, u"vertex count", vertexCount) &&
           CheckCount(reading, record, 8, FileLimit(reading, 0, TriangleSize), u"triangle count",
                      triangleCount) &&
           CheckReserved(reading, record, 12, 40) && ReadMaterial(reading, reading.Mesh.Material) &&
           ReadVertices(reading, vertexCount, reading.Mesh) &&
           ReadIndices(reading, uint64_t{triangleCount} * 3, reading.Mesh);
}

bool ReadNode(SceneReading& reading) {
    StoredNode& node = reading.Node;
    Record<NodeSize> record;
    if (!Take(reading, u"node record", record) || !CheckWord(reading, record, 0, NodeMagic, u"magic")) {
        return false;
    }
    const auto* const name = reinterpret_cast<const char*>(record.Data.data() + 4);
    const void* const nul = std::memchr(name, 0, NodeNameSize);
    if (nul == nullptr) {
        return Fail(reading, record.Start + 4, record.What, u"no NUL in the name");
    }
    node.Name.assign(name, static_cast<const char*>(nul));
    if (!CheckZero(reading, record, 4 + node.Name.size(), NodeNameSize - node.Name.size(),
                   u"byte after the name's NUL")) {
        return false;
    }
    std::memcpy(node.Matrix.data(), record.Data.data() + 260, sizeof node.Matrix);
    // Blocks owed elsewhere in the tree follow this one, so their smallest size is not available to it.
    // Counts that pass therefore request no more than the file holds, even summed over all nodes.
    const uint64_t owed = reading.OwedNodes * NodeSize;
    return CheckReserved(reading, record, 324, 4) &&
           CheckCount(reading, record, 328, FileLimit(reading, owed, SmallestMeshBlock), u"mesh count",
                      reading.MeshCount) &&
           CheckCount(
               reading, record, 332,
               FileLimit(reading, owed + uint64_t{reading.MeshCount} * SmallestMeshBlock, NodeSize),
               u"child count", reading.ChildCount) &&
           CheckReserved(reading, record, 336, 4);
}

ScenePart ReadEnd(SceneReading& reading) {
    const uint64_t end = reading.Position;
    const auto left = BytesLeft(reading);
    uint8_t byte = 0;
    if (Fetch(reading, &byte, 1) != 0) {
        Fail(reading, end, u"end of file",
             (left ? Counted(*left, u"byte", u"bytes") : u"bytes") + u" after the last block");
    }
    return reading.Fault ? ScenePart::Fault : ScenePart::End;
}

// The size of the file, if it is known.
std::optional<uint64_t> SizeOf(std::FILE* file) {
    long size = -1;
    if (std::fseek(file, 0, SEEK_END) == 0) {
        size = std::ftell(file);
        std::rewind(file);
    }
    // Devices and files that the system generates on reading have bytes but no size.
    return size > 0 ? std::optional(static_cast<uint64_t>(size)) : std::nullopt;
}

void Collect(SceneReading& reading, StoredScene& scene) {
    // The last node on each level of the current path.
    std::vector<uint32_t> path;
    for (ScenePart part = ReadPart(reading); part != ScenePart::End; part = ReadPart(reading)) {
        if (part == ScenePart::Fault) {
            return;
        }
        if (part == ScenePart::Mesh) {
            scene.Nodes.back().Meshes.push_back(std::move(reading.Mesh));
            continue;
        }
        const auto position = static_cast<uint32_t>(scene.Nodes.size());
        scene.Nodes.push_back(reading.Node);
        path.resize(static_cast<size_t>(reading.Depth) - 1);
        if (!path.empty()) {
            scene.Nodes.back().Parent = path.back();
            scene.Nodes[path.back()].Children.push_back(position);
        }
        path.push_back(position);
    }
}

std::optional<SceneFault> ReadAll(SceneReading& reading, StoredScene& scene) {
    scene.Nodes.clear();
    Collect(reading, scene);
    if (reading.Fault) {
        scene.Nodes.clear();
    }
    return reading.Fault;
}

} // namespace

std::u16string FaultText(const SceneFault& fault) {
    return u"at byte " + Number(fault.Offset) + u": " + fault.Reason;
}

SceneReading ReadingOfBytes(std::span<const uint8_t> bytes) {
    SceneReading reading;
    reading.Bytes = bytes;
    reading.Size = bytes.size();
    return reading;
}

SceneReading ReadingOfFile(const std::u16string& path) {
    SceneReading reading;
    errno = 0;
    reading.File = {OpenForReading(path), std::fclose};
    if (reading.File == nullptr) {
        Fail(reading, 0, u"the file can't be opened" + InBrackets(errno));
    } else {
        reading.Size = SizeOf(reading.File.get());
    }
    return reading;
}

ScenePart ReadPart(SceneReading& reading) {
    if (reading.Fault) {
        return ScenePart::Fault;
    }
    if (reading.OwedMeshes > 0) {
        --reading.OwedMeshes;
        return ReadMesh(reading) ? ScenePart::Mesh : ScenePart::Fault;
    }
    if (reading.Position == 0 && !ReadHeader(reading)) {
        return ScenePart::Fault;
    }
    std::vector<uint32_t>& levels = reading.OwedChildren;
    while (!levels.empty() && levels.back() == 0) {
        levels.pop_back();
    }
    if (levels.empty()) {
        return ReadEnd(reading);
    }
    --levels.back();
    --reading.OwedNodes;
    if (!ReadNode(reading)) {
        return ScenePart::Fault;
    }
    reading.Depth = levels.size();
    reading.OwedMeshes = reading.MeshCount;
    reading.OwedNodes += reading.ChildCount;
    levels.push_back(reading.ChildCount);
    return ScenePart::Node;
}

std::optional<SceneFault> ReadStoredScene(std::span<const uint8_t> bytes, StoredScene& scene) {
    SceneReading reading = ReadingOfBytes(bytes);
    return ReadAll(reading, scene);
}

std::optional<SceneFault> ReadStoredSceneFile(const std::u16string& path, StoredScene& scene,
                                              ProgressLine* progress) {
    SceneReading reading = ReadingOfFile(path);
    reading.Progress = progress;
    return ReadAll(reading, scene);
}
