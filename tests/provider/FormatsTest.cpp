// Interchange formats: small files, converted and compared with the same model as a model document;
// damaged files; and the messages about unusable ones.
#include "provider/ProviderTesting.h"

#include "inspect/stored/SceneReader.h"
#include "support/Files.h"
#include "support/RunProgram.h"

#include <cmath>
#include <cstring>
#include <random>

namespace {

constexpr float Tolerance = 1e-5F; // single precision through a transformation or two

struct SceneTriangle {
    std::array<StoredVertex, 3> Corners;
    StoredMaterial Material;
};

// Coarse, so that rounding does not change the order.
std::array<long, 8> KeyOf(const StoredVertex& vertex) {
    std::array<long, 8> key = {};
    for (size_t i = 0; i < 3; ++i) {
        key[i] = std::lround(vertex.Position[i] * 1000);
        key[3 + i] = std::lround(vertex.Normal[i] * 1000);
    }
    key[6] = std::lround(vertex.U * 1000);
    key[7] = std::lround(vertex.V * 1000);
    return key;
}

// All triangles, each with its least corner first, sorted by position.
std::vector<SceneTriangle> TrianglesOf(const StoredScene& scene) {
    std::vector<SceneTriangle> triangles;
    for (const StoredNode& node : scene.Nodes) {
        for (const StoredMesh& mesh : node.Meshes) {
            for (size_t i = 0; i < mesh.Indices.size(); i += 3) {
                std::array<StoredVertex, 3> corners;
                for (size_t k = 0; k < 3; ++k) {
                    corners[k] = mesh.Vertices[mesh.Indices[i + k]];
                }
                std::rotate(corners.begin(), std::ranges::min_element(corners, {}, KeyOf),
                            corners.end());
                triangles.push_back({corners, mesh.Material});
            }
        }
    }
    std::ranges::sort(triangles, {}, [](const SceneTriangle& triangle) {
        return std::array{KeyOf(triangle.Corners[0]), KeyOf(triangle.Corners[1]),
                          KeyOf(triangle.Corners[2])};
    });
    return triangles;
}

std::vector<std::string> NamesOf(const StoredScene& scene) {
    std::vector<std::string> names;
    for (const StoredNode& node : scene.Nodes) {
        names.push_back(node.Name);
    }
    return names;
}

struct Conversion {
    StoredScene Scene;
    std::string Errors;             // standard error output
    std::vector<std::string> Files; // beside the scene file
};

// Converts a file of the test's directory by a whole run of the program.
Conversion ConvertFile(const std::u16string& path) {
    TempFolder out;
    const ProgramResult run = RunProgram({ORVANE_PROGRAM,
                                          {path, PathText(out.Path / "scene.bin"), u"maps", u""},
                                          {},
                                          ORVANE_PROVIDER_LIBRARY_DIR,
                                          {}});
    Conversion conversion;
    conversion.Errors = run.Errors;
    std::erase(conversion.Errors, '\r'); // The system's line ends.
    EXPECT_EQ(run.ExitCode, 0) << run.Errors;
    if (run.ExitCode == 0) {
        const auto fault = ReadStoredSceneFile(PathText(out.Path / "scene.bin"), conversion.Scene);
        EXPECT_FALSE(fault.has_value());
        conversion.Files = FilesBelow(out.Path);
    }
    return conversion;
}

void ExpectNear(const StoredVertex& vertex, const StoredVertex& expected) {
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(vertex.Position[i], expected.Position[i], Tolerance);
        EXPECT_NEAR(vertex.Normal[i], expected.Normal[i], Tolerance);
    }
    EXPECT_NEAR(vertex.U, expected.U, Tolerance);
    EXPECT_NEAR(vertex.V, expected.V, Tolerance);
}

