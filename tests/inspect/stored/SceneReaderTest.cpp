// The scene file reader with files built byte by byte: it reads valid files exactly, and rejects wrong,
// missing and additional bytes.
#include "inspect/stored/SceneReader.h"
#include "inspect/report/SceneDiff.h"
#include "inspect/report/SceneSummary.h"

#include "inspect/InspectTesting.h"

#include <bit>
#include <cmath>
#include <limits>
#include <sstream>

namespace {

// Offsets in the file of SmallScene.
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

std::string FaultWith(size_t at, uint32_t word) {
    Bytes bytes = BytesOf(SmallScene());
    SetWord(bytes, at, word);
    return FaultOf(bytes);
}

void ExpectReading(const StoredScene& scene) {
    StoredScene read;
    const auto fault = ReadStoredScene(BytesOf(scene), read);
    ASSERT_FALSE(fault) << Utf8FromUtf16(FaultText(*fault));
    const SceneDifferences differences = CompareScenes(scene, read);
    EXPECT_EQ(differences.Count, 0U) << Utf8FromUtf16(differences.First);
    for (size_t node = 0; node < scene.Nodes.size(); ++node) {
        EXPECT_EQ(read.Nodes[node].Parent, scene.Nodes[node].Parent);
    }
}

TEST(SceneReader, ReadsWhatTheBytesSay) {
    ExpectReading(SmallScene());
    StoredScene tree = SmallTree();
    tree.Nodes[0].Children.push_back(3);
    tree.Nodes.push_back(Node(std::string(255, 'n'), {}, 0));
    StoredMesh empty;
    empty.Material.Name = u"\x03B1\xD83D\xDE00";
    for (int step = 0; step < 256; ++step) {
        const float grey = static_cast<float>(step) / 255.0F;
        empty.Material.Colour = {grey, grey, grey, grey};
        tree.Nodes[3].Meshes.push_back(empty);
    }
    ExpectReading(tree);
}

// Each line of the file: the offset of a word in the small file, its value, and the fault.
TEST(SceneReader, ReportsOffsetAndReason) {
    std::istringstream lines(ExpectedText("faults.txt"));
    size_t count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        std::istringstream fields(line);
        size_t at = 0;
        uint32_t word = 0;
        std::string fault;
        fields >> at >> std::hex >> word;
        std::getline(fields >> std::ws, fault);
        EXPECT_EQ(FaultWith(at, word), fault) << line;
    }
    EXPECT_GT(count, 18U);
    EXPECT_EQ(FaultOf({}), "at byte 0: file header: 12 bytes needed, 0 left");
    EXPECT_EQ(FaultOf(BytesOf({{Node(std::string(256, 'x'), {})}})),
              "at byte 16: node record: no NUL in the name");
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
    for (size_t channel = 0; channel < 3; ++channel) {
        StoredMesh textured = TriangleMesh(u"", u"t.png", {1, 1, 1, 1});
        textured.Material.Colour[channel] = 0;
        EXPECT_EQ(FaultOf(BytesOf(SceneWith({textured}))),
                  "at byte " + std::to_string(MaterialAt + 12 + channel * 4) +
                      ": material record: a material with a texture isn't white");
    }
}

// Flips each bit of each byte, except where any value is valid. Allocating for a count with a wrong
// upper bit would take gigabytes.
TEST(SceneReader, RejectsEveryWrongByte) {
    const Bytes sound = BytesOf(SmallScene());
    ASSERT_EQ(sound.size(), 666U);
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
            EXPECT_NE(FaultOfStream(bytes), "sound");
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

TEST(SceneReader, RejectsEveryOtherLength) {
    Bytes file = BytesOf(SmallTree());
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
    const std::string end = "at byte " + std::to_string(file.size()) + ": end of file: ";
    file.push_back(0);
    EXPECT_EQ(FaultOfStream(file), end + "bytes after the last block");
    EXPECT_EQ(FaultOf(file), end + "1 byte after the last block");
}

// The rest of the file could contain the children of either node, but not of both.
TEST(SceneReader, AddsUpClaimedChildren) {
    StoredScene scene = Chain(4);
    scene.Nodes[0].Children.resize(3);
    scene.Nodes[1].Children.resize(2);
    EXPECT_EQ(FaultOf(BytesOf(scene)), "at byte 684: node record: child count is 2, above 0, the most "
                                       "that the rest of the file can hold");
}

// Arrays longer than the blocks in which they are read.
TEST(SceneReader, ReadsLongArrays) {
    constexpr uint32_t vertices = 99999;
    constexpr uint32_t indices = 210000;
    StoredScene scene = SmallScene();
    StoredMesh& mesh = scene.Nodes[0].Meshes[0];
    mesh.Indices.clear();
    for (uint32_t number = 0; number < indices; ++number) {
        mesh.Indices.push_back(number % vertices);
        mesh.Vertices.resize(vertices);
        mesh.Vertices[number % vertices].V = static_cast<float>(number);
    }
    ExpectReading(scene);
    Bytes bytes = BytesOf(scene);
    const size_t indicesAt = bytes.size() - size_t{4} * indices;
    const size_t zerosAt = indicesAt - size_t{4} * vertices;
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

} // namespace
