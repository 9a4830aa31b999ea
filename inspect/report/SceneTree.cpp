// Writes the tree as text while it is read.
#include "inspect/report/SceneTree.h"

#include "inspect/stored/Wording.h"

#include <algorithm>

namespace {

// Levels. Deeper nodes keep this indent and show their level instead, so that the text of a chain does
// not grow with the square of its length.
constexpr uint64_t DeepestIndent = 32;

std::u16string Indent(uint64_t level) {
    return std::u16string(static_cast<size_t>(std::min(level, DeepestIndent)) * 2, u' ');
}

// The numbers of nodes and, below, of meshes count from 0, as in the file.
std::u16string NodeLine(const StoredNode& node, uint64_t number, uint64_t depth, size_t meshes,
                        size_t children) {
    std::u16string line = Indent(depth - 1) + Number(number);
    if (depth - 1 > DeepestIndent) {
        line += u" (level " + Number(depth) + u")";
    }
    if (!node.Name.empty()) {
        line += u" " + Quoted(NodeNameText(node.Name));
    }
    return line + u": " + Counted(meshes, u"mesh", u"meshes") + u", " +
           Counted(children, u"child", u"children") + u"\n";
}

std::u16string MeshLine(const StoredMesh& mesh, uint64_t number, uint64_t depth) {
    return Indent(depth) + u"mesh " + Number(number) + u" " + Quoted(mesh.Material.Name) + u", " +
           Counted(mesh.Indices.size() / 3, u"triangle", u"triangles") + u", " +
           Counted(mesh.Vertices.size(), u"vertex", u"vertices") + u"\n";
}

} // namespace

std::u16string TreeText(const StoredScene& scene) {
    std::u16string text;
    std::vector<uint64_t> depths;
    for (const StoredNode& node : scene.Nodes) {
        const uint64_t depth = node.Parent ? depths[*node.Parent] + 1 : 1;
        text += NodeLine(node, depths.size(), depth, node.Meshes.size(), node.Children.size());
        depths.push_back(depth);
        for (size_t mesh = 0; mesh < node.Meshes.size(); ++mesh) {
            text += MeshLine(node.Meshes[mesh], mesh, depth);
        }
    }
    return text;
}

std::optional<SceneFault> TreeText(SceneReading& reading, std::u16string& text) {
    text.clear();
    uint64_t nodes = 0;
    uint64_t meshes = 0;
    ScenePart part = ReadPart(reading);
    for (; part == ScenePart::Node || part == ScenePart::Mesh; part = ReadPart(reading)) {
        if (part == ScenePart::Node) {
            text +=
                NodeLine(reading.Node, nodes++, reading.Depth, reading.MeshCount, reading.ChildCount);
            meshes = 0;
        } else {
            text += MeshLine(reading.Mesh, meshes++, reading.Depth);
        }
    }
    return reading.Fault;
}