// Converts both and expects the same triangles with the same materials and pictures.
void ExpectSameModel(const std::u16string& path, std::string_view document, size_t triangleCount) {
    const Conversion converted = ConvertFile(path);
    const Conversion expected =
        ConvertFile(WriteTestText(u"same.json", "{\"orvaneModel\": 1, " + std::string(document) + "}"));
    EXPECT_EQ(converted.Files, expected.Files);
    EXPECT_EQ(converted.Errors, "");
    const std::vector<SceneTriangle> triangles = TrianglesOf(converted.Scene);
    const std::vector<SceneTriangle> same = TrianglesOf(expected.Scene);
    ASSERT_EQ(triangles.size(), triangleCount);
    ASSERT_EQ(same.size(), triangleCount);
    for (size_t i = 0; i < triangles.size(); ++i) {
        SCOPED_TRACE(i);
        for (size_t k = 0; k < 3; ++k) {
            ExpectNear(triangles[i].Corners[k], same[i].Corners[k]);
        }
        EXPECT_EQ(triangles[i].Material.Name, same[i].Material.Name);
        EXPECT_EQ(triangles[i].Material.TexturePath, same[i].Material.TexturePath);
        EXPECT_EQ(triangles[i].Material.Colour, same[i].Material.Colour);
    }
}

std::vector<uint8_t> SmallPicture() {
    return TgaFile(2, 1, {10, 20, 30, 200, 100, 50});
}

template <class Number>
void AppendNumbers(std::vector<uint8_t>& bytes, std::initializer_list<Number> numbers) {
    for (const Number number : numbers) {
        const size_t at = bytes.size();
        bytes.resize(at + sizeof number);
        std::memcpy(bytes.data() + at, &number, sizeof number);
    }
    bytes.resize((bytes.size() + 3) / 4 * 4);
}

std::vector<uint8_t> GlbFile(std::string json, const std::vector<uint8_t>& binary) {
    json.resize((json.size() + 3) / 4 * 4, ' ');
    const auto jsonSize = static_cast<uint32_t>(json.size());
    const auto binarySize = static_cast<uint32_t>(binary.size());
    std::vector<uint8_t> bytes;
    AppendNumbers<uint32_t>(bytes, {0x46546C67, 2, 28 + jsonSize + binarySize, jsonSize, 0x4E4F534A});
    bytes.insert(bytes.end(), json.begin(), json.end());
    AppendNumbers<uint32_t>(bytes, {binarySize, 0x004E4942});
    bytes.insert(bytes.end(), binary.begin(), binary.end());
    return bytes;
}

// A rectangle, 2 wide and 1 high, that faces +Z: positions at 0, normals at 48, coordinates in
// normalised 16-bit numbers at 96, indices at 112, a picture at 124.
std::vector<uint8_t> RectangleBytes() {
    std::vector<uint8_t> bytes;
    AppendNumbers<float>(bytes, {0, 0, 0, 2, 0, 0, 2, 1, 0, 0, 1, 0});
    AppendNumbers<float>(bytes, {0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1});
    AppendNumbers<uint16_t>(bytes, {0, 65535, 65535, 65535, 65535, 0, 0, 0});
    AppendNumbers<uint16_t>(bytes, {0, 1, 2, 0, 2, 3});
    const std::vector<uint8_t> picture = SmallPicture();
    bytes.insert(bytes.end(), picture.begin(), picture.end());
    bytes.resize(148);
    return bytes;
}

// The members for RectangleBytes, except scene, nodes and materials.
constexpr const char* RectangleMembers = R"(
    "asset": {"version": "2.0"}, "buffers": [{"byteLength": 148}],
    "bufferViews": [{"buffer": 0, "byteLength": 48}, {"buffer": 0, "byteOffset": 48, "byteLength": 48},
        {"buffer": 0, "byteOffset": 96, "byteLength": 16},
        {"buffer": 0, "byteOffset": 112, "byteLength": 12},
        {"buffer": 0, "byteOffset": 124, "byteLength": 24}],
    "accessors": [{"bufferView": 0, "componentType": 5126, "count": 4, "type": "VEC3"},
        {"bufferView": 1, "componentType": 5126, "count": 4, "type": "VEC3"},
        {"bufferView": 2, "componentType": 5123, "normalized": true, "count": 4, "type": "VEC2"},
        {"bufferView": 3, "componentType": 5123, "count": 6, "type": "SCALAR"}],
    "images": [{"bufferView": 4, "mimeType": "image/tga", "name": "wall"}], "textures": [{"source": 0}],
    "meshes": [{"name": "panel", "primitives": [{"attributes":
        {"POSITION": 0, "NORMAL": 1, "TEXCOORD_0": 2}, "indices": 3, "material": 0}]}],)";

