// The scene file reader with files built byte by byte: it reads valid files exactly, and rejects wrong,
// missing and additional bytes.
#include "inspect/stored/SceneReader.h"
#include "inspect/report/SceneSummary.h"

#include "inspect/InspectTesting.h"

#include "platform/Platform.h"
#include "support/Files.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace {

// Offsets in SmallFile.
constexpr size_t RootAt = 12;
constexpr size_t MeshAt = 352;
constexpr size_t MaterialAt = 404;
constexpr size_t NameAt = 528;
constexpr size_t PathAt = 544;
constexpr size_t VerticesAt = 546;
constexpr size_t ZerosAt = 642;
constexpr size_t IndicesAt = 654;

void SetWord(Bytes& bytes, size_t at, uint32_t word) {
    std::memcpy(bytes.data() + at, &word, sizeof word);
}

std::string FaultOf(const Bytes& bytes) {
    StoredScene scene;
    const auto fault = ReadStoredScene(bytes, scene);
    EXPECT_EQ(scene.Nodes.empty(), fault.has_value());
    return fault ? Utf8FromUtf16(FaultText(*fault)) : "sound";
}

// The same for a file of unknown size, like a pipe, summarized part by part.
std::string FaultOfStream(const Bytes& bytes) {
    SceneReading reading = ReadingOfBytes(bytes);
    reading.Size.reset();
    SceneSummary summary;
    const auto fault = SummarizeParts(reading, summary);
    return fault ? Utf8FromUtf16(FaultText(*fault)) : "sound";
}

// A tree of three nodes on three levels with two meshes.
Bytes TreeFile() {
    Bytes bytes;
    AddHeader(bytes);
    AddNode(bytes, "", 1, 2);
    AddMesh(bytes, u"Brick", u"maps\\a.png", One);
    AddNode(bytes, "a", 1, 0);
    AddMesh(bytes, u"Glass", u"", 0);
    AddNode(bytes, "b", 0, 0);
    return bytes;
}

std::string FaultWith(size_t at, uint32_t word) {
    Bytes bytes = SmallFile();
    SetWord(bytes, at, word);
    return FaultOf(bytes);
}

TEST(SceneReader, ReadsTheSmallestUsefulFile) {
    const Bytes bytes = SmallFile();
    ASSERT_EQ(bytes.size(), 666U);
    StoredScene scene;
    ASSERT_FALSE(ReadStoredScene(bytes, scene));
    ASSERT_EQ(scene.Nodes.size(), 1U);
    const StoredNode& root = scene.Nodes[0];
    EXPECT_EQ(root.Name, "");
    EXPECT_EQ(root.Matrix[5], 1.0F);
    EXPECT_EQ(root.Matrix[6], 0.0F);
    EXPECT_FALSE(root.Parent);
    ASSERT_EQ(root.Meshes.size(), 1U);
    const StoredMesh& mesh = root.Meshes[0];
    EXPECT_EQ(mesh.Material.Name, u"Default");
    EXPECT_EQ(mesh.Material.TexturePath, u"");
    EXPECT_EQ(mesh.Material.Colour, (std::array<float, 4>{1, 1, 1, 1}));
    EXPECT_EQ(mesh.Indices, (std::vector<uint32_t>{0, 1, 2}));
    ASSERT_EQ(mesh.Vertices.size(), 3U);
    EXPECT_EQ(mesh.Vertices[1].Position, (std::array<float, 3>{8.5F, 9.5F, 10.5F}));
    EXPECT_EQ(mesh.Vertices[1].Normal, (std::array<float, 3>{11.5F, 12.5F, 13.5F}));
    EXPECT_EQ(mesh.Vertices[1].U, 14.5F);
    EXPECT_EQ(mesh.Vertices[1].V, 15.5F);
}

TEST(SceneReader, ReadsATreeDepthFirst) {
    const std::string longName(255, 'n');
    Bytes bytes;
    AddHeader(bytes);
    AddNode(bytes, "", 0, 2);
    AddNode(bytes,
            "K\xFC"
            "che",
            1, 1);
    AddMesh(bytes, u"", u"maps\\house_Texture1.png", One);
    AddNode(bytes, longName, 2, 0);
    AddMesh(bytes, u"\x03B1\xD83D\xDE00", u"", 0);
    AddMesh(bytes, u"Blue", u"", std::bit_cast<uint32_t>(51.0F / 255.0F));
    AddNode(bytes, "last", 0, 0);
    StoredScene scene;
    const auto fault = ReadStoredScene(bytes, scene);
    ASSERT_FALSE(fault) << Utf8FromUtf16(FaultText(*fault));
    ASSERT_EQ(scene.Nodes.size(), 4U);
    EXPECT_EQ(scene.Nodes[0].Children, (std::vector<uint32_t>{1, 3}));
    EXPECT_EQ(scene.Nodes[1].Children, (std::vector<uint32_t>{2}));
    EXPECT_EQ(scene.Nodes[2].Parent, 1U);
    EXPECT_EQ(scene.Nodes[3].Parent, 0U);
    EXPECT_EQ(scene.Nodes[1].Name, "K\xFC"
                                   "che");
    EXPECT_EQ(scene.Nodes[2].Name, longName);
    EXPECT_EQ(scene.Nodes[3].Name, "last");
    EXPECT_EQ(scene.Nodes[1].Meshes.at(0).Material.TexturePath, u"maps\\house_Texture1.png");
    EXPECT_EQ(scene.Nodes[2].Meshes.at(0).Material.Name, u"\x03B1\xD83D\xDE00");
    EXPECT_EQ(scene.Nodes[2].Meshes.at(1).Material.Colour, (std::array<float, 4>{0.2F, 0.2F, 0.2F, 1}));
}

