// Model documents: the model that their keys give, and the messages about invalid ones.
#include "provider/ProviderTesting.h"

#include "provider/model/Mapping.h"

namespace {

struct ErrorCase {
    const char* Members; // in addition to the version
    const char* Error;
};

// The unit square as the outline of a face.
#define SQUARE "\"outer\": [[0,0,0],[1,0,0],[1,1,0],[0,1,0]]"
#define FACE(...) "\"entities\": {\"faces\": [{" __VA_ARGS__ "}]}"
#define MESH "\"positions\": [[0,0,0],[1,0,0],[0,1,0]]"

const std::vector<ErrorCase> ErrorCases = {
    {R"("color": 1)", "color: unknown key"},
    {R"("layers": [], "layers": [])", "layers: duplicate key"},
    {R"("materials": {})", "materials: this must be an array"},
    {R"("materials": [7])", "materials[0]: this must be an object"},
    {R"("materials": [{}])", "materials[0]: the key name is missing"},
    {R"("materials": [{"name": 3}])", "materials[0].name: this must be text"},
    {R"("materials": [{"name": "a"}, {"name": "a"}])",
     "materials[1].name: the name \"a\" is already in use"},
    {R"("materials": [{"name": "a", "color": "#12345G"}])",
     "materials[0].color: this must be \"#RRGGBB\" with hexadecimal digits"},
    {R"("materials": [{"name": "a", "color": [1, 2]}])",
     "materials[0].color: this must be \"#RRGGBB\" or an array of three or four numbers"},
    {R"("materials": [{"name": "a", "color": [1, 2, 256]}])",
     "materials[0].color[2]: this must be a whole number from 0 to 255"},
    {R"("materials": [{"name": "a", "color": [1, 2.5, 3]}])",
     "materials[0].color[1]: this must be a whole number from 0 to 255"},
    {R"("materials": [{"name": "a", "opacity": 1.5}])",
     "materials[0].opacity: this must be between 0 and 1"},
    {R"("materials": [{"name": "a", "width": 2}])", "materials[0].width: this key requires a picture"},
    {R"("materials": [{"name": "a", "type": "textured"}])",
     "materials[0].type: a material of this type requires a picture"},
    {R"("materials": [{"name": "a", "type": "shiny"}])",
     "materials[0].type: this must be \"plain\", \"textured\" or \"colorized\""},
    {R"("materials": [{"name": "a", "picture": "none.png"}])",
     "materials[0].picture: the picture \"none.png\" can't be found or read"},
    {R"("materials": [{"name": "a", "picture": "model.json"}])",
     "materials[0].picture: the picture \"model.json\" is not a PNG, JPEG, BMP or TGA file that can be "
     "decoded"},
    {R"("materials": [{"name": "a", "picture": "huge.tga"}])",
     "materials[0].picture: the picture \"huge.tga\" has too many pixels"},
    {R"("materials": [{"name": "a", "picture": "cut.tga"}])",
     "materials[0].picture: the picture \"cut.tga\" can't be decoded"},
    {R"("materials": [{"name": "a", "picture": "good.tga", "width": 0}])",
     "materials[0].width: this must be above 0"},
    {R"("layers": [{"name": "a"}, {"name": "a"}])", "layers[1].name: the name \"a\" is already in use"},
    {R"("layers": [{"name": "a", "visible": 1}])", "layers[0].visible: this must be true or false"},
    {R"("definitions": [{"name": "a"}, {"name": "a"}])",
     "definitions[1].name: the name \"a\" is already in use"},
    {R"("definitions": [{"name": "a", "instances": [{"definition": "a"}]}])",
     "definitions[0].instances[0].definition: the definition contains itself, directly or through "
     "others"},
    {R"("definitions": [{"name": "a", "groups": [{"instances": [{"definition": "b"}]}]},
                        {"name": "b", "instances": [{"definition": "a"}]}])",
     "definitions[1].instances[0].definition: the definition contains itself, directly or through "
     "others"},
    {R"("entities": {"instances": [{"definition": "b"}]})",
     "entities.instances[0].definition: there is no definition \"b\""},
    {R"("entities": {"groups": [{"groups": [{}, {"material": "b"}]}]})",
     "entities.groups[0].groups[1].material: there is no material \"b\""},
    {R"("entities": {"groups": [{"layer": "b"}]})", "entities.groups[0].layer: there is no layer \"b\""},
    {R"("entities": {"groups": [{"hidden": null}]})",
     "entities.groups[0].hidden: this must be true or false"},
    {R"("entities": {"groups": [{"transform": [1, 2]}]})",
     "entities.groups[0].transform: this must be an object or an array of 16 numbers"},
    {R"("entities": {"groups": [{"transform": [1,0,0,0,0,1,0,0,0,0,1,0,0,0,0,0]}]})",
     "entities.groups[0].transform[15]: the homogeneous scale must not be 0"},
    {R"("entities": {"groups": [{"transform": {"rotate": {"axis": [0, 0, 0], "angle": 3}}}]})",
     "entities.groups[0].transform.rotate.axis: this vector has no length"},
    {R"("entities": {"groups": [{"transform": {"rotate": {"axis": [0, 0, 1]}}}]})",
     "entities.groups[0].transform.rotate: the key angle is missing"},
    {R"("entities": {"images": [{}]})", "entities.images[0]: the key picture is missing"},
    {FACE(""), "entities.faces[0]: a face has either outer, or positions and triangles"},
    {FACE(SQUARE "," MESH), "entities.faces[0]: a face has either outer, or positions and triangles"},
    {FACE(R"("outer": [[0,0,0],[1,0,0]])"),
     "entities.faces[0].outer: this must have at least 3 corners"},
    {FACE(R"("outer": [[0,0,0],[1,0],[1,1,0]])"),
     "entities.faces[0].outer[1]: this must be an array of three numbers"},
    {FACE(R"("outer": [[0,0,0],[1,"0",0],[1,1,0]])"),
     "entities.faces[0].outer[1][1]: this must be a number"},
    {FACE(R"("outer": [[0,0,0],[1,0,0],[2,0,0]])"),
     "entities.faces[0].outer: the corners enclose no area"},
    {FACE(R"("outer": [[0,0,0],[300,0,0],[300,400,4],[0,400,0]])"),
     "entities.faces[0].outer[0]: the corner is off the plane of the face by 0.999965, more than the "
     "allowed 0.500016"},
    {FACE(
         SQUARE
         R"(, "holes": [[[0.1,0.1,0],[0.2,0.1,0],[0.2,0.2,0]], [[0.5,0.5,0],[0.6,0.5,0.1],[0.6,0.6,0]]])"),
     "entities.faces[0].holes[1][1]: the corner is off the plane of the face by 0.1, more than the "
     "allowed "
     "0.00141421"},
    {FACE(SQUARE R"(, "holes": [[[0.1,0.1,0],[0.2,0.1,0]]])"),
     "entities.faces[0].holes[0]: this must have at least 3 corners"},
    {FACE(SQUARE R"(, "holes": [[[-1,-1,0],[2,-1,0],[2,2,0],[-1,2,0]]])"),
     "entities.faces[0].outer: the face is empty or can't be triangulated"},
    {FACE(SQUARE R"(, "front": "b")"), "entities.faces[0].front: there is no material \"b\""},
    {FACE(SQUARE R"(, "back": {"coordinates": [[0,0],[1,0],[1,1]]})"),
     "entities.faces[0].back.coordinates: there must be 4 texture coordinates, not 3"},
    {FACE(SQUARE R"(, "back": {"coordinates": [[0,0],[1,0],[1],[1,1]]})"),
     "entities.faces[0].back.coordinates[2]: this must be an array of two or three numbers"},
    {FACE(SQUARE R"(, "back": {"coordinates": [[0,0],[1,0],[1,1,0],[1,1]]})"),
     "entities.faces[0].back.coordinates[2][2]: q must not be 0"},
    {FACE(SQUARE R"(, "front": {"coordinates": [], "mapping": {}})"),
     "entities.faces[0].front: coordinates and mapping are mutually exclusive"},
    {FACE(SQUARE R"(, "front": {"mapping": {"right": [1,0,0], "up": [2,0,0]}})"),
     "entities.faces[0].front.mapping: right and up are collinear"},
    {FACE(SQUARE R"(, "front": {"mapping": {"up": [0,0,1]}})"),
     "entities.faces[0].front.mapping: the direction is perpendicular to the face"},
    {FACE(MESH R"(, "triangles": [])"),
     "entities.faces[0].triangles: this must have at least 1 triangle"},
    {FACE(MESH R"(, "triangles": [[0,1]])"),
     "entities.faces[0].triangles[0]: this must be an array of three indices"},
    {FACE(MESH R"(, "triangles": [[0,1,3]])"),
     "entities.faces[0].triangles[0][2]: this must be a whole number from 0 to 2"},
    {FACE(MESH R"(, "triangles": [[0,-1,2]])"),
     "entities.faces[0].triangles[0][1]: this must be a whole number from 0 to 2"},
    {FACE(MESH R"(, "triangles": [[0,1,2]], "normals": [[0,0,1]])"),
     "entities.faces[0].normals: there must be 3 normals, not 1"},
    {FACE(MESH R"(, "triangles": [[0,1,2]], "normals": [[0,0,0],[0,0,1],[0,0,1]])"),
     "entities.faces[0].normals[0]: this vector has no length"},
};