constexpr const char* TexturedMaterial = R"(
    "materials": [{"name": "wall", "alphaMode": "OPAQUE", "pbrMetallicRoughness":
        {"baseColorFactor": [1, 1, 1, 0.5], "baseColorTexture": {"index": 0, "extensions":
            {"KHR_texture_transform": {"offset": [0.25, 0.5], "scale": [2, 3]}}}}}],)";

std::vector<uint8_t> RectangleGlb(const std::string& rest) {
    return GlbFile("{" + (RectangleMembers + rest) + "}", RectangleBytes());
}

const std::string OneNode = "\"nodes\": [{\"mesh\": 0, \"name\": \"n\"}]";

// Whether a file of these bytes can be opened. Expects a reason if not.
bool CanOpen(const std::u16string& name, const std::vector<uint8_t>& bytes) {
    Model model;
    std::string error;
    const bool isOpen = OpenModel(WriteTestFile(name, bytes), model, error);
    EXPECT_EQ(isOpen, error.empty()) << error;
    return isOpen;
}

size_t CountOpenedCuts(const std::u16string& name, const std::vector<uint8_t>& sound) {
    size_t opened = 0;
    for (size_t size = 0; size < sound.size(); size += 7) {
        opened += CanOpen(name, {sound.begin(), sound.begin() + static_cast<ptrdiff_t>(size)}) ? 1 : 0;
    }
    return opened;
}

// Of 1500 copies with one to three flipped bits.
size_t CountOpenedFlips(const std::u16string& name, const std::vector<uint8_t>& sound) {
    size_t opened = 0;
    std::minstd_rand random(1);
    for (int round = 0; round < 1500; ++round) {
        std::vector<uint8_t> bytes = sound;
        for (int flips = round % 3; flips >= 0; --flips) {
            bytes[random() % bytes.size()] ^= static_cast<uint8_t>(1U << random() % 8);
        }
        opened += CanOpen(name, bytes) ? 1 : 0;
    }
    return opened;
}

} // namespace

TEST(ProviderFormats, ReadsGlbWithItsPicture) {
    WriteTestFile(u"wall.tga", SmallPicture());
    // The file name's extension has no effect.
    ExpectSameModel(WriteTestFile(u"panel.obj", RectangleGlb(TexturedMaterial + OneNode)), R"(
        "materials": [{"name": "wall", "picture": "wall.tga"}],
        "entities": {"faces": [{
            "positions": [[0,0,0],[2,0,0],[2,0,1],[0,0,1]], "triangles": [[0,1,2],[0,2,3]],
            "normals": [[0,-1,0],[0,-1,0],[0,-1,0],[0,-1,0]],
            "front": {"material": "wall",
                "coordinates": [[0.25,-2.5],[2.25,-2.5],[2.25,0.5],[0.25,0.5]]},
            "back": {"material": "wall",
                "coordinates": [[0.25,-2.5],[2.25,-2.5],[2.25,0.5],[0.25,0.5]]}}]})",
                    4);
}

