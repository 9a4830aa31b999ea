// Words the tree while it is read.
#include "inspect/SceneTree.h"

#include "inspect/Wording.h"

#include <algorithm>

namespace {

// Levels. Deeper nodes stay at this indent and tell their level instead, lest the text of a chain grow
// with the square of its length.
constexpr uint64_t DeepestIndent = 32;

std::u16string Indent(uint64_t level) {
    return std::u16string(static_cast<size_t>(std::min(level, DeepestIndent)) * 2, u' ');
}

std::u16string NodeLine(const SceneReading& reading, uint64_t number) {
    std::u16string line = Indent(reading.Depth - 1) + Number(number);
    if (reading.Depth - 1 > DeepestIndent) {
        line += u" (level " + Number(reading.Depth) + u")";
    }
    if (!reading.Node.Name.empty()) {
        line += u" " + Quoted(NodeNameText(reading.Node.Name));
    }
    return line + u": " + Counted(reading.MeshCount, u"mesh", u"meshes") + u", " +
           Counted(reading.ChildCount, u"child", u"children") + u"\n";
}

std::u16string MeshLine(const SceneReading& reading, uint64_t number) {
    return Indent(reading.Depth) + u"mesh " + Number(number) + u" " +
           Quoted(reading.Mesh.Material.Name) + u", " +
           Counted(reading.Mesh.Indices.size() / 3, u"triangle", u"triangles") + u", " +
           Counted(reading.Mesh.Vertices.size(), u"vertex", u"vertices") + u"\n";
}

} // namespace

std::optional<SceneFault> TreeText(SceneReading& reading, std::u16string& text) {
    text.clear();
    uint64_t nodes = 0;
    uint64_t meshes = 0;
    ScenePart part = ReadPart(reading);
    for (; part == ScenePart::Node || part == ScenePart::Mesh; part = ReadPart(reading)) {
        if (part == ScenePart::Node) {
            text += NodeLine(reading, nodes++);
            meshes = 0;
        } else {
            text += MeshLine(reading, meshes++);
        }
    }
    return reading.Fault;
}
