// Small models with scenes computed by hand: materials, sides of faces, winding, images, transformations
// and the bytes of the file.
#include "support/ScriptedRun.h"

#include <array>
#include <bit>
#include <gtest/gtest.h>

namespace {

using Point = std::array<float, 3>;

// The scene is moved to Y = 0 and its middle to X = Z = 0. Positions relative to a corner of this
// triangle, which is at the model's origin, cancel that.
Json Anchor() {
    return Triangle();
}

Json Painted(const std::string& name, const std::string& file = "") {
    Json material = {{"name", name}};
    if (!file.empty())
        material["texture"] = {{"file", file}};
    return material;
}

Json Group(Json script, const Json& material = nullptr, const std::string& name = "") {
    return {{"name", name}, {"material", material}, {"entities", script["entities"]}};
}

Json Identity() {
    return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
}

Json With(Json numbers, const std::vector<std::pair<size_t, double>>& changes) {
    for (const auto& [at, value] : changes)
        numbers[at] = value;
    return numbers;
}

// A script whose only group has this transformation and one triangle.
Json Transformed(const Json& transform) {
    Json script = Faces({Anchor()});
    script["entities"]["groups"] = List({Group(Faces({Triangle()}))});
    script["entities"]["groups"][0]["transform"] = transform;
    return script;
}

const StoredMesh& MeshOf(const StoredScene& scene, const std::string& name) {
    static const StoredMesh None{};
    for (const StoredNode& node : scene.Nodes)
        for (const StoredMesh& mesh : node.Meshes)
            if (std::string(mesh.Material.Name.begin(), mesh.Material.Name.end()) == name)
                return mesh;
    ADD_FAILURE() << "no mesh of " << name;
    return None;
}

// The s of Triangle at each corner: the order of its vertices in the file.
std::string Order(const StoredMesh& mesh) {
    std::string order;
    for (const StoredVertex& corner : Corners(mesh))
        order += std::to_string(int(corner.U));
    return order;
}

// Expects unit normals, and triangles that turn about them by the right-hand rule.
void ExpectWindingByNormals(const StoredScene& scene) {
    for (const StoredNode& node : scene.Nodes)
        for (const StoredMesh& mesh : node.Meshes) {
            const std::vector<StoredVertex> corners = Corners(mesh);
            for (size_t i = 0; i < corners.size(); i += 3) {
                Point a, b;
                for (size_t j = 0; j < 3; ++j) {
                    a[j] = corners[i + 1].Position[j] - corners[i].Position[j];
                    b[j] = corners[i + 2].Position[j] - corners[i].Position[j];
                }
                const Point& n = corners[i].Normal;
                EXPECT_GT((a[1] * b[2] - a[2] * b[1]) * n[0] + (a[2] * b[0] - a[0] * b[2]) * n[1] +
                              (a[0] * b[1] - a[1] * b[0]) * n[2],
                          0);
                EXPECT_NEAR(n[0] * n[0] + n[1] * n[1] + n[2] * n[2], 1, 1e-6);
            }
        }
}

void Append(std::string& bytes, uint32_t word) {
    for (int shift = 0; shift < 32; shift += 8)
        bytes.push_back(char(word >> shift & 0xFF));
}

void AppendFloats(std::string& bytes, const std::vector<float>& numbers) {
    for (const float number : numbers)
        Append(bytes, std::bit_cast<uint32_t>(number));
}

} // namespace

