// Puts the scene into the page as JSON, and its triangles and pictures as base64.
//
// The binary part is, for each material: positions (3 floats per vertex), normals (3 signed 16-bit
// numbers from -32767 for -1 to 32767 for 1, and a zero), texture coordinates (2 floats) if the material
// uses a picture, indices (32 bits); then the pictures. viewer/data.js reads it.
#include "inspect/page/PageExport.h"

#include "inspect/page/PageScene.h"
#include "inspect/page/PageTemplate.h"
#include "inspect/report/SceneJson.h"
#include "inspect/stored/Wording.h"

#include "platform/Platform.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

constexpr double NormalScale = 32767.0;
// Bytes per element of base64, so that the page is decoded in pieces.
constexpr size_t PieceSize = size_t{3} << 20;
static_assert(PieceSize % 3 == 0);
constexpr std::string_view Base64Digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

template <typename Value> void Append(const Value& value, std::string& bytes) {
    bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

void AppendVertices(const PageMaterial& material, std::string& bytes) {
    for (const StoredVertex& vertex : material.Vertices) {
        Append(vertex.Position, bytes);
    }
    for (const StoredVertex& vertex : material.Vertices) {
        std::array<int16_t, 4> normal{};
        for (size_t axis = 0; axis < 3; ++axis) {
            const double part = std::clamp(static_cast<double>(vertex.Normal[axis]), -1.0, 1.0);
            normal[axis] = static_cast<int16_t>(std::lround(part * NormalScale));
        }
        Append(normal, bytes);
    }
    for (const StoredVertex& vertex : material.Vertices) {
        if (material.UsesPicture) {
            Append(vertex.U, bytes);
            Append(vertex.V, bytes);
        }
    }
}

// The pictures in the order of their first material.
struct PagePictures {
    std::vector<const Texture*> Pictures;
    std::map<const Texture*, size_t> Places;
};

Json PlaceOf(const Texture* picture, PagePictures& pictures) {
    if (picture == nullptr) {
        return nullptr;
    }
    const auto [place, isNew] = pictures.Places.try_emplace(picture, pictures.Pictures.size());
    if (isNew) {
        pictures.Pictures.push_back(picture);
    }
    return place->second;
}

// Appends the triangles to bytes.
Json MaterialsJson(const PageScene& page, PagePictures& pictures, std::string& bytes) {
    Json rows = Json::array();
    for (const PageMaterial& material : page.Materials) {
        rows.push_back({{"vertices", material.Vertices.size()},
                        {"triangles", material.Indices.size() / 3},
                        {"usesPicture", material.UsesPicture},
                        {"isMissing", material.IsMissing},
                        {"picture", PlaceOf(material.Picture, pictures)}});
        AppendVertices(material, bytes);
        bytes.append(reinterpret_cast<const char*>(material.Indices.data()),
                     material.Indices.size() * sizeof(uint32_t));
    }
    return rows;
}

Json PicturesJson(const PagePictures& pictures, std::string& bytes) {
    Json rows = Json::array();
    for (const Texture* const picture : pictures.Pictures) {
        rows.push_back({{"type", picture->MimeType},
                        {"bytes", picture->FileBytes.size()},
                        {"width", picture->Width},
                        {"height", picture->Height},
                        {"isOpaque", picture->IsOpaque}});
        bytes.append(reinterpret_cast<const char*>(picture->FileBytes.data()),
                     picture->FileBytes.size());
    }
    return rows;
}

// The rows as one list per column, which takes a third of the space.
Json MeshesJson(const PageScene& page) {
    const auto column = [&](auto PageMesh::*field) {
        Json values = Json::array();
        for (const PageMesh& mesh : page.Meshes) {
            values.push_back(mesh.*field);
        }
        return values;
    };
    return {{"node", column(&PageMesh::Node)},
            {"material", column(&PageMesh::Material)},
            {"vertices", column(&PageMesh::Vertices)},
            {"triangles", column(&PageMesh::Triangles)},
            {"drawn", column(&PageMesh::Drawn)}};
}

Json NodesJson(const StoredScene& scene) {
    Json names = Json::array();
    Json parents = Json::array();
    for (const StoredNode& node : scene.Nodes) {
        names.push_back(Utf8FromUtf16(NodeNameText(node.Name)));
        parents.push_back(node.Parent ? Json(*node.Parent) : Json(nullptr));
    }
    return {{"name", std::move(names)}, {"parent", std::move(parents)}};
}

// JSON without characters that mean something to HTML or, as line ends, to programs.
void AppendEscaped(std::string_view json, std::string& html) {
    for (size_t at = 0; at < json.size(); ++at) {
        const std::string_view rest = json.substr(at);
        if (json[at] == '<' || json[at] == '>' || json[at] == '&') {
            html += json[at] == '<' ? "\\u003c" : json[at] == '>' ? "\\u003e" : "\\u0026";
        } else if (rest.starts_with("\xE2\x80\xA8") || rest.starts_with("\xE2\x80\xA9")) {
            html += rest[2] == '\xA8' ? "\\u2028" : "\\u2029";
            at += 2;
        } else {
            html += json[at];
        }
    }
}

void AppendBase64(std::string_view bytes, std::string& html) {
    for (size_t at = 0; at < bytes.size(); at += 3) {
        const size_t count = std::min<size_t>(3, bytes.size() - at);
        uint32_t group = 0;
        for (size_t place = 0; place < 3; ++place) {
            group = group << 8U | (place < count ? static_cast<uint8_t>(bytes[at + place]) : 0U);
        }
        for (size_t place = 0; place < 4; ++place) {
            html += place <= count ? Base64Digits[group >> (18 - 6 * place) & 63U] : '=';
        }
    }
}

void AppendElement(std::string_view attributes, std::string_view content, std::string& html) {
    html.append("<script ").append(attributes).append(">").append(content).append("</script>\n");
}

// The elements with the data; empty if the page would be too large.
std::string DataElements(const Json& description, const std::string& summary, std::string_view bytes) {
    std::string text;
    AppendEscaped(summary, text);
    std::string html;
    AppendElement("type=\"application/json\" id=\"facts\"", text, html);
    text.clear();
    AppendEscaped(description.dump(), text);
    AppendElement("type=\"application/json\" id=\"scene\"", text, html);
    if (PageTemplate.size() + html.size() + (bytes.size() + 2) / 3 * 4 > LargestPage) {
        return {};
    }
    for (size_t at = 0; at < bytes.size(); at += PieceSize) {
        text.clear();
        AppendBase64(bytes.substr(at, PieceSize), text);
        AppendElement("type=\"application/octet-stream\" class=\"bytes\"", text, html);
    }
    return html;
}

PageFile Refused(const std::u16string& what) {
    return {"", what + u", which a page can't show; --glb writes the scene for other viewers", 0};
}

} // namespace