TEST(ProviderFormats, PlacesNestedMirroredAndSharedNodes) {
    const std::string nodes = R"(
        "materials": [{"name": "glass", "alphaMode": "BLEND", "pbrMetallicRoughness":
            {"baseColorFactor": [1, 0, 0.2140411, 0.5]}}],
        "scenes": [{"nodes": [0]}], "nodes": [
        {"name": "house", "children": [1, 2, 3], "matrix": [1,0,0,0, 0,1,0,0, 0,0,1,0, 1,2,3,1]},
        {"name": "left", "mesh": 0, "scale": [-1, 1, 1]},
        {"name": "right", "mesh": 0, "rotation": [0, 0.7071067811865476, 0, 0.7071067811865476],
         "scale": [1, 2, 1], "translation": [0, 0, 5]},
        {"name": "nothing", "children": [4]}, {}])";
    const std::u16string path = WriteTestFile(u"nested.glb", RectangleGlb(nodes));
    const char* document = R"(
        "materials": [{"name": "glass", "color": [255, 0, 127], "opacity": 0.5}],
        "definitions": [{"name": "panel", "faces": [{
            "positions": [[0,0,0],[2,0,0],[2,0,1],[0,0,1]], "triangles": [[0,1,2],[0,2,3]],
            "normals": [[0,-1,0],[0,-1,0],[0,-1,0],[0,-1,0]],
            "front": {"material": "glass", "coordinates": [[0,0],[1,0],[1,1],[0,1]]},
            "back": {"material": "glass", "coordinates": [[0,0],[1,0],[1,1],[0,1]]}}]}],
        "entities": {"groups": [{"name": "house", "transform": {"move": [1, -3, 2]}, "groups": [
            {"name": "left", "transform": {"scale": [-1, 1, 1]}, "instances": [{"definition": "panel"}]},
            {"name": "right", "transform": {"scale": [1, 1, 2], "rotate": 90, "move": [0, -5, 0]},
             "instances": [{"definition": "panel"}]}]}]})";
    ExpectSameModel(path, document, 8);
    EXPECT_EQ(NamesOf(ConvertFile(path).Scene),
              NamesOf(ConvertFile(ProviderTestDirectory() + u"same.json").Scene));

    Model model;
    std::string error;
    ASSERT_TRUE(OpenModel(path, model, error)) << error;
    EXPECT_EQ(model.Definitions.size(), 1U);
    EXPECT_EQ(model.Instances.size(), 2U);
    EXPECT_EQ(model.Positions.size(), 4U);
}

TEST(ProviderFormats, ReadsStripsFansAndSparseAccessors) {
    const auto open = [](const std::string& members, const std::vector<uint8_t>& bytes, Model& model) {
        std::string error;
        const bool isOpen =
            OpenModel(WriteTestFile(u"model.glb", GlbFile(R"({"asset": {"version": "2.0"}, "nodes":
                [{"mesh": 0}], "buffers": [{}], )" + members + "}",
                                                          bytes)),
                      model, error);
        EXPECT_TRUE(isOpen) << error;
    };
    const std::string five = R"("bufferViews": [{"buffer": 0, "byteLength": 80, "byteStride": 16},
        {"buffer": 0, "byteOffset": 80, "byteLength": 4}, {"buffer": 0, "byteOffset": 84, "byteLength": 12}],
        "accessors": [{"bufferView": 0, "componentType": 5126, "count": 5, "type": "VEC3"}], )";
    std::vector<uint8_t> bytes;
    AppendNumbers<float>(bytes, {0, 0, 0, 9, 1, 0, 0, 9, 0, 1, 0, 9, 1, 1, 0, 9, 0, 2, 0, 9});
    AppendNumbers<uint8_t>(bytes, {4});
    AppendNumbers<float>(bytes, {0, 3, 0});

    // A strip of three triangles that face +Z, which is -Y in the model.
    Model strip;
    open(five + R"("meshes": [{"primitives": [{"mode": 5, "attributes": {"POSITION": 0}}]}])", bytes,
         strip);
    ASSERT_EQ(strip.Faces.size(), 1U);
    EXPECT_EQ(strip.Indices.size(), 9U);
    EXPECT_EQ(strip.Faces[0].Normal, (Point3{0, -1, 0}));
    EXPECT_EQ(strip.Normals[8], (Point3{0, -1, 0}));

    Model fan;
    open(five + R"("meshes": [{"primitives": [{"mode": 6, "attributes": {"POSITION": 0}},
        {"mode": 1, "attributes": {"POSITION": 0}}]}])",
         bytes, fan);
    EXPECT_EQ(fan.Indices.size(), 9U);

    // The last vertex is replaced.
    Model sparse;
    std::string replaced = five;
    replaced.insert(replaced.find("\"type\""), R"("sparse": {"count": 1, "indices": {"bufferView": 1,
        "componentType": 5121}, "values": {"bufferView": 2}}, )");
    open(replaced + R"("meshes": [{"primitives": [{"mode": 5, "attributes": {"POSITION": 0}}]}])", bytes,
         sparse);
    EXPECT_TRUE(std::ranges::count(sparse.Positions, Point3{0, 0, 3}) == 1);
    EXPECT_TRUE(std::ranges::count(sparse.Positions, Point3{0, 0, 2}) == 0);
}