std::string Repeated(std::string_view text, int count) {
    std::string result;
    for (int i = 0; i < count; ++i) {
        result += text;
    }
    return result;
}

// The first face of a document, and its texture coordinates s / q and t / q.
struct OpenedFace {
    Model Opened;
    std::vector<std::array<double, 3>> Front;
    std::vector<std::array<double, 3>> Back;
};

OpenedFace OpenFace(const std::string& members) {
    WriteTestFile(u"good.tga", TgaFile(4, 2, std::vector<uint8_t>(24, 7)));
    OpenedFace opened;
    std::string error;
    EXPECT_TRUE(OpenDocument(members, opened.Opened, error)) << error;
    if (opened.Opened.Faces.empty()) {
        return opened;
    }
    const ModelFace& face = opened.Opened.Faces[0];
    opened.Front.resize(face.Vertices.Count);
    opened.Back.resize(face.Vertices.Count);
    std::vector<double> values(size_t{face.Vertices.Count} * 3);
    for (auto* side : {&opened.Front, &opened.Back}) {
        CoordinatesOfSide(opened.Opened, face, side == &opened.Front, face.Vertices.Count,
                          reinterpret_cast<double(*)[3]>(values.data()));
        for (size_t i = 0; i < side->size(); ++i) {
            (*side)[i] = {values[i * 3], values[i * 3 + 1], values[i * 3 + 2]};
        }
    }
    return opened;
}

