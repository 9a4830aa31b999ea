// Polygon batching: polygons of one material become one batch of triangles.
#include "mesh/ImportGeometry.h"

#include "mesh/AddMeshes.h"
#include "mesh/WeldVertices.h"
#include "reader/Faces.h"
#include "reader/Images.h"

#include <algorithm>

// Appends the polygon as a fan around its first vertex; fewer than three vertices append nothing.
static void AppendTriangles(const SourcePolygon& polygon, VertexPool& pool,
                            std::vector<uint32_t>& indices) {
    const auto append = [&](const Vertex& vertex) {
        pool.Welded = false;
        pool.Vertices.push_back(vertex);
        indices.push_back(static_cast<uint32_t>(pool.Vertices.size() - 1));
    };
    for (size_t i = 0; i + 2 < polygon.Vertices.size(); ++i) {
        append(polygon.Vertices[0]);
        append(polygon.Vertices[i + 1]);
        append(polygon.Vertices[i + 2]);
    }
}

void AddPolygons(SceneNode& node, PolygonList& polygons) {
    std::vector<SourcePolygon*>& list = polygons.Elements;
    std::ranges::stable_sort(list, {}, &SourcePolygon::MaterialIndex);
    for (size_t i = 0; i < list.size();) {
        const int32_t materialIndex = list[i]->MaterialIndex;
        VertexPool pool;
        std::vector<uint32_t> indices;
        for (; i < list.size() && list[i]->MaterialIndex == materialIndex; ++i) {
            AppendTriangles(*list[i], pool, indices);
        }
        WeldVertices(pool, indices, WeldTolerance);
        AddMeshes(node, indices, pool, materialIndex);
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