TEST(SceneReader, ReadsEmptyMeshesAndEveryColour) {
    Bytes bytes = SmallFile();
    bytes.resize(VerticesAt);
    SetWord(bytes, MeshAt + 4, 0);
    SetWord(bytes, MeshAt + 8, 0);
    for (int step = 0; step < 256; ++step) {
        SetWord(bytes, MaterialAt + 12, std::bit_cast<uint32_t>(static_cast<float>(step) / 255.0F));
        ASSERT_EQ(FaultOf(bytes), "sound") << step;
    }
}

// This depth would crash a recursive reader.
TEST(SceneReader, ReadsDeepTrees) {
    constexpr size_t depth = 50000;
    Bytes bytes;
    AddHeader(bytes);
    for (size_t level = 1; level <= depth; ++level) {
        AddNode(bytes, "", 0, level < depth ? 1 : 0);
    }
    StoredScene scene;
    ASSERT_FALSE(ReadStoredScene(bytes, scene));
    EXPECT_EQ(Summarize(scene).Levels, depth);
}

TEST(SceneReader, ReportsOffsetAndReason) {
    EXPECT_EQ(FaultWith(MeshAt, 0), "at byte 352: mesh record: magic is 00000000, not 42424242");
    EXPECT_EQ(FaultWith(0, 0x11111112), "at byte 0: file header: magic is 11111112, not 11111111");
    EXPECT_EQ(FaultWith(4, 108), "at byte 4: file header: version is 0000006C, not 0000006B");
    EXPECT_EQ(FaultWith(RootAt, 1), "at byte 12: node record: magic is 00000001, not 22222222");
    EXPECT_EQ(FaultWith(MaterialAt, 1), "at byte 404: material record: magic is 00000001, not 32443244");
    EXPECT_EQ(FaultWith(RootAt + 328, 0xFFFFFFFF),
              "at byte 340: node record: mesh count is negative: -1");
    EXPECT_EQ(FaultWith(RootAt + 328, 0), "at byte 352: end of file: 314 bytes after the last block");
    EXPECT_EQ(FaultWith(RootAt + 332, 1), "at byte 344: node record: child count is 1, above 0, the "
                                          "most that the rest of the file can hold");
    EXPECT_EQ(
        FaultWith(MeshAt + 4, 100000),
        "at byte 356: mesh record: vertex count is 100000, above 99999, the most that a mesh can have");
    EXPECT_EQ(FaultWith(MeshAt + 4, 4), "at byte 546: vertex array: 128 bytes needed, 120 left");
    EXPECT_EQ(FaultWith(ZerosAt + 4, 0x100), "at byte 647: zero array: byte is 01, not 00");
    EXPECT_EQ(FaultWith(MeshAt + 8, 2), "at byte 654: index array: 24 bytes needed, 12 left");
    EXPECT_EQ(FaultWith(MaterialAt + 4, 0),
              "at byte 408: material record: name length is 0, with no room for the closing NUL");
    EXPECT_EQ(
        FaultWith(MaterialAt + 44, 0),
        "at byte 448: material record: texture path length is 0, with no room for the closing NUL");
    EXPECT_EQ(FaultWith(MaterialAt + 4, 7), "at byte 540: material name: no NUL at its end");
    EXPECT_EQ(FaultWith(MaterialAt + 4, 9), "at byte 542: material name: NUL before its end");
    EXPECT_EQ(FaultWith(MaterialAt + 12, std::bit_cast<uint32_t>(0.5F)),
              "at byte 416: material record: colour 3F000000 isn't a byte divided by 255");
    EXPECT_EQ(FaultWith(IndicesAt + 8, 3),
              "at byte 662: index array: index 3 isn't below the vertex count 3");
    EXPECT_EQ(FaultOf({}), "at byte 0: file header: 12 bytes needed, 0 left");
}