void ExpectCoordinates(const std::vector<std::array<double, 3>>& actual,
                       const std::vector<std::array<double, 3>>& expected) {
    ASSERT_EQ(actual.size(), expected.size());
    for (size_t i = 0; i < actual.size(); ++i) {
        for (size_t value = 0; value < 3; ++value) {
            EXPECT_NEAR(actual[i][value], expected[i][value], 1e-9) << i << " " << value;
        }
    }
}

// A wall that faces -Y, 4 wide and 2 high, with counter-clockwise corners.
const std::string WallOutline = "\"outer\": [[0,0,0],[4,0,0],[4,0,2],[0,0,2]]";

std::string Wall(const std::string& more) {
    return R"("materials": [{"name": "m", "picture": "good.tga", "width": 2, "height": 0.5}, {"name": "p"}],
              "entities": {"faces": [{)" +
           WallOutline + more + "}]}";
}

} // namespace

TEST(ProviderDocument, ReportsPlaceAndReasonOfEachError) {
    WriteTestFile(u"good.tga", TgaFile(1, 1, {1, 2, 3}));
    std::vector<uint8_t> picture = TgaFile(1, 1, {1, 2, 3});
    picture[13] = 0xFF; // width 65281
    WriteTestFile(u"huge.tga", picture);
    WriteTestFile(u"cut.tga", TgaFile(2, 2, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
    for (const ErrorCase& errorCase : ErrorCases) {
        SCOPED_TRACE(errorCase.Members);
        Model model;
        std::string error;
        EXPECT_FALSE(OpenDocument(errorCase.Members, model, error));
        EXPECT_EQ(error, errorCase.Error);
    }
}

TEST(ProviderDocument, ReportsInvalidFiles) {
    const std::string deep = "{\"orvaneModel\":" + Repeated("[", 100000);
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"", "this is not a model document or a file of another supported format"},
        {std::string("\x11\x11\x11\x11\0\0", 6),
         "this is not a model document or a file of another supported format"},
        {"[1]", "this is not a model document or a file of another supported format"},
        {"{}", "this is JSON but not a model document: the key orvaneModel is missing"},
        {"{\"orvaneModel\": 2}", "orvaneModel: this must be 1, the only version"},
        {"{\"orvaneModel\": 1,\n  \"layers\": [}\n}",
         "line 2, column 14: this is not valid JSON (last read: '[}')"},
        {"{\"orvaneModel\": 1", "line 1, column 18: this is not valid JSON (last read: '1')"},
        {"{\"orvaneModel\": 1e999}", "line 1, column 21: the number is too large (last read: '1e999')"},
        {"{\"orvaneModel\": NaN}", "line 1, column 17: this is not valid JSON (last read: 'N')"},
        {deep, "arrays and objects are nested too deeply"},
    };
    for (const auto& [text, expected] : cases) {
        Model model;
        std::string error;
        EXPECT_FALSE(OpenModel(WriteTestText(u"broken.json", text), model, error));
        if (expected.starts_with("line")) {
            // The last token differs between versions of the parser.
            EXPECT_EQ(error.substr(0, error.find(" (")), expected.substr(0, expected.find(" (")));
        } else {
            EXPECT_EQ(error, expected);
        }
    }
    Model model;
    std::string error;
    EXPECT_FALSE(OpenModel(ProviderTestDirectory() + u"missing.json", model, error));
    EXPECT_FALSE(OpenModel(ProviderTestDirectory(), model, error));
    EXPECT_EQ(error, "the file can't be found or read");
}

TEST(ProviderDocument, LimitsNestingThroughDefinitions) {
    const auto chain = [](int length) {
        std::string text = "\"definitions\": [";
        for (int i = 0; i < length; ++i) {
            text += "{\"name\": \"" + std::to_string(i) + "\", \"instances\": [{\"definition\": \"" +
                    std::to_string(i + 1) + "\"}]},";
        }
        return text + "{\"name\": \"" + std::to_string(length) + "\"}]";
    };
    Model model;
    std::string error;
    EXPECT_TRUE(OpenDocument(chain(512), model, error)) << error;
    Model deeper;
    EXPECT_FALSE(OpenDocument(chain(100000), deeper, error));
    EXPECT_NE(error.find("nested deeper than 512 levels"), std::string::npos) << error;
    // Two chains that are each allowed, the inner one first.
    Model joined;
    std::string halves = chain(300);
    halves.pop_back();
    halves += ", {\"name\": \"a0\", \"instances\": [{\"definition\": \"0\"}]}";
    for (int i = 1; i < 300; ++i) {
        halves += ", {\"name\": \"a" + std::to_string(i) + "\", \"instances\": [{\"definition\": \"a" +
                  std::to_string(i - 1) + "\"}]}";
    }
    EXPECT_FALSE(OpenDocument(halves + "]", joined, error));
}

TEST(ProviderDocument, ReadsMaterialsLayersAndComments) {
    WriteTestFile(u"good.tga", TgaFile(4, 2, std::vector<uint8_t>(24, 7)));
    Model model;
    std::string error;
    ASSERT_TRUE(OpenDocument(R"(
        // A comment.
        "materials": [{"name": "ä\ud83d\ude00", "color": "#0a141E"},
                      {"name": "b", "color": [1, 2, 3, 4], "opacity": 0.5, "picture": "good.tga"},
                      {"name": "c", "picture": "good.tga", "pictureName": "C:\\x\\y.png", "width": 2,
                       "type": "colorized"},
                      {"name": "d", "picture": "good.tga", "height": 3, "type": "plain"}],
        "layers": [{"name": "off", "visible": false}, {"name": "on"}])",
                             model, error))
        << error;
    ASSERT_EQ(model.Materials.size(), 4U);
    EXPECT_EQ(model.Materials[0].Name, u"ä\U0001F600");
    EXPECT_EQ(model.Materials[0].Color, (std::array<uint8_t, 4>{0x0A, 0x14, 0x1E, 255}));
    EXPECT_FALSE(model.Materials[0].UseOpacity);
    EXPECT_EQ(model.Materials[0].Type, MaterialType::Plain);
    EXPECT_EQ(model.Materials[1].Color, (std::array<uint8_t, 4>{1, 2, 3, 4}));
    EXPECT_TRUE(model.Materials[1].UseOpacity);
    EXPECT_EQ(model.Materials[1].Opacity, 0.5);
    EXPECT_EQ(model.Materials[1].Type, MaterialType::Textured);
    EXPECT_EQ(model.Materials[1].Width, 4);
    EXPECT_EQ(model.Materials[1].Height, 2);
    EXPECT_EQ(model.Materials[1].PictureName, u"good.tga");
    EXPECT_EQ(model.Materials[2].Type, MaterialType::Colorized);
    EXPECT_EQ(model.Materials[2].Height, 1);
    EXPECT_EQ(model.Materials[2].PictureName, u"C:\\x\\y.png");
    EXPECT_EQ(model.Materials[3].Type, MaterialType::Plain);
    EXPECT_EQ(model.Materials[3].Width, 6);
    EXPECT_EQ(model.Pictures.size(), 1U);
    ASSERT_EQ(model.Layers.size(), 3U);
    EXPECT_TRUE(model.Layers[0].Visible && model.Layers[0].Name.empty());
    EXPECT_FALSE(model.Layers[1].Visible);
    EXPECT_TRUE(model.Layers[2].Visible);
}

