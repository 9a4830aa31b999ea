// Writes one fact per line, with the values in a column.
#include "inspect/report/SummaryText.h"

#include "inspect/stored/Wording.h"

#include <algorithm>

namespace {

constexpr size_t LabelWidth = 22; // Characters.

std::u16string Line(const std::u16string& label, const std::u16string& value) {
    std::u16string line = label;
    line.resize(std::max(LabelWidth, label.size() + 1), u' ');
    return line + value + u"\n";
}

std::u16string MaterialLine(const MaterialSummary& row) {
    std::u16string text = u"  " + Quoted(row.Material.Name) + u" rgba " + Numbers(row.Material.Colour);
    if (!row.Material.TexturePath.empty()) {
        text += u" texture " + Quoted(row.Material.TexturePath);
    }
    return text + u", " + Counted(row.Triangles, u"triangle", u"triangles") + u" in " +
           Counted(row.Meshes, u"mesh", u"meshes") + u"\n";
}

std::u16string MeshLine(const MeshSummary& mesh) {
    const std::u16string nodeName =
        mesh.NodeName.empty() ? u"" : u" " + Quoted(NodeNameText(mesh.NodeName));
    return u"  node " + Number(mesh.Node) + nodeName + u" mesh " + Number(mesh.Mesh) + u" " +
           Quoted(mesh.Material) + u", " + Counted(mesh.Triangles, u"triangle", u"triangles") + u", " +
           Counted(mesh.Vertices, u"vertex", u"vertices") + u"\n";
}

} // namespace

std::u16string SummaryText(const SceneSummary& summary) {
    std::u16string text;
    text +=
        Line(u"nodes", Number(summary.Nodes) + u" on " + Counted(summary.Levels, u"level", u"levels"));
    if (summary.NodesWithMatrix != 0) {
        text += Line(u"", Number(summary.NodesWithMatrix) + u" with a matrix other than the identity");
    }
    text += Line(u"meshes", Number(summary.Meshes));
    text += Line(u"vertices", Number(summary.Vertices));
    text += Line(u"triangles", Number(summary.Triangles));
    text += Line(u"degenerate triangles", Number(summary.DegenerateTriangles));
    text += Line(u"non-finite numbers", Number(summary.NonFiniteNumbers));
    text += Line(u"bounds", summary.Bounds ? Numbers(summary.Bounds->Minimum) + u" to " +
                                                 Numbers(summary.Bounds->Maximum)
                                           : u"none");
    text += Line(u"materials", Number(summary.Materials.size()));
    for (const MaterialSummary& row : summary.Materials) {
        text += MaterialLine(row);
    }
    if (!summary.LargestMeshes.empty()) {
        text += u"largest meshes\n";
    }
    for (const MeshSummary& mesh : summary.LargestMeshes) {
        text += MeshLine(mesh);
    }
    return text;
}
