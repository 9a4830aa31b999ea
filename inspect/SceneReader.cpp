// The scene file reader: one pass over the bytes, a stack of nodes in place of recursion, and no memory
// asked for before the bytes that fill it are known to be there.
#include "inspect/SceneReader.h"

#include "platform/Platform.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <new>

// Numbers are taken from the file as they lie.
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
// Where the four colour floats stand in a material record.
constexpr size_t ColourAt = 12;
// The least a mesh block takes: its two records and two strings of one NUL each.
constexpr size_t SmallestMeshBlock = MeshSize + MaterialSize + 2 + 2;
constexpr size_t TriangleSize = 12;

// Bytes. Far above any scene seen; keeps an endless device from being read for ever.
constexpr uint64_t MaxFileSize = uint64_t{4} << 30;
constexpr size_t ReadStep = size_t{1} << 20;

std::u16string Decimal(uint64_t value) {
    char digits[20];
    char* const end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    return std::u16string(digits, end);
}

// The lowest digits of the value, as many as asked for.
std::u16string Hex(uint32_t value, unsigned digits) {
    std::u16string text;
    for (unsigned digit = digits; digit-- > 0;) {
        text += u"0123456789ABCDEF"[(value >> (digit * 4)) & 0xF];
    }
    return text;
}

template <typename T> T At(const uint8_t* data) {
    T value;
    std::memcpy(&value, data, sizeof value);
    return value;
}

// Where the reading stands. Once Fault is set, every operation below gives false and changes nothing.
struct Cursor {
    std::span<const uint8_t> Bytes;
    size_t Position = 0;
    std::optional<SceneFault> Fault;
};

size_t BytesLeft(const Cursor& cursor) {
    return cursor.Bytes.size() - cursor.Position;
}

// A record or array that has been found to lie within the file, with its name for messages.
struct Item {
    const uint8_t* Data = nullptr;
    size_t Start = 0;
    const char16_t* What = nullptr;
};

bool Fail(Cursor& cursor, size_t offset, const std::u16string& what, const std::u16string& reason) {
    if (!cursor.Fault) {
        cursor.Fault = SceneFault{offset, what + u": " + reason};
    }
    return false;
}

bool Take(Cursor& cursor, uint64_t size, const char16_t* what, Item& item) {
    if (cursor.Fault) {
        return false;
    }
    if (size > BytesLeft(cursor)) {
        Fail(cursor, cursor.Position, what,
             Decimal(size) + u" bytes needed, " + Decimal(BytesLeft(cursor)) + u" left");
        return false;
    }
    item = {cursor.Bytes.data() + cursor.Position, cursor.Position, what};
    cursor.Position += static_cast<size_t>(size);
    return true;
}

bool CheckWord(Cursor& cursor, const Item& item, size_t at, uint32_t expected, const char16_t* field) {
    const auto word = At<uint32_t>(item.Data + at);
    if (word == expected) {
        return true;
    }
    return Fail(cursor, item.Start + at, item.What,
                std::u16string(field) + u" is " + Hex(word, 8) + u", not " + Hex(expected, 8));
}

bool CheckZero(Cursor& cursor, const Item& item, size_t from, size_t size, const char16_t* field) {
    for (size_t at = from; at < from + size; ++at) {
        if (item.Data[at] != 0) {
            return Fail(cursor, item.Start + at, item.What,
                        std::u16string(field) + u" is " + Hex(item.Data[at], 2) + u", not 00");
        }
    }
    return true;
}

bool CheckReserved(Cursor& cursor, const Item& item, size_t from, size_t size) {
    return CheckZero(cursor, item, from, size, u"reserved byte");
}

bool CheckOne(Cursor& cursor, const Item& item, size_t at) {
    return CheckWord(cursor, item, at, std::bit_cast<uint32_t>(1.0F), u"fixed float");
}

// The most that a count can be, and what sets the limit.
struct Limit {
    uint64_t Most;
    const char16_t* Setter;
};
constexpr Limit MeshVertices = {99999, u"the most that a mesh can have"};