TEST(ProviderDocument, KeepsTheOrderOfNestedLists) {
    Model model;
    std::string error;
    ASSERT_TRUE(OpenDocument(R"(
        "definitions": [{"name": "d", "instances": [{"definition": "e"}]}, {"name": "e"}],
        "entities": {"groups": [{"name": "a", "groups": [{"name": "a1"}, {"name": "a2"}]},
                                {"name": "b", "instances": [{"definition": "e"}, {"definition": "d"}]},
                                {"name": "c"}]})",
                             model, error))
        << error;
    const auto names = [&](IndexRange range) {
        std::u16string joined;
        for (uint32_t i = 0; i < range.Count; ++i) {
            joined += model.Groups[range.First + i].Name + u" ";
        }
        return joined;
    };
    EXPECT_EQ(names(model.Entities[0].Groups), u"a b c ");
    const ModelGroup& a = model.Groups[model.Entities[0].Groups.First];
    EXPECT_EQ(names(model.Entities[a.Entities].Groups), u"a1 a2 ");
    const IndexRange inB =
        model.Entities[model.Groups[model.Entities[0].Groups.First + 1].Entities].Instances;
    ASSERT_EQ(inB.Count, 2U);
    EXPECT_EQ(model.Definitions[model.Instances[inB.First].Definition].Name, u"e");
    EXPECT_EQ(model.Definitions[model.Instances[inB.First + 1].Definition].Name, u"d");
}

