// Polygon batching: welds and splits the triangles of each material as one batch.
#include "mesh/AddPolygons.h"

#include "mesh/AddMeshes.h"

// The most memory of empty pools that is kept. [Units: bytes]
constexpr size_t SpareMemory = size_t{1} << 23;

namespace {

// Keeps the memory of a pool for the next list, unless there is enough.
void KeepPool(PolygonList& polygons, VertexPool pool) {
    if (pool.MemoryBytes() <= SpareMemory - polygons.SpareBytes) {
        pool.Vertices.Clear();
        pool.Corners.Clear();
        polygons.SpareBytes += pool.MemoryBytes();
        polygons.Spare.push_back(std::move(pool));
    }
}

} // namespace

void AddPolygons(SceneNode& node, PolygonList& polygons, WeldScratch& scratch, MeshMemory& memory) {
    while (!polygons.Pools.empty()) {
        const auto first = polygons.Pools.begin();
        const int32_t materialIndex = first->first;
        VertexPool pool = std::move(first->second);
        polygons.Pools.erase(first);
        WeldVertices(pool, scratch, WeldTolerance);
        AddMeshes(node, pool, materialIndex, memory);
        KeepPool(polygons, std::move(pool));
    }
}
