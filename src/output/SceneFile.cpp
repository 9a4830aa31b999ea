// Writes scene files.
#include "output/SceneFile.h"

#include "output/SceneRecords.h"
#include "platform/Platform.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <string>

namespace {

struct SceneWriting {
    OutputFile& File;
    const MaterialTable& Materials;
    ProgressLine& Progress;
    uint64_t Written = 0; // bytes of arrays, as the next
    uint64_t All = 0;
};

template <class Record> bool WriteRecord(OutputFile& file, const Record& record) {
    return file.Write(&record, sizeof record);
}

template <class Element> uint64_t BytesOf(std::span<Element> elements) {
    return uint64_t{elements.size()} * sizeof(Element);
}

uint64_t BytesOfArrays(const SceneNode& node) {
    uint64_t bytes = 0;
    for (const SceneMesh* mesh : node.Meshes.Elements) {
        bytes += BytesOf(mesh->Vertices) + BytesOf(mesh->Indices);
    }
    for (const SceneNode* child : node.Children.Elements) {
        bytes += BytesOfArrays(*child);
    }
    return bytes;
}

void CountWritten(SceneWriting& writing, uint64_t bytes) {
    writing.Written += bytes;
    if (IsProgressDue(writing.Progress, bytes)) {
        ShowProgress(writing.Progress,
                     "Writing: " + std::to_string(writing.Written * 100 / writing.All) + " %");
    }
}

// In parts, since one write takes less than 4 GB, and for the progress.
template <class Element> bool WriteArray(SceneWriting& writing, std::span<Element> elements) {
    constexpr size_t most = (size_t{1} << 24) / sizeof(Element);
    for (size_t first = 0; first < elements.size(); first += most) {
        const size_t bytes = std::min(elements.size() - first, most) * sizeof(Element);
        if (!writing.File.Write(elements.data() + first, static_cast<uint32_t>(bytes))) {
            return false;
        }
        CountWritten(writing, bytes);
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

// Writes one mesh block: mesh and material records, name and texture path of the material, arrays.
bool WriteMesh(SceneWriting& writing, const SceneMesh& mesh) {
    const std::vector<MaterialEntry>& rows = writing.Materials.Rows;
    assert(mesh.MaterialIndex >= 0 && static_cast<size_t>(mesh.MaterialIndex) < rows.size());
    MeshRecord record;
    record.VertexCount = static_cast<int32_t>(mesh.Vertices.size());
    record.TriangleCount = static_cast<int32_t>(mesh.Indices.size()) / 3;
    const MaterialEntry& entry = rows[static_cast<size_t>(mesh.MaterialIndex)];
    OutputFile& file = writing.File;
    return WriteRecord(file, record) && WriteRecord(file, MakeMaterialRecord(entry)) &&
           WriteText(file, entry.Name) && WriteText(file, entry.RelativePath) &&
           WriteArray(writing, mesh.Vertices) && WriteZeros(file, mesh.Vertices.size()) &&
           WriteArray(writing, mesh.Indices);
}

// Writes one node block: the node, its meshes, its children.
bool WriteNode(SceneWriting& writing, const SceneNode& node) {
    NodeRecord record;
    SetNodeName(record, node.Name);
    record.Matrix = node.Matrix;
    record.MeshCount = static_cast<int32_t>(node.Meshes.Elements.size());
    record.ChildCount = static_cast<int32_t>(node.Children.Elements.size());
    const auto writeMesh = [&](const SceneMesh* mesh) {
        return WriteMesh(writing, *mesh);
    };
    const auto writeChild = [&](const SceneNode* child) {
        return WriteNode(writing, *child);
    };
    return WriteRecord(writing.File, record) && std::ranges::all_of(node.Meshes.Elements, writeMesh) &&
           std::ranges::all_of(node.Children.Elements, writeChild);
}

} // namespace

bool WriteScene(OutputFile& file, const SceneNode& root, const MaterialTable& materials,
                ProgressLine& progress) {
    SceneWriting writing = {file, materials, progress};
    writing.All = progress.IsTerminal ? BytesOfArrays(root) : 0;
    StartStage(progress);
    // Without the flush a full disk would show only in Close, which ignores errors.
    return WriteRecord(file, FileHeader()) && WriteNode(writing, root) && file.Flush();
}