TEST(ProviderDocument, ReadsTransformations) {
    WriteTestFile(u"good.tga", TgaFile(4, 2, std::vector<uint8_t>(24, 7)));
    Model model;
    std::string error;
    ASSERT_TRUE(OpenDocument(R"("entities": {
        "groups": [{"transform": [1,2,3,0.5,4,5,6,0,7,8,9,0,10,11,12,2]},
                   {"transform": {"move": [7, 8, 9], "rotate": 90, "scale": [2, 3, 4]}},
                   {"transform": {"rotate": {"axis": [5, 0, 0], "angle": 30}, "scale": -1}}],
        "images": [{"picture": "good.tga"},
                   {"picture": "good.tga", "width": 2, "height": 3, "transform": {"move": [1, 2, 3]}},
                   {"picture": "good.tga", "height": 1}]})",
                             model, error))
        << error;
    const double half = 0.5;
    const double sine60 = std::sqrt(0.75);
    const std::vector<Transform> expected = {
        {1, 2, 3, 0.5, 4, 5, 6, 0, 7, 8, 9, 0, 10, 11, 12, 2},
        // The X axis doubled and turned to Y, the Y axis tripled and turned to -X.
        {0, 2, 0, 0, -3, 0, 0, 0, 0, 0, 4, 0, 7, 8, 9, 1},
        {-1, 0, 0, 0, 0, -sine60, -half, 0, 0, half, -sine60, 0, 0, 0, 0, 1},
        {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1},
        {0.5, 0, 0, 0, 0, 1.5, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1},
        {0.5, 0, 0, 0, 0, 0.5, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1},
    };
    for (size_t i = 0; i < expected.size(); ++i) {
        const Transform& actual = i < 3 ? model.Groups[i].Placement : model.Images[i - 3].Placement;
        for (size_t value = 0; value < actual.size(); ++value) {
            // Sines are multiples of 2^-40.
            EXPECT_NEAR(actual[value], expected[i][value], 1e-12) << i << " " << value;
        }
    }
}

