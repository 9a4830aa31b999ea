// Reads models in glTF 2. Right-handed, Y up, metres; v points down from the picture's upper edge.
#include "provider/gltf/GltfModel.h"

#include "provider/gltf/GltfMaterials.h"
#include "provider/gltf/meshes/GltfPrimitives.h"
#include "provider/gltf/nodes/GltfShapes.h"

bool ReadGltfModel(const GltfParts& parts, JsonTape json, const std::u16string& directory, Model& model,
                   std::string& error) {
    GltfDocument document;
    std::vector<GltfSurface> surfaces;
    GltfNodes nodes;
    if (!ReadGltfDocument(parts, json, directory, document, error) ||
        !ReadGltfMaterials(document, json, directory, model, surfaces, error) ||
        !ReadGltfNodes(document, json, nodes, model.Remarks, error)) {
        return false;
    }
    json = {}; // its memory is as large as the model of a document of many nodes
    const std::vector<GltfShape> shapes = ShapeNodes(document, nodes, model.Remarks);
    const std::vector<GltfMesh>& meshes = document.Records.Meshes;
    ImportedTree& tree = nodes.Tree;
    for (const GltfMesh& mesh : meshes) {
        tree.MeshNames.push_back(mesh.Name);
    }
    for (const GltfShape& shape : shapes) {
        tree.MeshNames.push_back(meshes[shape.Mesh].Name);
    }
    PrimitiveReading reading = {document, surfaces, model, error, {}, {}};
    tree.AddFaces = [&](uint32_t mesh) {
        if (mesh < meshes.size()) {
            return AddMeshFaces(reading, mesh, {meshes[mesh].Weights, {}});
        }
        const GltfShape& shape = shapes[mesh - meshes.size()];
        return AddMeshFaces(reading, shape.Mesh, shape.Pose);
    };
    ReserveFaces(document, model);
    if (!PlaceNodes(tree, model, error)) {
        return false;
    }
    model.SinglePositions.Shrink();
    model.SingleNormals.Shrink();
    model.SingleCoordinates.Shrink();
    model.Indices.Shrink();
    return true;
}