PageFile ExportPage(const StoredScene& scene, TextureShelf& textures, const std::u16string& title) {
    if (PageTemplate.empty()) {
        return {"", u"this scene-inspect was built without npm and lacks --html", 0};
    }
    const SceneSummary summary = Summarize(scene);
    if (summary.Triangles > MostPageTriangles) {
        return Refused(u"the scene has " + Number(summary.Triangles) + u" triangles, more than " +
                       Number(MostPageTriangles));
    }
    const PageScene page = MakePageScene(scene, textures);
    std::string bytes;
    PagePictures pictures;
    Json description = {{"title", Utf8FromUtf16(title)}};
    description["materials"] = MaterialsJson(page, pictures, bytes);
    description["pictures"] = PicturesJson(pictures, bytes);
    description["nodes"] = NodesJson(scene);
    description["meshes"] = MeshesJson(page);
    const std::string data = DataElements(description, SummaryJson(summary), bytes);
    PageFile file;
    const size_t mark = PageTemplate.find(PageDataMark);
    file.Bytes.append(PageTemplate.substr(0, mark)).append(data);
    file.Bytes.append(PageTemplate.substr(mark + PageDataMark.size()));
    if (data.empty() || file.Bytes.size() > LargestPage) {
        return Refused(u"the page would exceed " + Number(LargestPage) + u" bytes");
    }
    for (const PageMesh& mesh : page.Meshes) {
        file.TrianglesLeftOut += mesh.Triangles - mesh.Drawn;
    }
    return file;
}
