// Writes models as binary glTF with the given number of triangles. The town has districts of blocks of
// houses, each block a mesh with one primitive per material. The last fifth of the blocks reuse the mesh
// of the first one. Each fifth material has an embedded PNG picture. Its triangles are loose, each with
// its own three vertices, or indexed: equal vertices of a primitive are one. The ground is one indexed
// mesh, a hilly square, in the town's first material.
#include "City.h"
#include "provider/model/ModelPicture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr uint64_t QuadsPerBlock = 15'200; // fifty houses
constexpr size_t BlocksPerDistrict = 8;
constexpr uint32_t TexturedEvery = 5;
constexpr uint32_t PictureSide = 64; // pixels
constexpr uint32_t GlbMagic = 0x46546C67;
constexpr uint32_t JsonChunk = 0x4E4F534A;
constexpr uint32_t BinaryChunk = 0x004E4942;

struct Primitive {
    std::vector<float> Vertices; // eight per vertex: position, normal, coordinates
    std::vector<uint32_t> Indices;
    float Min[3] = {1e30f, 1e30f, 1e30f};
    float Max[3] = {-1e30f, -1e30f, -1e30f};
};

enum class Form { Loose, Indexed, Ground };

struct Town {
    Form Vertices = Form::Loose;
    std::string Meshes;
    std::string Accessors;
    std::string Views;
    std::vector<char> Binary;
    size_t ViewCount = 0;
    size_t AccessorCount = 0;
};

using VertexFloats = std::array<float, 8>;

// The vertices of a primitive so far, by their floats.
using VertexNumbers = std::map<VertexFloats, uint32_t>;

VertexFloats FloatsOf(const Quad& quad, size_t corner) {
    // Y up, as in glTF.
    const Point& p = quad.Corners[corner];
    const Point& n = quad.Normal;
    const auto& uv = quad.Coordinates[corner];
    return {static_cast<float>(p[0]),  static_cast<float>(p[2]),       static_cast<float>(-p[1]),
            static_cast<float>(n[0]),  static_cast<float>(n[2]),       static_cast<float>(-n[1]),
            static_cast<float>(uv[0]), static_cast<float>(1.0 - uv[1])};
}

uint32_t AddVertex(Primitive& primitive, const VertexFloats& vertex) {
    for (size_t axis = 0; axis < 3; ++axis) {
        primitive.Min[axis] = std::min(primitive.Min[axis], vertex[axis]);
        primitive.Max[axis] = std::max(primitive.Max[axis], vertex[axis]);
    }
    primitive.Vertices.insert(primitive.Vertices.end(), vertex.begin(), vertex.end());
    return static_cast<uint32_t>(primitive.Vertices.size() / vertex.size()) - 1;
}

void AddQuad(Primitive& primitive, const Quad& quad, VertexNumbers* numbers) {
    for (const size_t corner : {0u, 1u, 2u, 0u, 2u, 3u}) {
        const VertexFloats vertex = FloatsOf(quad, corner);
        if (numbers == nullptr) {
            primitive.Indices.push_back(AddVertex(primitive, vertex));
            continue;
        }
        const auto [place, isNew] = numbers->try_emplace(vertex);
        if (isNew) {
            place->second = AddVertex(primitive, vertex);
        }
        primitive.Indices.push_back(place->second);
    }
}

// A square of so many quads, each of two triangles.
Primitive MakeGround(uint64_t quadCount) {
    const auto side = static_cast<uint32_t>(std::sqrt(static_cast<double>(quadCount)));
    Primitive ground;
    for (uint32_t row = 0; row <= side; ++row) {
        for (uint32_t column = 0; column <= side; ++column) {
            const auto x = static_cast<float>(column);
            const auto z = static_cast<float>(row);
            const float slope = 0.3f * std::cos(0.1f * x);
            const float length = std::sqrt(1 + slope * slope);
            AddVertex(ground, {x, 3 * std::sin(0.1f * x), z, -slope / length, 1 / length, 0, 0.25f * x,
                               0.25f * z});
        }
    }
    for (uint32_t row = 0; row < side; ++row) {
        for (uint32_t column = 0; column < side; ++column) {
            const uint32_t first = row * (side + 1) + column;
            const uint32_t next = first + side + 1;
            ground.Indices.insert(ground.Indices.end(),
                                  {first, next, next + 1, first, next + 1, first + 1});
        }
    }
    return ground;
}

void Separate(std::string& list) {
    if (!list.empty()) {
        list += ",";
    }
}