TEST(ProviderDocument, MapsPicturesOntoSides) {
    // Scaled coordinates if the side has its own picture, otherwise model units; the back is not
    // mirrored.
    OpenedFace face = OpenFace(Wall(R"(, "front": "m")"));
    ExpectCoordinates(face.Front, {{0, 0, 1}, {2, 0, 1}, {2, 4, 1}, {0, 4, 1}});
    ExpectCoordinates(face.Back, {{0, 0, 1}, {-4, 0, 1}, {-4, 2, 1}, {0, 2, 1}});
    EXPECT_NEAR(Length(face.Opened.Faces[0].Normal - Point3{0, -1, 0}), 0, 1e-15);
    face = OpenFace(Wall(R"(, "front": "p", "back": "m")"));
    ExpectCoordinates(face.Front, {{0, 0, 1}, {4, 0, 1}, {4, 2, 1}, {0, 2, 1}});
    ExpectCoordinates(face.Back, {{0, 0, 1}, {-2, 0, 1}, {-2, 4, 1}, {0, 4, 1}});

    face = OpenFace(Wall(R"(, "front": {"material": "m", "mapping": {"origin": [1,0,1]}},
                              "back": {"mapping": {"right": [0,0,3], "width": 2}})"));
    ExpectCoordinates(face.Front, {{-0.5, -2, 1}, {1.5, -2, 1}, {1.5, 2, 1}, {-0.5, 2, 1}});
    // Seen from behind, with right along +Z, the picture's up is +X.
    ExpectCoordinates(face.Back, {{0, 0, 1}, {0, 4, 1}, {1, 4, 1}, {1, 0, 1}});

    face = OpenFace(Wall(R"(, "front": {"mapping": {"up": [-1,0,0]}})"));
    ExpectCoordinates(face.Front, {{0, 0, 1}, {0, -4, 1}, {2, -4, 1}, {2, 0, 1}});
}

TEST(ProviderDocument, ExtendsCoordinatesOfCornersToHoles) {
    const std::string hole = R"(, "holes": [[[1,0,1],[2,0,1],[2,0,1.5]]])";
    // Affine in the plane, also q.
    const OpenedFace face =
        OpenFace(Wall(hole + R"(, "front": {"material": "m", "coordinates": [[0,0],[8,4],[10,10],[2,6]]},
                    "back": {"coordinates": [[0,0,1],[4,0,2],[4,2,2.5],[0,2,1.5]]})"));
    ExpectCoordinates(
        face.Front, {{0, 0, 1}, {8, 4, 1}, {10, 10, 1}, {2, 6, 1}, {3, 4, 1}, {5, 5, 1}, {5.5, 6.5, 1}});
    ExpectCoordinates(
        face.Back,
        {{0, 0, 1}, {4, 0, 2}, {4, 2, 2.5}, {0, 2, 1.5}, {1, 1, 1.5}, {2, 1, 1.75}, {2, 1.5, 1.875}});
}

TEST(ProviderDocument, ReadsReadyTriangulations) {
    const std::string positions =
        R"("positions": [[0,0,0],[2,0,0],[2,2,1],[0,2,1]], "triangles": [[0,1,2],[0,2,3]])";
    const OpenedFace given = OpenFace("\"entities\": {\"faces\": [{" + positions +
                                      R"(, "normals": [[0,0,2],[0,3,4],[0,0,1],[1,0,0]],
                     "back": {"coordinates": [[1,2],[3,4],[5,6],[7,8,9]]}, "hidden": true}]})");
    const Model& model = given.Opened;
    ASSERT_EQ(model.Faces.size(), 1U);
    EXPECT_TRUE(model.Faces[0].Hidden);
    EXPECT_NEAR(Length(model.Normals[1] - Point3{0, 0.6, 0.8}), 0, 1e-15);
    ExpectCoordinates(given.Back, {{1, 2, 1}, {3, 4, 1}, {5, 6, 1}, {7, 8, 9}});

    const OpenedFace smooth = OpenFace("\"entities\": {\"faces\": [{" + positions + "}]}");
    const Point3 slanted = {0, -std::sqrt(0.2), std::sqrt(0.8)};
    ASSERT_EQ(smooth.Opened.Normals.size(), 4U);
    for (const Point3& normal : smooth.Opened.Normals) {
        EXPECT_NEAR(Length(normal - slanted), 0, 1e-12);
    }
}
