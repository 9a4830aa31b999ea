// Appends the meshes to the lists of their materials.
#include "inspect/page/PageScene.h"

#include "inspect/gltf/GltfMesh.h"

#include <map>

namespace {

PageMaterial NewMaterial(const StoredMaterial& stored, TextureShelf& textures) {
    PageMaterial material;
    material.UsesPicture = !stored.TexturePath.empty();
    material.Picture = FindTexture(textures, stored.TexturePath);
    material.IsMissing = material.UsesPicture && material.Picture == nullptr;
    return material;
}

void Append(const GltfMesh& mesh, PageMaterial& material) {
    const auto first = static_cast<uint32_t>(material.Vertices.size());
    material.Vertices.insert(material.Vertices.end(), mesh.Vertices.begin(), mesh.Vertices.end());
    for (const uint32_t index : mesh.Indices) {
        material.Indices.push_back(first + index);
    }
}

} // namespace

PageScene MakePageScene(const StoredScene& scene, TextureShelf& textures) {
    PageScene page;
    std::map<MaterialKey, uint32_t> places;
    for (size_t node = 0; node < scene.Nodes.size(); ++node) {
        for (const StoredMesh& stored : scene.Nodes[node].Meshes) {
            const auto [place, isNew] =
                places.try_emplace(KeyOf(stored.Material), static_cast<uint32_t>(page.Materials.size()));
            if (isNew) {
                page.Materials.push_back(NewMaterial(stored.Material, textures));
            }
            const GltfMesh mesh = MakeGltfMesh(stored);
            Append(mesh, page.Materials[place->second]);
            page.Meshes.push_back({static_cast<uint32_t>(node), place->second, stored.Vertices.size(),
                                   stored.Indices.size() / 3, mesh.Indices.size() / 3});
        }
    }
    return page;
}
