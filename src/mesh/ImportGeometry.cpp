// Polygon batching: polygons of one material become one batch of triangles.
#include "mesh/ImportGeometry.h"

#include "mesh/AddMeshes.h"
#include "mesh/WeldVertices.h"
#include "reader/Faces.h"
#include "reader/Images.h"

#include <numeric>

void AddPolygons(SceneNode& node, PolygonList& polygons) {
    while (!polygons.empty()) {
        const auto first = polygons.begin();
        const int32_t materialIndex = first->first;
        VertexPool pool = std::move(first->second);
        polygons.erase(first);
        std::vector<uint32_t> indices(pool.Vertices.size());
        std::iota(indices.begin(), indices.end(), 0u);
        WeldVertices(pool, indices, WeldTolerance);
        AddMeshes(node, std::move(indices), std::move(pool), materialIndex);
    }
}

void ImportGeometry(ModelImporter& importer, EntitiesHandle entities, SceneNode& node,
                    int32_t inheritedIndex) {
    if (importer.ImportStatus != StatusOk) {
        return;
    }
    PolygonList polygons;
    ImportImages(importer, entities, polygons);
    ImportFaces(importer, entities, polygons, inheritedIndex);
    AddPolygons(node, polygons);
}