TEST(ProviderFormats, ReportsUnusableGltf) {
    std::string chain = "\"nodes\": [";
    for (int i = 1; i <= 600; ++i) {
        chain += "{\"children\": [" + std::to_string(i) + "]},";
    }
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"\"extensionsRequired\": [\"KHR_draco_mesh_compression\"], " + OneNode,
         "the file requires the glTF extension \"KHR_draco_mesh_compression\", which is not supported"},
        {"\"nodes\": [{\"children\": [1]}, {\"children\": [0]}], \"scenes\": [{\"nodes\": [0]}]",
         "a node contains itself or occurs twice in the tree"},
        {chain + "{\"mesh\": 0}]", "nodes are nested deeper than 511 levels"},
        {"\"nodes\": [{\"mesh\": 1}]", "nodes[0]: the mesh does not exist"},
        {OneNode, "meshes[0].primitives[0]: the material does not exist"},
        {"\"nodes\": []", "the file has no triangles"},
    };
    for (const auto& [members, expected] : cases) {
        Model model;
        std::string error;
        EXPECT_FALSE(OpenModel(WriteTestFile(u"bad.glb", RectangleGlb(members)), model, error));
        EXPECT_EQ(error, expected);
    }
}

TEST(ProviderFormats, ReportsMissingPictures) {
    const std::string rest = TexturedMaterial + OneNode;
    std::string text(RectangleMembers);
    const std::string embedded = R"("bufferView": 4, "mimeType": "image/tga", "name": "wall")";
    text.replace(text.find(embedded), embedded.size(), R"("uri": "my%20wall.png")");
    const Conversion converted =
        ConvertFile(WriteTestFile(u"model.glb", GlbFile("{" + text + rest + "}", RectangleBytes())));
    EXPECT_TRUE(
        converted.Errors.ends_with("model.glb: the picture \"my wall.png\" can't be found or read\n"))
        << converted.Errors;
    EXPECT_EQ(TrianglesOf(converted.Scene).size(), 4U);
    EXPECT_EQ(TrianglesOf(converted.Scene)[0].Material.TexturePath, u"");
}

TEST(ProviderFormats, SurvivesDamagedGlb) {
    const std::vector<uint8_t> sound = RectangleGlb(TexturedMaterial + OneNode);
    EXPECT_EQ(CountOpenedCuts(u"damaged.glb", sound), 0U);
    // Some bits have no effect, or only move a corner.
    EXPECT_GT(CountOpenedFlips(u"damaged.glb", sound), 100U);
}

#ifdef ORVANE_ASSIMP

namespace {

std::vector<uint8_t> BytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

} // namespace

TEST(ProviderFormats, ReadsObjWithTwoMaterials) {
    WriteTestFile(u"brick.tga", SmallPicture());
    WriteTestText(u"two.mtl", "newmtl brick\nKd 1 1 1\nmap_Kd brick.tga\n"
                              "newmtl glass\nKd 0.2 0.4 0.6\nd 0.5\n");
    const std::u16string path =
        WriteTestText(u"two.obj", "mtllib two.mtl\n"
                                  "v 0 0 0\nv 2 0 0\nv 2 1 0\nv 0 1 0\nv 0 0 2\nv 1 0 2\nv 0 1 2\n"
                                  "vt 0 0\nvt 3 0\nvt 3 1\nvt 0 1\n"
                                  "usemtl brick\nf 1/1 2/2 3/3 4/4\nusemtl glass\nf 5 6 7\n");
    ExpectSameModel(path, R"(
        "materials": [{"name": "brick", "picture": "brick.tga"},
                      {"name": "glass", "color": [51, 102, 153], "opacity": 0.5}],
        "entities": {"faces": [
            {"positions": [[0,0,0],[2,0,0],[2,0,1],[0,0,1]], "triangles": [[0,1,2],[0,2,3]],
             "front": {"material": "brick", "coordinates": [[0,0],[3,0],[3,1],[0,1]]},
             "back": {"material": "brick", "coordinates": [[0,0],[3,0],[3,1],[0,1]]}},
            {"outer": [[0,-2,0],[1,-2,0],[0,-2,1]], "front": "glass", "back": "glass"}]})",
                    6);
    Model model;
    std::string error;
    ASSERT_TRUE(OpenModel(path, model, error)) << error;
    EXPECT_EQ(model.Faces.size(), 2U);
}

