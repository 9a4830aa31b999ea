// Polygon batching: welds and splits the triangles of each material as one batch.
#include "mesh/AddPolygons.h"

#include "mesh/AddMeshes.h"
#include "mesh/WeldVertices.h"

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