// Strides and targets of 0 are left out.
template <class Element>
void AddView(Town& town, const std::vector<Element>& elements, int stride, int target) {
    const size_t offset = town.Binary.size();
    const char* bytes = reinterpret_cast<const char*>(elements.data());
    town.Binary.insert(town.Binary.end(), bytes, bytes + elements.size() * sizeof(Element));
    Separate(town.Views);
    town.Views += R"({"buffer":0,"byteOffset":)" + std::to_string(offset) + R"(,"byteLength":)" +
                  std::to_string(town.Binary.size() - offset) +
                  (stride != 0 ? R"(,"byteStride":)" + std::to_string(stride) : std::string()) +
                  (target != 0 ? R"(,"target":)" + std::to_string(target) : std::string()) + "}";
    ++town.ViewCount;
}

std::string Triple(const float values[3]) {
    char text[64];
    std::snprintf(text, sizeof text, "[%.9g,%.9g,%.9g]", static_cast<double>(values[0]),
                  static_cast<double>(values[1]), static_cast<double>(values[2]));
    return text;
}

size_t AddAccessor(Town& town, size_t offset, int componentType, size_t count, const char* type,
                   const std::string& more = {}) {
    Separate(town.Accessors);
    town.Accessors += R"({"bufferView":)" + std::to_string(town.ViewCount - 1) + R"(,"byteOffset":)" +
                      std::to_string(offset) + R"(,"componentType":)" + std::to_string(componentType) +
                      R"(,"count":)" + std::to_string(count) + R"(,"type":")" + type + "\"" + more + "}";
    return town.AccessorCount++;
}

void AddMesh(Town& town, uint64_t firstQuad, uint64_t count) {
    constexpr int floats = 5126;
    constexpr int unsigned32 = 5125;
    std::map<uint32_t, Primitive> primitives;
    std::map<uint32_t, VertexNumbers> numbers;
    if (town.Vertices == Form::Ground) {
        primitives[0] = MakeGround(count);
        count = 0;
    }
    for (uint64_t i = 0; i < count; ++i) {
        const Quad quad = CityQuad(firstQuad + i);
        AddQuad(primitives[quad.Material], quad,
                town.Vertices == Form::Indexed ? &numbers[quad.Material] : nullptr);
    }
    std::string list;
    for (const auto& [material, primitive] : primitives) {
        const size_t vertexCount = primitive.Vertices.size() / 8;
        AddView(town, primitive.Vertices, 32, 34962);
        const std::string bounds =
            ",\"min\":" + Triple(primitive.Min) + ",\"max\":" + Triple(primitive.Max);
        const size_t position = AddAccessor(town, 0, floats, vertexCount, "VEC3", bounds);
        const size_t normal = AddAccessor(town, 12, floats, vertexCount, "VEC3");
        const size_t coordinates = AddAccessor(town, 24, floats, vertexCount, "VEC2");
        AddView(town, primitive.Indices, 0, 34963);
        const size_t indices = AddAccessor(town, 0, unsigned32, primitive.Indices.size(), "SCALAR");
        Separate(list);
        list += R"({"attributes":{"POSITION":)" + std::to_string(position) + R"(,"NORMAL":)" +
                std::to_string(normal) + R"(,"TEXCOORD_0":)" + std::to_string(coordinates) +
                R"(},"indices":)" + std::to_string(indices) + R"(,"material":)" +
                std::to_string(material) + "}";
    }
    Separate(town.Meshes);
    town.Meshes += R"({"primitives":[)" + list + "]}";
}

std::string MaterialList() {
    std::string list;
    for (uint32_t i = 0; i < MaterialCount; ++i) {
        Separate(list);
        const std::string picture = i % TexturedEvery != 0 ? ""
                                                           : R"(,"baseColorTexture":{"index":)" +
                                                                 std::to_string(i / TexturedEvery) + "}";
        char text[200];
        std::snprintf(
            text, sizeof text,
            R"({"name":"m%u","pbrMetallicRoughness":{"baseColorFactor":[%.3f,%.3f,%.3f,1]%s}})", i,
            Scatter(i, 5) % 100 * 0.01, Scatter(i, 6) % 100 * 0.01, Scatter(i, 7) % 100 * 0.01,
            picture.c_str());
        list += text;
    }
    return list;
}

