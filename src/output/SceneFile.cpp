// Writes scene files.
#include "output/SceneFile.h"

#include "output/SceneRecords.h"
#include "platform/Platform.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <string>

namespace {

template <class Record> bool WriteRecord(OutputFile& file, const Record& record) {
    return file.Write(&record, sizeof record);
}

// In parts, since one write takes less than 4 GB.
template <class Element> bool WriteArray(OutputFile& file, std::span<Element> elements) {
    constexpr size_t most = (size_t{1} << 30) / sizeof(Element);
    for (size_t first = 0; first < elements.size(); first += most) {
        const size_t count = std::min(elements.size() - first, most);
        if (!file.Write(elements.data() + first, static_cast<uint32_t>(count * sizeof(Element)))) {
            return false;
        }
    }
    return true;
}

// Writes four zero bytes for each vertex.
bool WriteZeros(OutputFile& file, size_t vertexCount) {
    static constexpr std::array<uint32_t, 1024> Zeros = {};
    for (size_t left = vertexCount; left > 0;) {
        const size_t count = std::min(left, Zeros.size());
        if (!file.Write(Zeros.data(), static_cast<uint32_t>(count * sizeof Zeros[0]))) {
            return false;
        }
        left -= count;
    }
    return true;
}

uint32_t LengthWithNul(const std::u16string& text) {
    return static_cast<uint32_t>(text.size() + 1);
}

bool WriteText(OutputFile& file, const std::u16string& text) {
    return file.Write(text.c_str(), LengthWithNul(text) * static_cast<uint32_t>(sizeof(char16_t)));
}

float ColorPart(uint32_t color, int shift) {
    return static_cast<float>((color >> shift) & 0xFF) / 255.0f;
}

MaterialRecord MakeMaterialRecord(const MaterialEntry& entry) {
    // A textured material is stored white: readers multiply the picture by the colour.
    const uint32_t color = entry.RelativePath.empty() ? entry.Color : entry.Color | 0x00FFFFFF;
    MaterialRecord record;
    record.NameLength = LengthWithNul(entry.Name);
    record.TexturePathLength = LengthWithNul(entry.RelativePath);
    record.Red = ColorPart(color, 16);
    record.Green = ColorPart(color, 8);
    record.Blue = ColorPart(color, 0);
    record.Alpha = ColorPart(color, 24);
    return record;
}

// Stores the name in its field, truncated to leave room for the NUL. The limit counts UTF-16 units, each
// a byte in a single-byte code page.
void SetNodeName(NodeRecord& record, const std::u16string& name) {
    const std::u16string_view units = std::u16string_view(name).substr(0, NodeNameSize - 1);
    const std::string bytes = AnsiFromUtf16(units);
    std::copy_n(bytes.begin(), std::min(bytes.size(), units.size()), record.Name);
}

} // namespace

bool WriteMesh(const SceneMesh& mesh, OutputFile& file, const MaterialTable& materials) {
    assert(mesh.MaterialIndex >= 0 && static_cast<size_t>(mesh.MaterialIndex) < materials.Rows.size());
    MeshRecord record;
    record.VertexCount = static_cast<int32_t>(mesh.Vertices.size());
    record.TriangleCount = static_cast<int32_t>(mesh.Indices.size()) / 3;
    const MaterialEntry& entry = materials.Rows[static_cast<size_t>(mesh.MaterialIndex)];
    return WriteRecord(file, record) && WriteRecord(file, MakeMaterialRecord(entry)) &&
           WriteText(file, entry.Name) && WriteText(file, entry.RelativePath) &&
           WriteArray(file, mesh.Vertices) && WriteZeros(file, mesh.Vertices.size()) &&
           WriteArray(file, mesh.Indices);
}

bool WriteNode(const SceneNode& node, OutputFile& file, const MaterialTable& materials) {
    NodeRecord record;
    SetNodeName(record, node.Name);
    record.Matrix = node.Matrix;
    record.MeshCount = static_cast<int32_t>(node.Meshes.Elements.size());
    record.ChildCount = static_cast<int32_t>(node.Children.Elements.size());
    return WriteRecord(file, record) &&
           std::ranges::all_of(
               node.Meshes.Elements,
               [&](const SceneMesh* mesh) { return WriteMesh(*mesh, file, materials); }) &&
           std::ranges::all_of(node.Children.Elements, [&](const SceneNode* child) {
               return WriteNode(*child, file, materials);
           });
}

bool WriteScene(OutputFile& file, const SceneNode& root, const MaterialTable& materials) {
    // Without the flush a full disk would show only in Close, which ignores errors.
    return WriteRecord(file, FileHeader()) && WriteNode(root, file, materials) && file.Flush();
}