TEST(SceneReader, RejectsColoursThatAreNoBytes) {
    for (const float colour : {-0.0F, -1.0F, 256.0F / 255.0F, 1e30F, 0.1F + 1e-7F,
                               std::numeric_limits<float>::infinity(), std::nanf("")}) {
        for (size_t channel = 0; channel < 4; ++channel) {
            const size_t at = MaterialAt + 12 + channel * 4;
            const std::string fault = FaultWith(at, std::bit_cast<uint32_t>(colour));
            EXPECT_TRUE(fault.starts_with("at byte " + std::to_string(at) + ": ")) << colour << fault;
        }
    }
    Bytes textured;
    AddHeader(textured);
    AddNode(textured, "", 1, 0);
    AddMesh(textured, u"", u"t.png", One);
    EXPECT_EQ(FaultOf(textured), "sound");
    SetWord(textured, MaterialAt + 16, 0);
    EXPECT_EQ(FaultOf(textured), "at byte 420: material record: a material with a texture isn't white");
}

// Flips each bit of each byte, except where any value is valid.
TEST(SceneReader, RejectsEveryWrongByte) {
    const Bytes sound = SmallFile();
    for (size_t at = 0; at < sound.size(); ++at) {
        const bool anyMatrix = at >= RootAt + 260 && at < RootAt + 324;
        const bool anyVertex = at >= VerticesAt && at < ZerosAt;
        // A letter may become any other except NUL, and an index any below 3.
        const bool anyLetter = at >= NameAt && at < PathAt - 2;
        const bool anyIndex = at >= IndicesAt && at % 4 == IndicesAt % 4;
        // The first byte of an empty name may take any value.
        const bool rootName = at == RootAt + 4;
        if (anyMatrix || anyVertex || anyLetter || anyIndex || rootName) {
            continue;
        }
        for (int bit = 0; bit < 8; ++bit) {
            Bytes bytes = sound;
            bytes[at] = static_cast<uint8_t>(bytes[at] ^ (1U << bit));
            StoredScene scene;
            const auto fault = ReadStoredScene(bytes, scene);
            ASSERT_TRUE(fault) << "byte " << at << " bit " << bit;
            EXPECT_LE(fault->Offset, sound.size()) << "byte " << at;
            const bool count =
                (at >= RootAt + 328 && at < RootAt + 336) || (at >= MeshAt + 4 && at < MeshAt + 12);
            const bool length = (at >= MaterialAt + 4 && at < MaterialAt + 8) ||
                                (at >= MaterialAt + 44 && at < MaterialAt + 48);
            if (!count && !length) {
                EXPECT_LE(fault->Offset, at);
                EXPECT_GT(fault->Offset + 4, at) << "reported in another word";
            }
        }
    }
}

TEST(SceneReader, RejectsUnterminatedNodeNames) {
    Bytes bytes;
    AddHeader(bytes);
    AddNode(bytes, std::string(256, 'x'), 0, 0);
    EXPECT_EQ(FaultOf(bytes), "at byte 16: node record: no NUL in the name");
    bytes[RootAt + 4 + 10] = 0;
    EXPECT_EQ(FaultOf(bytes), "at byte 27: node record: byte after the name's NUL is 78, not 00");
}

TEST(SceneReader, RejectsEveryOtherLength) {
    Bytes file = TreeFile();
    ASSERT_EQ(FaultOf(file), "sound");
    ASSERT_EQ(FaultOfStream(file), "sound");
    for (size_t length = 0; length < file.size(); ++length) {
        // A buffer of exact size, so that a sanitizer finds reads past its end.
        const Bytes bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length));
        StoredScene scene;
        const auto fault = ReadStoredScene(bytes, scene);
        ASSERT_TRUE(fault) << length;
        EXPECT_LE(fault->Offset, length);
        EXPECT_NE(FaultOfStream(bytes), "sound") << length;
    }
    file.push_back(0);
    EXPECT_EQ(FaultOfStream(file), "at byte " + std::to_string(file.size() - 1) +
                                       ": end of file: bytes after the last block");
    EXPECT_EQ(FaultOf(file), "at byte " + std::to_string(file.size() - 1) +
                                 ": end of file: 1 byte after the last block");
}