// What no count can exceed: items of the given least size have to fit into the bytes.
Limit FileLimit(uint64_t bytes, size_t itemSize) {
    return {bytes / itemSize, u"the most that the rest of the file can hold"};
}

// A signed count of the file.
bool TakeCount(Cursor& cursor, const Item& item, size_t at, Limit limit, const char16_t* field,
               uint32_t& count) {
    const auto value = At<int32_t>(item.Data + at);
    if (value < 0) {
        return Fail(cursor, item.Start + at, item.What,
                    std::u16string(field) + u" is negative: -" +
                        Decimal(static_cast<uint64_t>(-int64_t{value})));
    }
    count = static_cast<uint32_t>(value);
    if (count > limit.Most) {
        return Fail(cursor, item.Start + at, item.What,
                    std::u16string(field) + u" is " + Decimal(count) + u", above " +
                        Decimal(limit.Most) + u", " + limit.Setter);
    }
    return true;
}

bool ReadHeader(Cursor& cursor) {
    Item header;
    return Take(cursor, HeaderSize, u"file header", header) &&
           CheckWord(cursor, header, 0, HeaderMagic, u"magic") &&
           CheckWord(cursor, header, 4, FormatVersion, u"version") &&
           CheckReserved(cursor, header, 8, 4);
}

// UTF-16 of length units, the last and only the last of them NUL.
bool ReadString(Cursor& cursor, uint32_t length, const char16_t* what, std::u16string& text) {
    Item item;
    if (!Take(cursor, uint64_t{length} * 2, what, item)) {
        return false;
    }
    text.resize(length - 1);
    for (size_t unit = 0; unit < length; ++unit) {
        const auto value = At<char16_t>(item.Data + unit * 2);
        const bool last = unit == length - 1;
        if ((value == 0) != last) {
            return Fail(cursor, item.Start + unit * 2, item.What,
                        last ? u"no NUL at its end" : u"NUL before its end");
        }
        if (!last) {
            text[unit] = value;
        }
    }
    return true;
}

bool CheckLength(Cursor& cursor, const Item& record, size_t at, const char16_t* field,
                 uint32_t& length) {
    length = At<uint32_t>(record.Data + at);
    if (length == 0) {
        return Fail(cursor, record.Start + at, record.What,
                    std::u16string(field) + u" is 0, with no room for the closing NUL");
    }
    return true;
}

// The file knows no colours but those of a byte divided by 255.
bool CheckColour(Cursor& cursor, const Item& record, size_t at, float& colour) {
    colour = At<float>(record.Data + at);
    const float steps = colour * 255.0F;
    const bool inRange = steps >= 0.0F && steps < 255.5F && !std::signbit(colour);
    if (!inRange || std::round(steps) / 255.0F != colour) {
        return Fail(cursor, record.Start + at, record.What,
                    u"colour " + Hex(At<uint32_t>(record.Data + at), 8) + u" is no byte divided by 255");
    }
    return true;
}

bool ReadMaterial(Cursor& cursor, StoredMaterial& material) {
    Item record;
    uint32_t nameLength = 0;
    uint32_t pathLength = 0;
    if (!Take(cursor, MaterialSize, u"material record", record) ||
        !CheckWord(cursor, record, 0, MaterialMagic, u"magic") ||
        !CheckLength(cursor, record, 4, u"name length", nameLength) ||
        !CheckReserved(cursor, record, 8, 4)) {
        return false;
    }
    for (size_t channel = 0; channel < 4; ++channel) {
        if (!CheckColour(cursor, record, ColourAt + channel * 4, material.Colour[channel])) {
            return false;
        }
    }
    if (!CheckReserved(cursor, record, 28, 16) ||
        !CheckLength(cursor, record, 44, u"texture path length", pathLength) ||
        !CheckReserved(cursor, record, 48, 4) || !CheckOne(cursor, record, 52) ||
        !CheckReserved(cursor, record, 56, 16) || !CheckOne(cursor, record, 72) ||
        !CheckReserved(cursor, record, 76, 48) ||
        !ReadString(cursor, nameLength, u"material name", material.Name) ||
        !ReadString(cursor, pathLength, u"texture path", material.TexturePath)) {
        return false;
    }
    for (size_t channel = 0; channel < 3 && !material.TexturePath.empty(); ++channel) {
        if (material.Colour[channel] != 1.0F) {
            return Fail(cursor, record.Start + ColourAt + channel * 4, record.What,
                        u"a material with a texture isn't white");
        }
    }
    return true;
}

