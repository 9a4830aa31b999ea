// Models of every format that the library reads: what they give through the operations, and the messages
// about invalid ones.
#include "provider/ProviderTesting.h"

#include "provider/operations/OperationWalk.h"

#include <nlohmann/json.hpp>

#ifdef ORVANE_ASSIMP
#include "provider/assimp/AssimpModel.h"
#include <assimp/scene.h>
#endif

namespace {

using nlohmann::ordered_json;

// Whether a file of this text opens. Expects a reason if not.
bool OpensText(std::string_view name, std::string_view text, std::string& error) {
    Model model;
    error.clear();
    const bool isOpen = OpenModel(WriteTestText(Utf16FromUtf8(name), text), model, error);
    EXPECT_EQ(isOpen, error.empty()) << error;
    return isOpen;
}

// All models of a folder, each beside the expected text of its walk. Gives the number of models that
// open without some of their bytes.
size_t ExpectTexts(std::u16string_view folder) {
    size_t opened = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(ProviderTestsDirectory + std::u16string(folder))) {
        if (!entry.is_regular_file() || entry.path().extension() == ".txt") {
            continue;
        }
        SCOPED_TRACE(entry.path().string());
        const World world = WalkModel(entry.path().u16string());
        SUTerminate();
        EXPECT_EQ(world.Text, ReadBytes(entry.path().string() + ".txt"));
        const std::string whole = ReadBytes(entry.path());
        std::string error;
        // assimp's readers of STL and X leak memory when they fail.
        const bool leaks = entry.path().extension() == ".STL" || entry.path().stem() == "tilted";
        const size_t cuts = leaks ? 0 : 20;
        for (size_t cut = 0; cut < cuts; ++cut) {
            const std::string_view part(whole.data(), whole.size() * cut / cuts);
            opened += OpensText("cut" + entry.path().extension().string(), part, error) ? 1 : 0;
        }
    }
    return opened;
}

// A document of definitions, each of which holds the one after it.
ordered_json Chain(int first, int length) {
    ordered_json definitions = ordered_json::array();
    for (int i = first; i < first + length; ++i) {
        definitions.push_back(
            {{"name", std::to_string(i)}, {"instances", {{{"definition", std::to_string(i + 1)}}}}});
    }
    definitions.push_back({{"name", std::to_string(first + length)}});
    return {{"orvaneModel", 1}, {"definitions", definitions}};
}

} // namespace

TEST(ProviderModels, GiveWhatTheyHold) {
    EXPECT_EQ(ExpectTexts(u"models"), 0U);
    // Materials share a picture.
    Model model;
    std::string error;
    EXPECT_TRUE(OpenModel(ProviderTestsDirectory + u"models/materials.json", model, error));
    EXPECT_EQ(model.Pictures.size(), 1U);
}

// Rows: a model as text, as an object without its version, or as changes to one of the models.
TEST(ProviderModels, ReportPlaceAndReasonOfEachError) {
    for (const std::u16string name : {u"tiles.tga", u"huge.tga", u"cut.tga"}) {
        WriteTestText(name, ReadTestText(u"pictures/" + name));
    }
    for (const ordered_json& row : ordered_json::parse(ReadTestText(u"errors.json"))) {
        SCOPED_TRACE(row.dump());
        std::string text = row.value("text", "");
        if (row.contains("of")) {
            const auto base = ordered_json::parse(
                ReadTestText(u"models/" + Utf16FromUtf8(row["of"].get<std::string>())));
            text = base.patch(row["patch"]).dump();
        } else if (row.contains("model")) {
            ordered_json model = row["model"];
            model["orvaneModel"] = 1;
            text = model.dump();
        }
        std::string error;
        EXPECT_FALSE(OpensText("model.json", text, error));
        // The last token of invalid JSON differs between versions of the parser.
        EXPECT_EQ(error.substr(0, error.find(" (last read")), row["error"].get<std::string>());
    }
    Model model;
    std::string error;
    for (const std::u16string_view missing : {u"missing.json", u""}) {
        EXPECT_FALSE(OpenModel(ProviderTestDirectory() + std::u16string(missing), model, error));
        EXPECT_EQ(error, "the file can't be found or read");
    }
}

TEST(ProviderModels, LimitNestingAndAttributes) {
    std::string error;
    EXPECT_TRUE(OpensText("model.json", Chain(0, 512).dump(), error)) << error;
    EXPECT_FALSE(OpensText("model.json", Chain(0, 20000).dump(), error));
    EXPECT_NE(error.find("nested deeper than 512 levels"), std::string::npos) << error;
    // Two chains that are each allowed, the inner one first.
    ordered_json joined = Chain(300, 300);
    const ordered_json outer = Chain(0, 299);
    joined["definitions"].insert(joined["definitions"].end(), outer["definitions"].begin(),
                                 outer["definitions"].end());
    joined["definitions"].back()["instances"] = {{{"definition", "300"}}};
    EXPECT_FALSE(OpensText("model.json", joined.dump(), error));
    EXPECT_FALSE(OpensText("model.json", "{\"orvaneModel\":" + std::string(100000, '['), error));
    EXPECT_EQ(error, "arrays and objects are nested too deeply");

    ordered_json nodes = ordered_json::parse(ReadTestText(u"models/turned.gltf"));
    for (size_t i = 1; i <= 600; ++i) {
        nodes["nodes"].push_back(nodes["nodes"].back());
        nodes["nodes"][i - 1] = {{"children", {i}}};
    }
    EXPECT_FALSE(OpensText("model.gltf", nodes.dump(), error));
    EXPECT_EQ(error, "nodes[511]: nodes are nested deeper than 511 levels");

    ordered_json wide = ordered_json::parse(ReadTestText(u"models/turned.gltf"));
    for (size_t i = 0; i < 256; ++i) {
        wide["meshes"][0]["primitives"][0]["attributes"]["_" + std::to_string(i)] = 0;
    }
    EXPECT_FALSE(OpensText("model.gltf", wide.dump(), error));
    EXPECT_EQ(error, "meshes[0].primitives[0].attributes: there are more than 256 attributes");
}

