// Words the summary. Numbers are in the shortest form that reads back to the same value, whatever the
// locale.
#include "inspect/SummaryText.h"

#include <algorithm>
#include <charconv>

namespace {

constexpr size_t LabelWidth = 22; // Characters, so that the numbers stand in a column.

template <typename T> std::u16string Number(T value) {
    char digits[64];
    char* const end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    return std::u16string(digits, end);
}

template <typename List> std::u16string Numbers(const List& values) {
    std::u16string text;
    for (const auto value : values) {
        text += (text.empty() ? u"" : u" ") + Number(value);
    }
    return text;
}

std::u16string Line(const std::u16string& label, const std::u16string& value) {
    std::u16string line = label;
    line.resize(std::max(LabelWidth, label.size() + 1), u' ');
    return line + value + u"\n";
}

std::u16string Quoted(const std::u16string& name) {
    std::u16string text = u"\"";
    for (const char16_t unit : name) {
        // C0, DEL and C1: all that a terminal may take for a command.
        if (unit < 0x20 || (unit >= 0x7F && unit < 0xA0)) {
            text += u"\\x";
            text += u"0123456789ABCDEF"[unit >> 4];
            text += u"0123456789ABCDEF"[unit & 0xF];
        } else {
            text += unit;
        }
    }
    return text + u"\"";
}

} // namespace

std::u16string SummaryText(const SceneSummary& summary) {
    std::u16string text;
    text += Line(u"nodes", Number(summary.Nodes) + u" on " + Number(summary.Levels) + u" levels");
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
        text += u"  " + Quoted(row.Material.Name) + u" rgba " + Numbers(row.Material.Colour);
        if (!row.Material.TexturePath.empty()) {
            text += u" texture " + Quoted(row.Material.TexturePath);
        }
        text += u", " + Number(row.Triangles) + u" triangles in " + Number(row.Meshes) + u" meshes\n";
    }
    return text;
}