template <typename T> bool ReadArray(Cursor& cursor, uint64_t count, const char16_t* what,
                                     std::vector<T>& values, Item& item) {
    if (!Take(cursor, count * sizeof(T), what, item)) {
        return false;
    }
    values.resize(static_cast<size_t>(count));
    if (count != 0) {
        std::memcpy(values.data(), item.Data, static_cast<size_t>(count) * sizeof(T));
    }
    return true;
}

bool ReadMesh(Cursor& cursor, StoredMesh& mesh) {
    Item record;
    uint32_t vertexCount = 0;
    uint32_t triangleCount = 0;
    if (!Take(cursor, MeshSize, u"mesh record", record) ||
        !CheckWord(cursor, record, 0, MeshMagic, u"magic") ||
        !TakeCount(cursor, record, 4, MeshVertices, u"vertex count", vertexCount) ||
        !TakeCount(cursor, record, 8, FileLimit(BytesLeft(cursor), TriangleSize), u"triangle count",
                   triangleCount) ||
        !CheckReserved(cursor, record, 12, 40) || !ReadMaterial(cursor, mesh.Material)) {
        return false;
    }
    Item vertices;
    Item zeros;
    const uint64_t zeroSize = uint64_t{vertexCount} * 4;
    if (!ReadArray(cursor, vertexCount, u"vertex array", mesh.Vertices, vertices) ||
        !Take(cursor, zeroSize, u"zero array", zeros) ||
        !CheckZero(cursor, zeros, 0, static_cast<size_t>(zeroSize), u"byte")) {
        return false;
    }
    Item indices;
    if (!ReadArray(cursor, uint64_t{triangleCount} * 3, u"index array", mesh.Indices, indices)) {
        return false;
    }
    for (size_t position = 0; position < mesh.Indices.size(); ++position) {
        if (mesh.Indices[position] >= vertexCount) {
            return Fail(cursor, indices.Start + position * 4, indices.What,
                        u"index " + Decimal(mesh.Indices[position]) + u" isn't below the vertex count " +
                            Decimal(vertexCount));
        }
    }
    return true;
}

// Reads a node's record and meshes. owedNodes is how many node blocks the nodes read so far still owe;
// on return childCount tells those of this one, not yet counted in.
bool ReadNode(Cursor& cursor, uint64_t owedNodes, StoredNode& node, uint32_t& childCount) {
    Item record;
    if (!Take(cursor, NodeSize, u"node record", record) ||
        !CheckWord(cursor, record, 0, NodeMagic, u"magic")) {
        return false;
    }
    const auto* const name = reinterpret_cast<const char*>(record.Data + 4);
    const void* const nul = std::memchr(name, 0, NodeNameSize);
    if (nul == nullptr) {
        return Fail(cursor, record.Start + 4, record.What, u"no NUL in the name");
    }
    node.Name.assign(name, static_cast<const char*>(nul));
    if (!CheckZero(cursor, record, 4 + node.Name.size(), NodeNameSize - node.Name.size(),
                   u"byte behind the name's NUL")) {
        return false;
    }
    std::memcpy(node.Matrix.data(), record.Data + 260, sizeof node.Matrix);
    // Blocks owed elsewhere in the tree lie behind this one, so their least size isn't free for it: a
    // count that passes doesn't ask for more than the file holds, not even in sum over all nodes.
    const uint64_t left = BytesLeft(cursor);
    const uint64_t owed = owedNodes * NodeSize;
    const uint64_t own = left > owed ? left - owed : 0;
    uint32_t meshCount = 0;
    if (!CheckReserved(cursor, record, 324, 4) ||
        !TakeCount(cursor, record, 328, FileLimit(own, SmallestMeshBlock), u"mesh count", meshCount) ||
        !TakeCount(cursor, record, 332, FileLimit(own - meshCount * SmallestMeshBlock, NodeSize),
                   u"child count", childCount) ||
        !CheckReserved(cursor, record, 336, 4)) {
        return false;
    }
    node.Meshes.resize(meshCount);
    for (StoredMesh& mesh : node.Meshes) {
        if (!ReadMesh(cursor, mesh)) {
            return false;
        }
    }
    return true;
}

