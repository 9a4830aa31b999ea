// Walks both trees in parallel, with an explicit stack.
#include "inspect/report/SceneDiff.h"

#include "inspect/stored/Wording.h"

#include <algorithm>
#include <bit>
#include <span>

namespace {

struct Comparison {
    SceneDifferences Differences;
    std::u16string Place; // Node and mesh being compared.
};

// values() returns the texts for both sides. It is called for the first difference only.
template <typename Values>
void Report(Comparison& comparison, const std::u16string& field, Values values) {
    ++comparison.Differences.Count;
    if (comparison.Differences.Count == 1) {
        const auto [here, there] = values();
        comparison.Differences.First = comparison.Place + u", " + field + u": " + here + u" | " + there;
    }
}

template <typename T, typename Word> void CompareValue(Comparison& comparison, const char16_t* field,
                                                       const T& here, const T& there, Word word) {
    if (here != there) {
        Report(comparison, field, [&] { return std::pair(word(here), word(there)); });
    }
}

bool HasSameBits(float here, float there) {
    return std::bit_cast<uint32_t>(here) == std::bit_cast<uint32_t>(there);
}

template <size_t Count> std::u16string Bits(const std::array<float, Count>& values) {
    std::u16string text = u"bits";
    for (const float value : values) {
        text += u" " + Hex(std::bit_cast<uint32_t>(value), 8);
    }
    return text;
}

// name() returns the field's name. It is called for differences only: naming every vertex would take
// longer than comparing it.
template <size_t Count, typename Name> void CompareFloats(Comparison& comparison, Name name,
                                                          const std::array<float, Count>& here,
                                                          const std::array<float, Count>& there) {
    if (std::equal(here.begin(), here.end(), there.begin(), HasSameBits)) {
        return;
    }
    Report(comparison, name(), [&] {
        const std::pair words(Numbers(here), Numbers(there));
        // Different NaNs have the same text.
        return words.first == words.second ? std::pair(Bits(here), Bits(there)) : words;
    });
}

void CompareVertices(Comparison& comparison, const StoredMesh& here, const StoredMesh& there) {
    const size_t common = std::min(here.Vertices.size(), there.Vertices.size());
    for (size_t number = 0; number < common; ++number) {
        const StoredVertex& a = here.Vertices[number];
        const StoredVertex& b = there.Vertices[number];
        const auto field = [&](const char16_t* name) {
            return [number, name] {
                return u"vertex " + Number(number) + u" " + name;
            };
        };
        CompareFloats(comparison, field(u"position"), a.Position, b.Position);
        CompareFloats(comparison, field(u"normal"), a.Normal, b.Normal);
        CompareFloats<2>(comparison, field(u"texture coordinates"), {a.U, a.V}, {b.U, b.V});
    }
}

void CompareTriangles(Comparison& comparison, const StoredMesh& here, const StoredMesh& there) {
    const size_t common = std::min(here.Indices.size(), there.Indices.size());
    for (size_t first = 0; first < common; first += 3) {
        const auto a = std::span(here.Indices).subspan(first, 3);
        const auto b = std::span(there.Indices).subspan(first, 3);
        if (!std::equal(a.begin(), a.end(), b.begin())) {
            Report(comparison, u"triangle " + Number(first / 3),
                   [&] { return std::pair(Numbers(a), Numbers(b)); });
        }
    }
}

void CompareMeshes(Comparison& comparison, const StoredMesh& here, const StoredMesh& there) {
    const auto name = [](const std::u16string& text) {
        return Quoted(text);
    };
    const auto number = [](size_t value) {
        return Number(value);
    };
    CompareValue(comparison, u"material name", here.Material.Name, there.Material.Name, name);
    CompareValue(comparison, u"texture path", here.Material.TexturePath, there.Material.TexturePath,
                 name);
    CompareFloats(
        comparison, [] { return std::u16string(u"colour"); }, here.Material.Colour,
        there.Material.Colour);
    CompareValue(comparison, u"vertex count", here.Vertices.size(), there.Vertices.size(), number);
    CompareValue(comparison, u"triangle count", here.Indices.size() / 3, there.Indices.size() / 3,
                 number);
    CompareVertices(comparison, here, there);
    CompareTriangles(comparison, here, there);
}

void CompareNodes(Comparison& comparison, const StoredNode& here, const StoredNode& there) {
    const auto number = [](size_t value) {
        return Number(value);
    };
    CompareValue(comparison, u"name", here.Name, there.Name,
                 [](const std::string& text) { return Quoted(NodeNameText(text)); });
    CompareFloats(
        comparison, [] { return std::u16string(u"matrix"); }, here.Matrix, there.Matrix);
    CompareValue(comparison, u"mesh count", here.Meshes.size(), there.Meshes.size(), number);
    CompareValue(comparison, u"child count", here.Children.size(), there.Children.size(), number);
    const std::u16string place = comparison.Place;
    for (size_t mesh = 0; mesh < std::min(here.Meshes.size(), there.Meshes.size()); ++mesh) {
        comparison.Place =
            place + u", mesh " + Number(mesh) + u" " + Quoted(here.Meshes[mesh].Material.Name);
        CompareMeshes(comparison, here.Meshes[mesh], there.Meshes[mesh]);
    }
}

std::u16string NodePlace(const StoredScene& scene, uint32_t node) {
    const std::string& name = scene.Nodes[node].Name;
    return u"node " + Number(node) + (name.empty() ? u"" : u" " + Quoted(NodeNameText(name)));
}

} // namespace

SceneDifferences CompareScenes(const StoredScene& scene, const StoredScene& other) {
    Comparison comparison;
    std::vector<std::pair<uint32_t, uint32_t>> open = {{0, 0}};
    while (!open.empty()) {
        const auto [here, there] = open.back();
        open.pop_back();
        comparison.Place = NodePlace(scene, here);
        CompareNodes(comparison, scene.Nodes[here], other.Nodes[there]);
        const std::vector<uint32_t>& hereChildren = scene.Nodes[here].Children;
        const std::vector<uint32_t>& thereChildren = other.Nodes[there].Children;
        // The last on the stack comes next.
        for (size_t child = std::min(hereChildren.size(), thereChildren.size()); child-- > 0;) {
            open.emplace_back(hereChildren[child], thereChildren[child]);
        }
    }
    return comparison.Differences;
}