// Allocating for one of these counts would take gigabytes.
TEST(SceneReader, RejectsHugeCounts) {
    for (const uint32_t count : {0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        for (const size_t at :
             {RootAt + 328, RootAt + 332, MeshAt + 4, MeshAt + 8, MaterialAt + 4, MaterialAt + 44}) {
            Bytes bytes = SmallFile();
            SetWord(bytes, at, count);
            EXPECT_TRUE(FaultOf(bytes).starts_with("at byte ")) << at << ": " << FaultOf(bytes);
            EXPECT_TRUE(FaultOfStream(bytes).starts_with("at byte ")) << at;
        }
    }
}

// The rest of the file could contain the children of either node, but not of both.
TEST(SceneReader, AddsUpClaimedChildren) {
    Bytes bytes;
    AddHeader(bytes);
    AddNode(bytes, "", 0, 3);
    AddNode(bytes, "", 0, 2);
    AddNode(bytes, "", 0, 0);
    AddNode(bytes, "", 0, 0);
    EXPECT_EQ(FaultOf(bytes), "at byte 684: node record: child count is 2, above 0, the most that the "
                              "rest of the file can hold");
}

// Each file is either rejected with an offset in the file, or valid and can be summarized; sanitizers
// check the rest. If the size isn't known, the reason may differ, but not the result.
TEST(SceneReader, SurvivesRandomDamage) {
    std::mt19937 random(20240607);
    const Bytes sound = TreeFile();
    for (int round = 0; round < 20000; ++round) {
        Bytes bytes = sound;
        for (auto change = random() % 4 + 1; change > 0; --change) {
            bytes[random() % bytes.size()] = static_cast<uint8_t>(random());
        }
        StoredScene scene;
        const auto fault = ReadStoredScene(bytes, scene);
        ASSERT_EQ(FaultOfStream(bytes) == "sound", !fault) << round;
        if (fault) {
            EXPECT_LE(fault->Offset, bytes.size());
        } else {
            EXPECT_EQ(Summarize(scene).Nodes, 3U);
        }
    }
}

TEST(SceneReader, ReadsFilesLikeBytes) {
    const TempFolder folder;
    const Bytes bytes = TreeFile();
    for (const size_t length : {bytes.size(), bytes.size() - 1, size_t{700}}) {
        const std::string text(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length));
        WriteBytes(folder.Path / "scene.bin", text);
        StoredScene scene;
        StoredScene fromBytes;
        const auto fault = ReadStoredSceneFile(PathText(folder.Path / "scene.bin"), scene);
        const auto faultOfBytes = ReadStoredScene(std::span(bytes).first(length), fromBytes);
        ASSERT_EQ(fault.has_value(), faultOfBytes.has_value());
        EXPECT_EQ(fault ? FaultText(*fault) : u"", faultOfBytes ? FaultText(*faultOfBytes) : u"");
        EXPECT_EQ(scene.Nodes.size(), fromBytes.Nodes.size());
    }
}

// Arrays longer than the blocks in which they are read.
TEST(SceneReader, ReadsLongArrays) {
    Bytes bytes = SmallFile();
    bytes.resize(VerticesAt);
    constexpr uint32_t vertices = 99999;
    constexpr uint32_t triangles = 70000;
    SetWord(bytes, MeshAt + 4, vertices);
    SetWord(bytes, MeshAt + 8, triangles);
    for (uint32_t number = 0; number < vertices * 8; ++number) {
        AddWord(bytes, std::bit_cast<uint32_t>(static_cast<float>(number)));
    }
    const size_t zerosAt = bytes.size();
    AddZeros(bytes, size_t{vertices} * 4);
    const size_t indicesAt = bytes.size();
    for (uint32_t number = 0; number < triangles * 3; ++number) {
        AddWord(bytes, number % vertices);
    }
    StoredScene scene;
    ASSERT_FALSE(ReadStoredScene(bytes, scene));
    const StoredMesh& mesh = scene.Nodes.at(0).Meshes.at(0);
    EXPECT_EQ(mesh.Vertices.size(), vertices);
    EXPECT_EQ(mesh.Vertices.back().V, static_cast<float>(vertices * 8 - 1));
    EXPECT_EQ(mesh.Indices.size(), triangles * 3U);
    EXPECT_EQ(mesh.Indices.back(), (triangles * 3 - 1) % vertices);
    bytes[indicesAt - 1] = 1;
    EXPECT_TRUE(FaultOf(bytes).starts_with("at byte " + std::to_string(indicesAt - 1) + ": zero array"));
    bytes[indicesAt - 1] = 0;
    SetWord(bytes, bytes.size() - 4, vertices);
    EXPECT_TRUE(
        FaultOf(bytes).starts_with("at byte " + std::to_string(bytes.size() - 4) + ": index array"));
    bytes.resize(zerosAt + 5);
    EXPECT_EQ(FaultOf(bytes),
              "at byte " + std::to_string(zerosAt) + ": zero array: 399996 bytes needed, 5 left");
}

TEST(SceneReader, ReportsUnreadableFiles) {
    StoredScene scene;
    auto fault = ReadStoredSceneFile(u"no-such-directory/scene.bin", scene);
    ASSERT_TRUE(fault);
    EXPECT_EQ(FaultText(*fault), u"at byte 0: the file can't be opened (No such file or directory)");
    EXPECT_TRUE(ReadStoredSceneFile(u".", scene)) << "a directory";
}

} // namespace