bool ReadTree(Cursor& cursor, std::vector<StoredNode>& nodes) {
    struct Level {
        uint32_t Node;
        uint32_t ChildrenLeft;
    };
    std::vector<Level> path;
    uint64_t owedNodes = 0;
    std::optional<uint32_t> parent;
    do {
        uint32_t childCount = 0;
        StoredNode node;
        if (!ReadNode(cursor, owedNodes, node, childCount)) {
            return false;
        }
        node.Parent = parent;
        const auto position = static_cast<uint32_t>(nodes.size());
        if (parent) {
            nodes[*parent].Children.push_back(position);
        }
        nodes.push_back(std::move(node));
        path.push_back({position, childCount});
        owedNodes += childCount;
        while (!path.empty() && path.back().ChildrenLeft == 0) {
            path.pop_back();
        }
        if (!path.empty()) {
            --path.back().ChildrenLeft;
            --owedNodes;
            parent = path.back().Node;
        }
    } while (!path.empty());
    return true;
}

// Appends the whole file; gives false with the reason if it can't.
bool ReadFile(const std::u16string& path, std::vector<uint8_t>& bytes, std::u16string& reason) {
    std::FILE* const file = OpenForReading(path);
    if (file == nullptr) {
        reason = u"the file can't be opened";
        return false;
    }
    size_t got = ReadStep;
    while (got == ReadStep && bytes.size() <= MaxFileSize) {
        const size_t before = bytes.size();
        bytes.resize(before + ReadStep);
        got = std::fread(bytes.data() + before, 1, ReadStep, file);
        bytes.resize(before + got);
    }
    if (std::ferror(file) != 0) {
        reason = u"the file can't be read";
    } else if (bytes.size() > MaxFileSize) {
        reason = u"the file is larger than 4 GiB";
    }
    std::fclose(file);
    return reason.empty();
}

} // namespace

std::u16string FaultText(const SceneFault& fault) {
    return u"at byte " + Decimal(fault.Offset) + u": " + fault.Reason;
}

std::optional<SceneFault> ReadStoredScene(std::span<const uint8_t> bytes, StoredScene& scene) {
    scene.Nodes.clear();
    Cursor cursor{bytes, 0, std::nullopt};
    if (ReadHeader(cursor) && ReadTree(cursor, scene.Nodes) && BytesLeft(cursor) != 0) {
        Fail(cursor, cursor.Position, u"end of file",
             Decimal(BytesLeft(cursor)) + u" bytes left over behind the last block");
    }
    if (cursor.Fault) {
        scene.Nodes.clear();
    }
    return cursor.Fault;
}

std::optional<SceneFault> ReadStoredSceneFile(const std::u16string& path, StoredScene& scene) {
    scene.Nodes.clear();
    std::vector<uint8_t> bytes;
    try {
        std::u16string reason;
        if (!ReadFile(path, bytes, reason)) {
            return SceneFault{bytes.size(), reason};
        }
        return ReadStoredScene(bytes, scene);
    } catch (const std::bad_alloc&) {
        scene.Nodes.clear();
        return SceneFault{bytes.size(), u"not enough memory for the file"};
    }
}
