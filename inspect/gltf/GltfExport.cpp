// Builds a glTF model of the scene and writes it through tinygltf.
#include "inspect/gltf/GltfExport.h"

#include "inspect/gltf/GltfMesh.h"
#include "inspect/stored/Wording.h"

#include "platform/Files.h"
#include "platform/Platform.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <sstream>
#include <tiny_gltf.h>

namespace {

// Bytes: the format keeps all lengths in 32 bits.
constexpr uint64_t LargestFile = UINT32_MAX;
// Bytes: every buffer view begins at a multiple of this.
constexpr size_t Alignment = 4;

struct Export {
    TextureShelf& Textures;
    tinygltf::Model Model;
    std::map<MaterialKey, int> Materials;
    std::map<std::u16string, int> TexturesByName;
    uint64_t TrianglesLeftOut = 0;
};

template <typename List> int LastOf(const List& list) {
    return static_cast<int>(list.size()) - 1;
}

// Linear light of a screen value (sRGB), 0 to 1.
double LinearLight(float value) {
    const auto screen = static_cast<double>(value);
    return screen <= 0.04045 ? screen / 12.92 : std::pow((screen + 0.055) / 1.055, 2.4);
}

int AddView(Export& gltf, const void* data, size_t size, size_t stride, int target) {
    std::vector<unsigned char>& buffer = gltf.Model.buffers.at(0).data;
    buffer.resize((buffer.size() + Alignment - 1) / Alignment * Alignment);
    tinygltf::BufferView view;
    view.buffer = 0;
    view.byteOffset = buffer.size();
    view.byteLength = size;
    view.byteStride = stride;
    view.target = target;
    const auto* const bytes = static_cast<const unsigned char*>(data);
    buffer.insert(buffer.end(), bytes, bytes + size);
    gltf.Model.bufferViews.push_back(std::move(view));
    return LastOf(gltf.Model.bufferViews);
}

tinygltf::Accessor& AddAccessor(Export& gltf, int view, size_t offset, size_t count, int component,
                                int type) {
    tinygltf::Accessor accessor;
    accessor.bufferView = view;
    accessor.byteOffset = offset;
    accessor.count = count;
    accessor.componentType = component;
    accessor.type = type;
    gltf.Model.accessors.push_back(std::move(accessor));
    return gltf.Model.accessors.back();
}

// Returns -1 without a picture.
int TextureFor(Export& gltf, const std::u16string& path, const Texture* picture) {
    if (picture == nullptr) {
        return -1;
    }
    const std::u16string name = LastComponent(path);
    const auto [place, isNew] = gltf.TexturesByName.try_emplace(name, gltf.Model.textures.size());
    if (isNew) {
        tinygltf::Image image;
        image.name = Utf8FromUtf16(name);
        image.mimeType = picture->MimeType;
        image.bufferView = AddView(gltf, picture->FileBytes.data(), picture->FileBytes.size(), 0, 0);
        gltf.Model.images.push_back(std::move(image));
        if (gltf.Model.samplers.empty()) {
            tinygltf::Sampler sampler;
            sampler.magFilter = TINYGLTF_TEXTURE_FILTER_LINEAR;
            sampler.minFilter = TINYGLTF_TEXTURE_FILTER_LINEAR_MIPMAP_LINEAR;
            gltf.Model.samplers.push_back(std::move(sampler));
        }
        tinygltf::Texture texture;
        texture.source = LastOf(gltf.Model.images);
        texture.sampler = 0;
        gltf.Model.textures.push_back(std::move(texture));
    }
    return place->second;
}

int MaterialFor(Export& gltf, const StoredMaterial& stored) {
    const auto [place, isNew] = gltf.Materials.try_emplace(KeyOf(stored), gltf.Model.materials.size());
    if (isNew) {
        const Texture* const picture = FindTexture(gltf.Textures, stored.TexturePath);
        tinygltf::Material material;
        material.name = Utf8FromUtf16(stored.Name);
        tinygltf::PbrMetallicRoughness& surface = material.pbrMetallicRoughness;
        surface.metallicFactor = 0.0;
        surface.baseColorFactor = {LinearLight(stored.Colour[0]), LinearLight(stored.Colour[1]),
                                   LinearLight(stored.Colour[2]), static_cast<double>(stored.Colour[3])};
        surface.baseColorTexture.index = TextureFor(gltf, stored.TexturePath, picture);
        if (stored.Colour[3] < 1.0F || (picture != nullptr && !picture->IsOpaque)) {
            material.alphaMode = "BLEND";
        }
        gltf.Model.materials.push_back(std::move(material));
    }
    return place->second;
}

void SetBounds(const GltfMesh& mesh, tinygltf::Accessor& positions) {
    const auto& first = mesh.Vertices.front().Position;
    std::array<float, 3> minimum = first;
    std::array<float, 3> maximum = first;
    for (const StoredVertex& vertex : mesh.Vertices) {
        for (size_t axis = 0; axis < 3; ++axis) {
            minimum[axis] = std::min(minimum[axis], vertex.Position[axis]);
            maximum[axis] = std::max(maximum[axis], vertex.Position[axis]);
        }
    }
    positions.minValues.assign(minimum.begin(), minimum.end());
    positions.maxValues.assign(maximum.begin(), maximum.end());
}

tinygltf::Primitive MakePrimitive(Export& gltf, const GltfMesh& mesh, const StoredMaterial& material) {
    const auto addVertexField = [&](int view, size_t offset, int type) -> tinygltf::Accessor& {
        return AddAccessor(gltf, view, offset, mesh.Vertices.size(), TINYGLTF_COMPONENT_TYPE_FLOAT,
                           type);
    };
    tinygltf::Primitive primitive;
    primitive.mode = TINYGLTF_MODE_TRIANGLES;
    primitive.material = MaterialFor(gltf, material);
    const int vertices = AddView(gltf, mesh.Vertices.data(), mesh.Vertices.size() * sizeof(StoredVertex),
                                 sizeof(StoredVertex), TINYGLTF_TARGET_ARRAY_BUFFER);
    SetBounds(mesh, addVertexField(vertices, offsetof(StoredVertex, Position), TINYGLTF_TYPE_VEC3));
    primitive.attributes["POSITION"] = LastOf(gltf.Model.accessors);
    addVertexField(vertices, offsetof(StoredVertex, Normal), TINYGLTF_TYPE_VEC3);
    primitive.attributes["NORMAL"] = LastOf(gltf.Model.accessors);
    // Without a texture, coordinates would only burden other programs.
    if (gltf.Model.materials[static_cast<size_t>(primitive.material)]
            .pbrMetallicRoughness.baseColorTexture.index >= 0) {
        addVertexField(vertices, offsetof(StoredVertex, U), TINYGLTF_TYPE_VEC2);
        primitive.attributes["TEXCOORD_0"] = LastOf(gltf.Model.accessors);
    }
    const int indices = AddView(gltf, mesh.Indices.data(), mesh.Indices.size() * sizeof(uint32_t), 0,
                                TINYGLTF_TARGET_ELEMENT_ARRAY_BUFFER);
    AddAccessor(gltf, indices, 0, mesh.Indices.size(), TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT,
                TINYGLTF_TYPE_SCALAR);
    primitive.indices = LastOf(gltf.Model.accessors);
    return primitive;
}

void AddNode(Export& gltf, const StoredNode& stored) {
    tinygltf::Node node;
    tinygltf::Mesh mesh;
    for (const StoredMesh& part : stored.Meshes) {
        const GltfMesh fitPart = MakeGltfMesh(part);
        gltf.TrianglesLeftOut += fitPart.TrianglesLeftOut;
        if (!fitPart.Indices.empty()) {
            mesh.primitives.push_back(MakePrimitive(gltf, fitPart, part.Material));
        }
    }
    node.name = Utf8FromUtf16(NodeNameText(stored.Name));
    node.children.assign(stored.Children.begin(), stored.Children.end());
    if (!mesh.primitives.empty()) {
        gltf.Model.meshes.push_back(std::move(mesh));
        node.mesh = LastOf(gltf.Model.meshes);
    } else if (node.name.empty() && node.children.empty()) {
        // tinygltf writes a node without members as null.
        node.name = "node " + std::to_string(gltf.Model.nodes.size());
    }
    gltf.Model.nodes.push_back(std::move(node));
}

bool IsTooLarge(const Export& gltf) {
    return gltf.Model.buffers.at(0).data.size() >= LargestFile;
}

std::string Write(tinygltf::Model& model) {
    if (model.buffers.at(0).data.empty()) {
        model.buffers.clear();
    }
    tinygltf::TinyGLTF writer;
    std::ostringstream stream(std::ios::binary);
    stream.exceptions(
        std::ios::badbit); // lets std::bad_alloc pass, which is not a matter of the file's size
    const bool written = writer.WriteGltfSceneToStream(&model, stream, false, true);
    std::string bytes = std::move(stream).str();
    return written && bytes.size() <= LargestFile ? bytes : std::string();
}

} // namespace

GltfFile ExportGltf(const StoredScene& scene, TextureShelf& textures) {
    Export gltf{textures, {}, {}, {}, 0};
    gltf.Model.asset.version = "2.0";
    gltf.Model.asset.generator = "scene-inspect";
    gltf.Model.buffers.emplace_back();
    for (const StoredNode& node : scene.Nodes) {
        AddNode(gltf, node);
        if (IsTooLarge(gltf)) {
            return {};
        }
    }
    gltf.Model.scenes.emplace_back().nodes = {0};
    gltf.Model.defaultScene = 0;
    return {Write(gltf.Model), gltf.TrianglesLeftOut};
}