TEST(RunScene, TheFileOfOneTriangleByteForByte) {
    std::string bytes;
    Append(bytes, 0x11111111);
    Append(bytes, 107);
    Append(bytes, 0);
    Append(bytes, 0x22222222);
    bytes.append(256, '\0');
    AppendFloats(bytes, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    for (const uint32_t word : {0u, 1u, 0u, 0u})
        Append(bytes, word);
    Append(bytes, 0x42424242);
    Append(bytes, 3);
    Append(bytes, 1);
    bytes.append(40, '\0');
    Append(bytes, 0x32443244);
    Append(bytes, 8);
    bytes.append(4, '\0');
    AppendFloats(bytes, {1, 1, 1, 1});
    bytes.append(16, '\0');
    Append(bytes, 1);
    bytes.append(4, '\0');
    AppendFloats(bytes, {1});
    bytes.append(16, '\0');
    AppendFloats(bytes, {1});
    bytes.append(48, '\0');
    for (const char letter : std::string("Default"))
        bytes += std::string{letter, '\0'};
    bytes.append(4, '\0');
    AppendFloats(bytes, {-0.5f, 0, 0.5f, 0, 1, 0, 2, 1});
    AppendFloats(bytes, {0.5f, 0, -0.5f, 0, 1, 0, 1, 1});
    AppendFloats(bytes, {-0.5f, 0, -0.5f, 0, 1, 0, 0, 1});
    bytes.append(12, '\0');
    for (const uint32_t index : {0u, 1u, 2u})
        Append(bytes, index);
    ASSERT_EQ(bytes.size(), 666u);

    Json script = Faces({Triangle()});
    script["faults"] = Faults("SUMeshHelperGetNumTriangles", 2, "fail");
    ScriptedRun run;
    RunScript(run, script);
    ASSERT_EQ(run.Result.ExitCode, 0);
    EXPECT_TRUE(ReadBytes(run.SceneFile) == bytes);
}

TEST(RunScene, FourMaterialsWithASharedTexture) {
    Json script =
        Faces({Triangle(0, 0, 0), Triangle(2, 1, 1), Triangle(4, 2, 2), Triangle(6, 3, 3), Triangle(8)});
    script["materials"] = List({Painted("brick", "brick.jpg"), Painted("Brick2", "BRICK.JPG"),
                                Painted("red"), Painted("wood", "wood.png")});
    const Json colours[] = {{10, 20, 30, 9}, {10, 20, 30, 0}, {255, 0, 0, 7}, {1, 2, 3, 4}};
    for (size_t i = 0; i < 4; ++i)
        script["materials"][i]["color"] = colours[i];
    script["materials"][1]["useOpacity"] = 2;
    script["materials"][1]["opacity"] = 0.5;
    const StoredScene scene = Convert(script);
    EXPECT_EQ(Shape(scene), "Default:2 brick@1:2 Brick2@1:2 red:2 wood@2:2");
    EXPECT_EQ(MeshOf(scene, "Brick2").Material.TexturePath, u"maps\\house_Texture1.png");
    EXPECT_EQ(MeshOf(scene, "brick").Material.Colour, (std::array<float, 4>{1, 1, 1, 1}));
    EXPECT_EQ(MeshOf(scene, "Brick2").Material.Colour, (std::array<float, 4>{1, 1, 1, 127 / 255.0f}));
    EXPECT_EQ(MeshOf(scene, "red").Material.Colour, (std::array<float, 4>{1, 0, 0, 1}));
}

TEST(RunScene, WhichMaterialsShareATexture) {
    struct Row {
        const char* Why;
        Json First, Second;
        const char* Scene;
    };
    const auto material = [](const Json& file, int blue, const Json& type = nullptr) {
        Json made = {{"name", "m"}, {"color", {1, 2, blue, 0}}, {"texture", {{"file", file}}}};
        if (!type.is_null())
            made["type"] = type;
        return made;
    };
    const Row rows[] = {
        {"case of A to Z", material("aZ.png", 3), material("Az.PNG", 3), "m@1:2 m@1:2"},
        {"case of other letters", material("ä.png", 3), material("Ä.png", 3), "m@1:2 m@2:2"},
        {"one in blue", material("a", 3), material("a", 4), "m@1:2 m@2:2"},
        {"directories count", material("x\\a", 3), material("a", 3), "m@1:2 m@2:2"},
        {"no names", material(nullptr, 3), material(nullptr, 3), "m@1:2 m@1:2"},
        {"plain in spite of a texture", material("a", 3, 0), material("a", 3), "m:2 m@1:2"},
        {"colourised", material("a", 3, 2), material("a", 3), "m@1:2 m@1:2"},
        {"neither plain nor textured", material("a", 3, 7), material("a", 3), ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.Why);
        Json script = Faces({Triangle(0, 0, 0), Triangle(2, 1, 1)});
        script["materials"] = List({row.First, row.Second});
        ScriptedRun run;
        RunScript(run, script);
        if (row.Scene[0] != 0) {
            EXPECT_EQ(Shape(SceneOf(run)), row.Scene);
        }
        // The picture of a material that isn't plain is written even without a path.
        EXPECT_EQ(run.Result.ExitCode, row.Scene[0] != 0 ? 0 : 12);
    }
    // Used and unused materials get numbers.
    Json script = Faces({Triangle(0, 2)});
    script["materials"] = List({material("a", 1), material("b", 1), material("c", 1)});
    ScriptedRun run;
    RunScript(run, script);
    EXPECT_EQ(FilesBelow(run.SceneFile.parent_path()),
              (std::vector<std::string>{"house.bin", "house_Texture3.png"}));
}

TEST(RunScene, ColourAndOpacity) {
    struct Row {
        const char* Why;
        Json Changes;
        Json Faults;
        std::array<int, 4> Colour; // In steps of 1/255.
    };
    const Json half = {{"useOpacity", true}, {"opacity", 0.5}};
    const auto opacity = [](const Json& value) {
        return Json{{"useOpacity", 255}, {"opacity", value}};
    };
    const Row rows[] = {
        {"half", half, {}, {17, 34, 51, 127}},
        {"full", opacity(1.0), {}, {17, 34, 51, 255}},
        {"none", opacity(0.0), {}, {17, 34, 51, 0}},
        {"not in use", {{"useOpacity", 0}, {"opacity", 0.5}}, {}, {17, 34, 51, 255}},
        {"flag fails", half, Faults("SUMaterialGetUseOpacity", 0, "fail late"), {17, 34, 51, 255}},
        {"opacity fails", half, Faults("SUMaterialGetOpacity", 0, "fail"), {17, 34, 51, 0}},
        {"opacity fails late", half, Faults("SUMaterialGetOpacity", 0, "fail late"), {17, 34, 51, 127}},
        {"colour fails", half, Faults("SUMaterialGetColor", 0, "fail late"), {255, 255, 255, 255}},
        {"colour silent", half, Faults("SUMaterialGetColor", 0, "silent"), {0, 0, 0, 127}},
        {"above 1", opacity(2.0), {}, {17, 34, 51, 254}},
        {"below 0", opacity(-1.0), {}, {17, 34, 51, 1}},
        {"no number", opacity("nan"), {}, {17, 34, 51, 0}},
        {"beyond integers", opacity(1e300), {}, {17, 34, 51, 0}},
        {"infinite", opacity("inf"), {}, {17, 34, 51, 0}},
        {"textured",
         {{"useOpacity", true}, {"opacity", 0.5}, {"texture", {{"file", "a"}}}},
         {},
         {255, 255, 255, 127}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.Why);
        Json script = Faces({Triangle(0, 0)});
        script["materials"] = List({{{"name", "m"}, {"color", {17, 34, 51, 99}}}});
        script["materials"][0].update(row.Changes);
        script["faults"] = row.Faults.is_null() ? Json::array() : row.Faults;
        const StoredScene scene = Convert(script);
        for (size_t i = 0; i < 4; ++i)
            EXPECT_EQ(MeshOf(scene, "m").Material.Colour[i], float(row.Colour[i]) / 255.0f) << i;
    }
}

// The material of each side and its coordinates at the second vertex, (0.5, 0.25) in the library, which
// the material's texture scales only if the material is inherited.
TEST(RunScene, MaterialsOfTheSidesOfAFace) {
    enum { Brick, Wood, Tile, Unlisted, Paint };
    const Json none;
    struct Row {
        Json Group, Front, Back;
        std::string FrontSide, BackSide;
    };
    const Row rows[] = {
        {none, none, none, "Default 0.5 0.75", "Default 0.5 0.75"},
        {none, Brick, none, "brick 0.5 0.75", "brick 2 0.5"},
        {none, none, Brick, "Default 0.5 0.75", "brick 0.5 0.75"},
        {none, Brick, Wood, "brick 0.5 0.75", "wood 0.5 0.75"},
        {Tile, none, none, "tile 8 -1", "tile 8 -1"},
        {Tile, Brick, none, "brick 0.5 0.75", "tile 8 -1"},
        {Tile, none, Brick, "tile 8 -1", "brick 0.5 0.75"},
        {Tile, Brick, Wood, "brick 0.5 0.75", "wood 0.5 0.75"},
        {Paint, none, none, "paint 0.5 0.75", "paint 0.5 0.75"},
        {Tile, Unlisted, none, "Default 0.5 0.75", "tile 8 -1"},
        {none, Unlisted, none, "Default 0.5 0.75", "Default 2 0.5"},
        {Unlisted, none, none, "Default 0.5 0.75", "Default 0.5 0.75"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.Group << row.Front << row.Back);
        Json script = Faces({Triangle(0, row.Front, row.Back)});
        for (const char* side : {"frontStq", "backStq"})
            script["entities"]["faces"][0][side] = {{0, 0, 1}, {1, 0.5, 2}, {0, 0, 1}};
        script["entities"]["groups"] = List({Group(script, row.Group)});
        script["entities"].erase("faces");
        if (row.Group.is_null()) {
            const Json inner = script["entities"]["groups"][0]["entities"];
            script["entities"] = inner;
        }
        script["materials"] = List({Painted("brick", "b"), Painted("wood", "w"), Painted("tile", "t"),
                                    Painted("unlisted", "u"), Painted("paint")});
        const std::array<double, 2> scales[] = {{4, 2}, {3, 3}, {16, 8}, {4, 2}};
        for (size_t i = 0; i < std::size(scales); ++i) {
            script["materials"][i]["texture"]["sScale"] = scales[i][0];
            script["materials"][i]["texture"]["tScale"] = scales[i][1];
        }
        script["materialList"] = {Brick, Wood, Tile, Paint};
        std::string front, back;
        for (const StoredNode& node : Convert(script).Nodes)
            for (const StoredMesh& mesh : node.Meshes)
                for (const StoredVertex& vertex : mesh.Vertices)
                    if (vertex.U != 0) {
                        std::ostringstream side;
                        side << std::string(mesh.Material.Name.begin(), mesh.Material.Name.end()) << " "
                             << vertex.U << " " << vertex.V;
                        (vertex.Normal[1] > 0 ? front : back) = side.str();
                    }
        EXPECT_EQ(front, row.FrontSide);
        EXPECT_EQ(back, row.BackSide);
    }
}

TEST(RunScene, TextureCoordinatesThatFailAreZeroOnTheirSideAlone) {
    for (const bool front : {false, true}) {
        Json script = Faces({Triangle()});
        script["faults"] = Faults(
            front ? "SUMeshHelperGetFrontSTQCoords" : "SUMeshHelperGetBackSTQCoords", 0, "fail late");
        EXPECT_EQ(Order(Convert(script).Nodes[0].Meshes[0]), front ? "000012" : "210000");
    }
}

TEST(RunScene, OrderOfATrianglesCorners) {
    const Json upright = {{0, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    const Json point = {{5, 5, 5}, {5, 5, 5}, {5, 5, 5}};
    struct Row {
        const char* Why;
        Json Changes;
        bool NoPlane;
        const char* Order; // Of the front's corners, then of the back's.
    };
    const Row rows[] = {
        {"as the normal", {{"plane", {0, 0, 1, 0}}}, false, "210012"},
        {"the other way", {{"indices", {0, 2, 1}}}, false, "021120"},
        {"seen from below", {{"plane", {0, 0, -1, 0}}}, false, "012210"},
        {"plane fails", {{"plane", {0, 0, -1, 0}}}, true, "210012"},
        {"upright", {{"vertices", upright}, {"plane", {1, 0, 0, 0}}}, false, "210012"},
        {"upright, other side", {{"vertices", upright}, {"plane", {-1, 0, 0, 0}}}, false, "012210"},
        {"plane is no number", {{"plane", {"nan", 0, 1, 0}}}, false, "210012"},
        {"normals play no part", {{"normals", {{0, 0, -1}, {0, 0, -1}, {0, 0, -1}}}}, false, "210012"},
        {"no area, up", {{"vertices", point}, {"plane", {0, 0, 1, 0}}}, false, "210210"},
        {"no area, down", {{"vertices", point}, {"plane", {0, 0, -1, 0}}}, false, "012012"},
        {"no area, level", {{"vertices", point}, {"plane", {1, 0, 0, 0}}}, false, "210012"},
        {"two corners the same", {{"indices", {0, 1, 1}}}, false, "110110"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.Why);
        Json script = Faces({Triangle()});
        script["entities"]["faces"][0].update(row.Changes);
        if (row.NoPlane)
            script["faults"] = Faults("SUFaceGetPlane", 0, "fail late");
        EXPECT_EQ(Order(Convert(script).Nodes[0].Meshes[0]), row.Order);
    }
}

TEST(RunScene, ClosedBoxSharesCornersInsideEachSideOfEachFace) {
    std::vector<Json> faces;
    for (const int axis : {0, 1, 2})
        for (const int end : {0, 1}) {
            Json face = {{"indices", {0, 1, 2, 0, 2, 3}}, {"plane", {0, 0, 0, 0}}};
            face["plane"][size_t(axis)] = end == 1 ? 1 : -1;
            for (const std::array<int, 2> corner : {std::array{0, 0}, {1, 0}, {1, 1}, {0, 1}}) {
                Json point = {end, end, end};
                point[size_t(axis + 1) % 3] = corner[0];
                point[size_t(axis + 2) % 3] = corner[1];
                face["vertices"].push_back(point);
            }
            faces.push_back(face);
        }
    const StoredScene scene = Convert(Faces(faces));
    ASSERT_EQ(Shape(scene), "Default:24");
    EXPECT_EQ(scene.Nodes[0].Meshes[0].Vertices.size(), 48u);
    ExpectWindingByNormals(scene);
}

TEST(RunScene, AMeshEndsAt99999Vertices) {
    constexpr size_t triangles = 33334;
    Json face = {{"indices", Json::array()}};
    for (size_t i = 0; i < 3 * triangles; ++i) {
        face["indices"].push_back(i);
        face["vertices"].push_back({i / 3, i % 3 % 2, i % 3 / 2});
    }
    Json script = Faces({face});
    script["faults"] = Faults("SUMeshHelperGetNumTriangles", 2, "fail");
    const StoredScene scene = Convert(script);
    ASSERT_EQ(Shape(scene), "Default:33333 Default:1");
    EXPECT_EQ(scene.Nodes[0].Meshes[0].Vertices.size(), 99999u);
    EXPECT_EQ(scene.Nodes[0].Meshes[1].Vertices.size(), 3u);
    EXPECT_EQ(scene.Nodes[0].Meshes[1].Indices, (std::vector<uint32_t>{0, 1, 2}));
}

TEST(RunScene, HiddenElementsIgnoreTheirLayer) {
    for (const bool hidden : {false, true})
        for (const bool visible : {false, true}) {
            const Json marks = {{"hidden", hidden ? 128 : 0}, {"layer", 0}};
            Json script = Faces({Triangle(), Triangle(2, 0)});
            Json& root = script["entities"];
            script["materials"] = List({Painted("red")});
            script["layers"] = List({{{"visible", visible ? 128 : 0}}});
            script["definitions"] = List({Faces({Triangle()})["entities"]});
            root["groups"] = List({Group(Faces({Triangle()}), nullptr, "G")});
            root["instances"] = List({{{"definition", 0}}});
            root["images"] = List({{{"file", "a"}}});
            root["faces"][1].update(marks);
            for (const char* list : {"groups", "instances", "images"})
                root[list][0].update(marks);
            EXPECT_EQ(Shape(Convert(script)), hidden || visible
                                                  ? "Default:2 red:2 @1:4 ['G' Default:2] [Default:2]"
                                                  : "Default:2");
        }
}

TEST(RunScene, MaterialsAreInheritedDownToTheNextPaintedElement) {
    Json script;
    script["materials"] = List({Painted("red"), Painted("blue"), Painted("unlisted")});
    script["materialList"] = {0, 1};
    script["definitions"] = List({Faces({Triangle()})["entities"]});
    Json outer = Faces({Triangle()});
    outer["entities"]["groups"] =
        List({Group(Faces({Triangle()}), 0, "Inner"), Group(Faces({Triangle()}), 2, "Other")});
    outer["entities"]["instances"] = List({{{"definition", 0}}, {{"definition", 0}, {"material", 0}}});
    script["entities"]["groups"] = List({Group(outer, 1, "Outer \u00e9\u65e5"), Group(outer)});
    EXPECT_EQ(Shape(Convert(script)),
              "['Outer \xE9?' blue:2 ['Inner' red:2] ['Other' blue:2] [blue:2] [red:2]] "
              "[Default:2 ['Inner' red:2] ['Other' Default:2] [Default:2] [red:2]]");
}

TEST(RunScene, TransformationsFromModelToScene) {
    const float half = 0.5f;
    struct Row {
        const char* Why;
        Json Transform;
        std::array<Point, 3> Corners; // Of the vertices 0, 1 and 2 in scene axes.
    };
    const Row rows[] = {
        {"identity", Identity(), {{{0, 0, 0}, {1, 0, 0}, {0, 0, 1}}}},
        {"translation",
         With(Identity(), {{12, 1}, {13, 2}, {14, 3}}),
         {{{1, 3, 2}, {2, 3, 2}, {1, 3, 3}}}},
        {"quarter turn about Z",
         With(Identity(), {{0, 0}, {1, 1}, {4, -1}, {5, 0}}),
         {{{0, 0, 0}, {0, 0, 1}, {-1, 0, 0}}}},
        {"quarter turn about X",
         With(Identity(), {{5, 0}, {6, 1}, {9, -1}, {10, 0}}),
         {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}}},
        {"mirror", With(Identity(), {{0, -1}}), {{{0, 0, 0}, {-1, 0, 0}, {0, 0, 1}}}},
        {"mirror in all axes",
         With(Identity(), {{0, -1}, {5, -2}, {10, -4}}),
         {{{0, 0, 0}, {-1, 0, 0}, {0, 0, -2}}}},
        {"stretch and shear",
         With(Identity(), {{0, 4}, {2, 2}, {5, 2}}),
         {{{0, 0, 0}, {4, 2, 0}, {0, 0, 2}}}},
        {"fourth column",
         With(Identity(), {{3, 1}, {7, 5}, {11, 1}}),
         {{{0, 0, 0}, {half, 0, 0}, {0, 0, half}}}},
        {"homogeneous scale",
         With(Identity(), {{12, 3}, {15, 2}}),
         {{{1.5f, 0, 0}, {2, 0, 0}, {1.5f, 0, half}}}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.Why);
        const StoredScene scene = Convert(Transformed(row.Transform));
        ASSERT_EQ(Shape(scene), "Default:2 [Default:2]");
        const Point origin = Corners(scene.Nodes[0].Meshes[0])[2].Position;
        for (const StoredVertex& corner : scene.Nodes[2].Meshes[0].Vertices)
            for (size_t i = 0; i < 3; ++i)
                EXPECT_EQ(corner.Position[i] - origin[i], row.Corners[size_t(corner.U)][i])
                    << corner.U << i;
        ExpectWindingByNormals(scene);
    }
    // Two mirrorings cancel each other, also in the normals.
    Json twice = Transformed(With(Identity(), {{0, -1}}));
    Json& outer = twice["entities"]["groups"][0];
    outer["entities"]["groups"] = twice["entities"]["groups"];
    ExpectWindingByNormals(Convert(twice));
}

TEST(RunScene, TheModelIsOnTheGroundAndCentred) {
    Json face = Triangle();
    face["vertices"] = {{0, 0, 0}, {2, 0, 0}, {0, 4, 3}};
    for (const double lift : {-5.0, 0.0, 1000.0}) {
        for (Json& vertex : face["vertices"])
            vertex[2] = vertex[2].get<double>() + lift;
        const StoredScene scene = Convert(Faces({face}));
        const Point expected[] = {{-1, 0, -2}, {1, 0, -2}, {-1, 3, 2}};
        for (const StoredVertex& vertex : scene.Nodes[0].Meshes[0].Vertices)
            EXPECT_EQ(vertex.Position, expected[size_t(vertex.U)]);
    }
}

TEST(RunScene, AnImageIsAQuadOnBothSides) {
    Json script;
    Json& image = script["entities"]["images"] =
        List({{{"file", "a.png"}, {"width", 4}, {"height", 2}}});
    image[0]["transform"] = With(Identity(), {{0, 0.5}, {5, 0.5}, {12, 10}, {13, 20}, {14, 30}});
    const StoredScene scene = Convert(script);
    ASSERT_EQ(Shape(scene), "@1:4");
    // Recentred by (-11, -30, -20.5): positions, U and V of the corners of the front, then the back.
    const StoredVertex front[] = {{{-1, 0, -0.5f}, {0, 1, 0}, 0, 1},
                                  {{-1, 0, 0.5f}, {0, 1, 0}, 0, 0},
                                  {{1, 0, 0.5f}, {0, 1, 0}, 1, 0},
                                  {{1, 0, -0.5f}, {0, 1, 0}, 1, 1}};
    const size_t order[] = {0, 1, 2, 0, 2, 3, 3, 2, 1, 3, 1, 0};
    const std::vector<StoredVertex> corners = Corners(scene.Nodes[0].Meshes[0]);
    for (size_t i = 0; i < std::size(order); ++i) {
        EXPECT_EQ(corners[i].Position, front[order[i]].Position) << i;
        EXPECT_EQ(corners[i].Normal, (Point{0, i < 6 ? 1.0f : -1.0f, 0})) << i;
        EXPECT_EQ(corners[i].U, front[order[i]].U) << i;
        EXPECT_EQ(corners[i].V, front[order[i]].V) << i;
    }
    // A mirrored image keeps the order of its corners and its normals.
    image[0]["transform"][0] = -0.5;
    const std::vector<StoredVertex> mirrored = Corners(Convert(script).Nodes[0].Meshes[0]);
    ASSERT_EQ(mirrored.size(), corners.size());
    for (size_t i = 0; i < corners.size(); ++i) {
        EXPECT_EQ(mirrored[i].Position[0], -corners[i].Position[0]);
        EXPECT_EQ(mirrored[i].Normal, corners[i].Normal);
        EXPECT_EQ(mirrored[i].U, corners[i].U);
    }
}

TEST(RunScene, RowsAndFilesOfImages) {
    struct Row {
        std::vector<const char*> Names;
        const char* Scene;
        std::vector<std::string> Pictures; // Contents of the files 1, 2, ...
    };
    const Row rows[] = {
        {{"a.png", "A.PNG"}, "@2:8", {"", "image 0"}},
        {{"C:\\x\\a.png", "D:/y/a.png", "a.png"}, "@2:12", {"", "image 0"}},
        {{"a.png", "a.jpg"}, "@2:4 @3:4", {"", "image 0", "image 1"}},
        {{""}, "Default:4", {""}},
        {{"x\\BRICK.jpg", "b"}, "brick@1:4 @2:4", {"the brick", "image 1"}},
        {{"b.", "b"}, "@2:4 @3:4", {"", "image 0", "image 1"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.Names[0]);
        Json script;
        script["materials"] = List({Painted("brick", "brick.jpg"), Painted("red")});
        script["materials"][0]["texture"]["content"] = "the brick";
        Json inner;
        for (size_t i = 0; i < row.Names.size(); ++i)
            inner["entities"]["images"].push_back(
                {{"file", row.Names[i]}, {"content", "image " + std::to_string(i)}});
        // The group's material has no effect on an image.
        script["entities"]["groups"] = List({Group(inner, 1)});
        ScriptedRun run;
        RunScript(run, script);
        EXPECT_EQ(Shape(SceneOf(run)), "[" + std::string(row.Scene) + "]");
        for (size_t i = 0; i < row.Pictures.size(); ++i) {
            const auto path =
                run.SceneFile.parent_path() / ("house_Texture" + std::to_string(i + 1) + ".png");
            EXPECT_EQ(std::filesystem::exists(path) ? ReadBytes(path) : "", row.Pictures[i]);
        }
    }
}

TEST(RunScene, AnImageOfNoSizeKeepsItsNumberAndFile) {
    Json script;
    script["entities"]["images"] = List({{{"file", "a"}, {"width", 0}, {"height", 10}},
                                         {{"file", "b"}, {"height", 0}},
                                         {{"file", "c"}}});
    ScriptedRun run;
    RunScript(run, script);
    EXPECT_EQ(Shape(SceneOf(run)), "@3:4");
    EXPECT_EQ(FilesBelow(run.SceneFile.parent_path()).size(), 4u);
}