#ifdef ORVANE_ASSIMP

TEST(ProviderModels, GiveWhatTheyHoldThroughAssimp) {
    // Any number of whole lines is valid in some formats.
    EXPECT_GT(ExpectTexts(u"models/assimp"), 0U);
    const std::string wall = ReadTestText(u"models/assimp/wall.x");
    std::string error;
    EXPECT_FALSE(OpensText("wall.dae", wall.substr(0, wall.size() / 2), error));
    const std::string_view known = "the file is broken or not supported (";
    EXPECT_TRUE(error.starts_with(known) && error.size() > known.size() + 1) << error;
}

// assimp itself would open such names on Linux alone.
TEST(ProviderModels, FollowLongNamesBeyondAsciiThroughAssimp) {
    std::u16string folder = ProviderTestDirectory();
    for (int level = 0; level < 3; ++level) {
        folder += u"H\u00E4user \u6A21\u578B" + std::u16string(90, u'x') + u"/";
        EXPECT_TRUE(CreateOneDirectory(folder));
    }
    const auto write = [&](std::u16string_view name, std::string_view text) {
        const std::vector<uint8_t> bytes(text.begin(), text.end());
        EXPECT_EQ(WriteWholeFile(folder + std::u16string(name), bytes), 0);
    };
    write(u"T\u00FCrme.obj", "mtllib D\xC3\xA4"
                             "cher.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl a\nf 1 2 3\n");
    write(u"D\u00E4cher.mtl", "newmtl a\nmap_Kd \xE7\x93\xA6.tga\n");
    write(u"\u74E6.tga", ReadTestText(u"pictures/tiles.tga"));
    Model model;
    std::string error;
    EXPECT_TRUE(OpenModel(folder + u"T\u00FCrme.obj", model, error)) << error;
    EXPECT_TRUE(model.Remarks.empty());
    EXPECT_EQ(model.Pictures.size(), 1U);
}

TEST(ProviderModels, TakeTheFirstPictureOfAMaterialOfAssimp) {
    aiScene scene;
    scene.mNumMeshes = scene.mNumMaterials = 1;
    scene.mRootNode = new aiNode;
    scene.mRootNode->mNumMeshes = 1;
    scene.mRootNode->mMeshes = new unsigned[1]{0};
    scene.mMeshes = new aiMesh* [1] {
        new aiMesh
    };
    aiMesh& mesh = *scene.mMeshes[0];
    mesh.mNumVertices = 3;
    mesh.mVertices = new aiVector3D[3]{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    for (const unsigned set : {0U, 1U}) {
        mesh.mTextureCoords[set] = new aiVector3D[3];
        mesh.mTextureCoords[set][0].x = static_cast<ai_real>(set);
    }
    mesh.mNumFaces = 1;
    mesh.mFaces = new aiFace[1];
    mesh.mFaces[0].mNumIndices = 3;
    mesh.mFaces[0].mIndices = new unsigned[3]{0, 1, 2};
    scene.mMaterials = new aiMaterial* [1] {
        new aiMaterial
    };
    const aiString first("tiles.tga");
    const aiString second("tiles.bmp");
    const int set = 1;
    scene.mMaterials[0]->AddProperty(&first, AI_MATKEY_TEXTURE_DIFFUSE(0));
    scene.mMaterials[0]->AddProperty(&set, 1, AI_MATKEY_UVWSRC_DIFFUSE(0));
    scene.mMaterials[0]->AddProperty(&second, AI_MATKEY_TEXTURE(aiTextureType_BASE_COLOR, 0));
    Model model;
    std::string error;
    EXPECT_TRUE(ReadAssimpScene(scene, ProviderTestsDirectory + u"pictures/", model, error)) << error;
    ASSERT_EQ(model.Materials.size(), 1U);
    EXPECT_EQ(model.Materials[0].PictureName, u"tiles.tga");
    EXPECT_EQ(model.Pictures.size(), 1U);
    ASSERT_EQ(model.Coordinates.Count, 3U);
    EXPECT_EQ(model.Coordinates[0].X, 1.0);
}

#else

TEST(ProviderModels, ReportFormatsThatNeedAssimp) {
    std::string error;
    EXPECT_FALSE(OpensText("a.obj", "v 0 0 0\n", error));
    EXPECT_EQ(error, "this format requires the assimp library, which this build does not include");
}

#endif
