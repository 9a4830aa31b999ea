// Reads models in glTF 2. Right-handed, Y up, metres; v points down from the picture's upper edge.
#include "provider/gltf/GltfModel.h"

#include "provider/gltf/GltfNodes.h"
#include "provider/gltf/GltfPrimitives.h"

bool ReadGltfModel(const GltfParts& parts, JsonTape json, const std::u16string& directory, Model& model,
                   std::string& error) {
    GltfDocument document;
    std::vector<GltfSurface> surfaces;
    ImportedTree tree;
    if (!ReadGltfDocument(parts, json, directory, document, error) ||
        !ReadGltfMaterials(document, json, directory, model, surfaces, error) ||
        !ReadGltfNodes(document, json, tree, error)) {
        return false;
    }
    json = {}; // its memory is as large as the model of a document of many nodes
    for (const GltfMesh& mesh : document.Records.Meshes) {
        tree.MeshNames.push_back(mesh.Name);
    }
    PrimitiveReading reading = {document, surfaces, model, error};
    tree.AddFaces = [&](uint32_t mesh) {
        return AddMeshFaces(reading, mesh);
    };
    ReserveFaces(document, model);
    return PlaceNodes(tree, model, error);
}
