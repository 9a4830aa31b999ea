// Writes the summary as JSON with nlohmann's library.
#include "inspect/report/SceneJson.h"

#include "inspect/stored/Wording.h"

#include "platform/Platform.h"

#include <cstdlib>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

// Spaces per level.
constexpr int IndentWidth = 2;

// The double with the fewest digits that reads back as the float: 0.2 instead of 0.20000000298.
double ShortestDouble(float value) {
    char digits[64];
    *std::to_chars(digits, digits + sizeof digits - 1, value).ptr = '\0';
    return std::strtod(digits, nullptr);
}

template <size_t Count> Json List(const std::array<float, Count>& values) {
    Json list = Json::array();
    for (const float value : values) {
        list.push_back(ShortestDouble(value));
    }
    return list;
}

Json TextOrNull(const std::u16string& text) {
    return text.empty() ? Json(nullptr) : Json(Utf8FromUtf16(text));
}

Json Material(const MaterialSummary& row) {
    return {{"name", Utf8FromUtf16(row.Material.Name)},
            {"texture", TextOrNull(row.Material.TexturePath)},
            {"color", List(row.Material.Colour)},
            {"meshes", row.Meshes},
            {"triangles", row.Triangles}};
}

Json Mesh(const MeshSummary& mesh) {
    return {{"node", mesh.Node},         {"nodeName", Utf8FromUtf16(NodeNameText(mesh.NodeName))},
            {"mesh", mesh.Mesh},         {"material", Utf8FromUtf16(mesh.Material)},
            {"vertices", mesh.Vertices}, {"triangles", mesh.Triangles}};
}

template <typename Row> Json Rows(const std::vector<Row>& rows, Json (*toJson)(const Row&)) {
    Json list = Json::array();
    for (const Row& row : rows) {
        list.push_back(toJson(row));
    }
    return list;
}

} // namespace

std::string SummaryJson(const SceneSummary& summary) {
    Json bounds = nullptr;
    if (summary.Bounds) {
        bounds = {{"minimum", List(summary.Bounds->Minimum)},
                  {"maximum", List(summary.Bounds->Maximum)}};
    }
    const Json json = {{"sound", true},
                       {"nodes", summary.Nodes},
                       {"nodesWithMatrix", summary.NodesWithMatrix},
                       {"levels", summary.Levels},
                       {"meshes", summary.Meshes},
                       {"vertices", summary.Vertices},
                       {"triangles", summary.Triangles},
                       {"degenerateTriangles", summary.DegenerateTriangles},
                       {"nonFiniteNumbers", summary.NonFiniteNumbers},
                       {"bounds", bounds},
                       {"materials", Rows(summary.Materials, Material)},
                       {"largestMeshes", Rows(summary.LargestMeshes, Mesh)}};
    return json.dump(IndentWidth) + "\n";
}

std::string FaultJson(const SceneFault& fault) {
    const Json json = {
        {"sound", false}, {"offset", fault.Offset}, {"reason", Utf8FromUtf16(fault.Reason)}};
    return json.dump(IndentWidth) + "\n";
}