// The pictures of the textured materials: bricks in random shades. Must be added last, because their
// sizes are not multiples of four.
std::string ImageList(Town& town) {
    constexpr uint32_t brick = 8; // pixels
    std::string list;
    for (uint32_t i = 0; i < MaterialCount; i += TexturedEvery) {
        std::vector<uint8_t> texels;
        for (uint32_t pixel = 0; pixel < PictureSide * PictureSide; ++pixel) {
            const uint32_t x = pixel % PictureSide / brick;
            const uint32_t y = pixel / PictureSide / brick;
            const auto shade = static_cast<uint8_t>(128 + Scatter(y * PictureSide + x, 8 + i) % 128);
            texels.insert(texels.end(), {shade, shade, shade, 255});
        }
        ModelPicture picture;
        std::vector<uint8_t> png;
        std::string reason;
        if (!MakePicture(PictureSide, PictureSide, texels, picture, reason) ||
            !EncodePng(picture, png, reason)) {
            std::abort();
        }
        AddView(town, png, 0, 0);
        Separate(list);
        list += R"({"mimeType":"image/png","bufferView":)" + std::to_string(town.ViewCount - 1) + "}";
    }
    return list;
}

std::string TextureList() {
    std::string list;
    for (uint32_t i = 0; i * TexturedEvery < MaterialCount; ++i) {
        Separate(list);
        list += R"({"source":)" + std::to_string(i) + "}";
    }
    return list;
}

bool Put(std::FILE* file, const void* bytes, size_t size) {
    return std::fwrite(bytes, 1, size, file) == size;
}

} // namespace

int main(int argc, char** argv) {
    const std::string_view form = argc == 4 ? argv[1] : "";
    if (form != "loose" && form != "indexed" && form != "ground") {
        std::fprintf(stderr, "Usage: make-town loose|indexed|ground <triangles> <file.glb>\n");
        return 1;
    }
    const uint64_t quadCount = std::strtoull(argv[2], nullptr, 10) / 2;
    Town town;
    town.Vertices = form == "loose" ? Form::Loose : form == "indexed" ? Form::Indexed : Form::Ground;
    const uint64_t quadsPerMesh = town.Vertices == Form::Ground ? quadCount : QuadsPerBlock;
    std::string nodes;
    std::string districts; // node numbers, as in blocks
    std::string blocks;
    size_t meshCount = 0;
    size_t nodeCount = 0;
    const auto addDistrict = [&] {
        nodes += R"(,{"translation":[0,0,1],"children":[)" + blocks + "]}";
        Separate(districts);
        districts += std::to_string(nodeCount++);
        blocks.clear();
    };
    size_t blockCount = 0;
    for (uint64_t done = 0; done < quadCount;) {
        const uint64_t count = std::min(quadsPerMesh, quadCount - done);
        const bool repeats = count == QuadsPerBlock && done >= quadCount / 5 * 4;
        if (!repeats) {
            AddMesh(town, done, count);
            ++meshCount;
        }
        Separate(nodes);
        Separate(blocks);
        char text[96];
        std::snprintf(text, sizeof text, R"({"mesh":%zu,"translation":[%s,0,0]})",
                      repeats ? size_t{0} : meshCount - 1,
                      repeats ? std::to_string(5000 * (blockCount + 1)).c_str() : "0");
        nodes += text;
        blocks += std::to_string(nodeCount++);
        done += count;
        if (++blockCount % BlocksPerDistrict == 0 || done >= quadCount) {
            addDistrict();
        }
    }
    nodes += R"(,{"name":"town","children":[)" + districts + "]}";
    const std::string images = ImageList(town);
    std::string json = R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[)" +
                       std::to_string(nodeCount) + R"(]}],"nodes":[)" + nodes + R"(],"meshes":[)" +
                       town.Meshes + R"(],"materials":[)" + MaterialList() + R"(],"textures":[)" +
                       TextureList() + R"(],"images":[)" + images + R"(],"accessors":[)" +
                       town.Accessors + R"(],"bufferViews":[)" + town.Views +
                       R"(],"buffers":[{"byteLength":)" + std::to_string(town.Binary.size()) + "}]}";
    json.resize((json.size() + 3) / 4 * 4, ' ');
    town.Binary.resize((town.Binary.size() + 3) / 4 * 4);
    const auto jsonSize = static_cast<uint32_t>(json.size());
    const auto binarySize = static_cast<uint32_t>(town.Binary.size());
    const uint32_t header[5] = {GlbMagic, 2, 28 + jsonSize + binarySize, jsonSize, JsonChunk};
    const uint32_t binaryHeader[2] = {binarySize, BinaryChunk};
    std::FILE* file = std::fopen(argv[3], "wb");
    const bool written = file != nullptr && Put(file, header, sizeof header) &&
                         Put(file, json.data(), json.size()) &&
                         Put(file, binaryHeader, sizeof binaryHeader) &&
                         Put(file, town.Binary.data(), town.Binary.size()) && std::fclose(file) == 0;
    if (!written) {
        std::perror(argv[3]);
    }
    return written ? 0 : 1;
}