// A concave polygon in Z up.
constexpr const char* ColladaText = R"(<?xml version="1.0" encoding="utf-8"?>
<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">
<asset><unit meter="1" name="meter"/><up_axis>Z_UP</up_axis></asset>
<library_effects><effect id="e"><profile_COMMON><technique sid="t"><lambert><diffuse>
<color>0.2 0.4 0.6 1</color></diffuse></lambert></technique></profile_COMMON></effect></library_effects>
<library_materials><material id="m" name="paint"><instance_effect url="#e"/></material></library_materials>
<library_geometries><geometry id="g"><mesh>
<source id="p"><float_array id="pa" count="15">0 0 0  3 0 0  3 0 2  1 0 1  0 0 2</float_array>
<technique_common><accessor source="#pa" count="5" stride="3"><param name="X" type="float"/>
<param name="Y" type="float"/><param name="Z" type="float"/></accessor></technique_common></source>
<vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
<polylist count="1" material="s"><input semantic="VERTEX" source="#v" offset="0"/>
<vcount>5</vcount><p>0 1 2 3 4</p></polylist></mesh></geometry></library_geometries>
<library_visual_scenes><visual_scene id="c"><node id="n" name="wall"><translate>5 6 7</translate>
<instance_geometry url="#g"><bind_material><technique_common>
<instance_material symbol="s" target="#m"/></technique_common></bind_material></instance_geometry>
</node></visual_scene></library_visual_scenes><scene><instance_visual_scene url="#c"/></scene></COLLADA>)";

TEST(ProviderFormats, ReadsColladaWithZUp) {
    // The file name's extension has no effect.
    ExpectSameModel(WriteTestText(u"up.txt", ColladaText),
                    R"("materials": [{"name": "paint", "color": [51, 102, 153]}],
        "entities": {"groups": [{"name": "wall", "transform": {"move": [5, 6, 7]}, "faces": [
            {"outer": [[0,0,0],[3,0,0],[3,0,2],[1,0,1],[0,0,2]], "front": "paint", "back": "paint"}]}]})",
                    6);
}

TEST(ProviderFormats, ReadsStlAsZUpWithoutMessages) {
    ExpectSameModel(WriteTestText(u"part.STL", "solid part\nfacet normal 0 0 1\nouter loop\n"
                                               "vertex 0 0 1\nvertex 1 0 1\nvertex 0 2 1\n"
                                               "endloop\nendfacet\nendsolid part\n"),
                    R"("materials": [{"name": "DefaultMaterial", "color": [255, 255, 255]}],
        "entities": {"faces": [{"outer": [[0,0,1],[1,0,1],[0,2,1]],
            "front": "DefaultMaterial", "back": "DefaultMaterial"}]})",
                    2);
}

TEST(ProviderFormats, SurvivesDamagedText) {
    const std::vector<uint8_t> obj =
        BytesOf("v 0 0 0\nv 2 0 0\nv 2 1 0\nv 0 1 0\nv 0 0 2\nv 1 0 2\nv 0 1 2\n"
                "vt 0 0\nvt 3 0\nvt 3 1\nvt 0 1\nusemtl none\n"
                "f 1/1 2/2 3/3 4/4\nf 5 6 7\nf 4 3 2 6 7\n");
    EXPECT_GT(CountOpenedCuts(u"damaged.obj", obj), 0U); // any number of whole lines is valid
    EXPECT_GT(CountOpenedFlips(u"damaged.obj", obj), 100U);
    EXPECT_EQ(CountOpenedCuts(u"damaged.dae", BytesOf(ColladaText)), 0U);
    // No flipped bits here: they can crash assimp itself.
}

#else

TEST(ProviderFormats, ReportsFormatsThatNeedAssimp) {
    Model model;
    std::string error;
    EXPECT_FALSE(OpenModel(WriteTestText(u"a.obj", "v 0 0 0\n"), model, error));
    EXPECT_EQ(error, "this format requires the assimp library, which this build does not include");
}

#endif
