// Reads faces as triangles.
#include "reader/Faces.h"

#include "reader/Textures.h"
#include "scene/Winding.h"

namespace {

using Triple = double[3];

// The material of a side, before its row is looked up.
struct SideMaterial {
    MaterialHandle Material = {};
    bool Inherited = false; // not the side's own: only then the texture's scale applies
};

SideMaterial FrontMaterial(FaceHandle face, MaterialHandle inherited) {
    MaterialHandle material = {};
    if (SUFaceGetFrontMaterial(face, &material) == 0 && !IsNull(material)) {
        return {.Material = material, .Inherited = false};
    }
    return {.Material = inherited, .Inherited = true};
}

// Outside of painted groups and instances an unpainted back has the material of the front.
SideMaterial BackMaterial(FaceHandle face, MaterialHandle inherited, int32_t inheritedIndex,
                          const SideMaterial& front) {
    MaterialHandle material = {};
    if (SUFaceGetBackMaterial(face, &material) == 0 && !IsNull(material)) {
        return {.Material = material, .Inherited = false};
    }
    return {.Material = inheritedIndex > DefaultMaterialIndex ? inherited : front.Material,
            .Inherited = true};
}

// Returns the plane normal of the front, in scene axes.
Vec3 ReadPlaneNormal(FaceHandle face) {
    double plane[PlaneValues] = {};
    if (SUFaceGetPlane(face, plane) != 0) {
        return {0, 1, 0};
    }
    return {static_cast<float>(plane[0]), static_cast<float>(plane[2]), static_cast<float>(plane[1])};
}

// Texture coordinates for a side's own material are final; only those for an inherited one are scaled.
TextureScale ReadScale(const SideMaterial& side) {
    TextureHandle texture = {};
    if (!side.Inherited || IsNull(side.Material) || SUMaterialGetTexture(side.Material, &texture) != 0) {
        return {};
    }
    uint64_t width = 0;
    uint64_t height = 0;
    double s = 1.0;
    double t = 1.0;
    if (SUTextureGetDimensions(texture, &width, &height, &s, &t) != 0) {
        return {};
    }
    return {.S = static_cast<float>(s), .T = static_cast<float>(t)};
}

int32_t MaterialIndexOf(const ModelImporter& importer, MaterialHandle material) {
    const int32_t row = FindMaterial(importer.MaterialTable, material);
    return row != NoRow ? row : DefaultMaterialIndex;
}

using ReadTriples = int32_t (*)(MeshHelperHandle, uint64_t, double[][3], uint64_t*);

// Reads one array of the mesh helper. Returns false if it can't be read in full.
bool ReadArray(ClearedArray<double>& values, MeshHelperHandle meshHelper, uint64_t count,
               ReadTriples read) {
    values.Clear(3 * count);
    uint64_t returned = 0;
    return read(meshHelper, count, reinterpret_cast<Triple*>(values.Elements.begin()), &returned) == 0 &&
           returned == count;
}

// Whether every index, as a signed 32-bit number, refers to a vertex.
bool IndicesAreSound(const ClearedArray<uint64_t>& indices, uint64_t vertexCount) {
    for (const uint64_t index : indices) {
        const auto number = static_cast<int32_t>(static_cast<uint32_t>(index));
        if (number < 0 || static_cast<uint64_t>(number) >= vertexCount) {
            return false;
        }
    }
    return true;
}

// Returns a vertex in scene axes. The normal is that of the side.
Vertex MakeVertex(const double* position, const double* normal, const double* stq,
                  const FaceSide& side) {
    Vec3 n = {static_cast<float>(normal[0]), static_cast<float>(normal[2]),
              static_cast<float>(normal[1])};
    if (!side.IsFront) {
        n = {-n.X, -n.Y, -n.Z};
    }
    const double s = stq[0] / stq[2] * static_cast<double>(side.Scale.S);
    const double t = stq[1] / stq[2] * static_cast<double>(side.Scale.T);
    return {.Position = {static_cast<float>(position[0]), static_cast<float>(position[2]),
                         static_cast<float>(position[1])},
            .Normal = n,
            .U = static_cast<float>(s),
            .V = 1.0f - static_cast<float>(t)};
}

// Reads Vertices and Indices of one side. Returns false at once if the side has no triangles or can't be
// read.
bool ReadSideMesh(SideMesh& mesh, MeshHelperHandle meshHelper, const FaceSide& side) {
    uint64_t triangleCount = 0;
    if (SUMeshHelperGetNumTriangles(meshHelper, &triangleCount) != 0 || triangleCount == 0 ||
        triangleCount > MaxElementCount) {
        return false;
    }
    uint64_t vertexCount = 0;
    if (SUMeshHelperGetNumVertices(meshHelper, &vertexCount) != 0 || vertexCount < 3 ||
        vertexCount > MaxElementCount) {
        return false;
    }
    if (!ReadArray(mesh.Positions, meshHelper, vertexCount, SUMeshHelperGetVertices) ||
        !ReadArray(mesh.Normals, meshHelper, vertexCount, SUMeshHelperGetNormals)) {
        return false;
    }
    const bool textured =
        ReadArray(mesh.Stq, meshHelper, vertexCount,
                  side.IsFront ? SUMeshHelperGetFrontSTQCoords : SUMeshHelperGetBackSTQCoords);
    constexpr double noCoordinates[3] = {0.0, 0.0, 1.0};
    mesh.Vertices.Resize(vertexCount);
    for (size_t i = 0; i < vertexCount; ++i) {
        mesh.Vertices[i] = MakeVertex(&mesh.Positions.Elements[3 * i], &mesh.Normals.Elements[3 * i],
                                      textured ? &mesh.Stq.Elements[3 * i] : noCoordinates, side);
    }
    const uint64_t indexCount = 3 * triangleCount;
    if (indexCount > MaxElementCount) {
        return false;
    }
    mesh.Indices.Clear(indexCount);
    uint64_t returned = 0;
    return SUMeshHelperGetVertexIndices(meshHelper, indexCount, mesh.Indices.Elements.begin(),
                                        &returned) == 0 &&
           returned == indexCount && IndicesAreSound(mesh.Indices, vertexCount);
}

// Frees what the next list is not likely to need.
void ReleaseLarge(SideMesh& mesh) {
    mesh.Positions.ReleaseLarge();
    mesh.Normals.ReleaseLarge();
    mesh.Stq.ReleaseLarge();
    mesh.Indices.ReleaseLarge();
    mesh.Vertices.ReleaseLarge();
    mesh.Corners.ReleaseLarge();
    mesh.Numbers.ReleaseLarge();
}

// Called between faces, with the vertices of the last one.
void ShowFaces(ModelImporter& importer, uint64_t done, uint64_t all, uint64_t vertices) {
    if (IsProgressDue(importer.Progress, 1 + vertices)) {
        ShowProgress(importer.Progress, "Reading: " + std::to_string(importer.FacesRead) +
                                            " faces, here " + std::to_string(done) + " of " +
                                            std::to_string(all));
    }
    ++importer.FacesRead;
}

} // namespace

void ImportFaceSide(ModelImporter& importer, MeshHelperHandle meshHelper, PolygonList& polygons,
                    const FaceSide& side, SideMesh& mesh) {
    if (importer.ImportStatus != StatusOk || !ReadSideMesh(mesh, meshHelper, side)) {
        return;
    }
    VertexPool& pool = PoolOf(polygons, side.MaterialIndex);
    mesh.Corners.Resize(mesh.Indices.Count);
    for (size_t i = 0; i < mesh.Indices.Count; i += 3) {
        const auto corner = [&mesh, i](size_t which) {
            return static_cast<uint32_t>(mesh.Indices.Elements[i + which]);
        };
        // Indices have the winding of the front, so the back reads them in reverse.
        const uint32_t a = corner(side.IsFront ? 0 : 2);
        const uint32_t b = corner(1);
        const uint32_t c = corner(side.IsFront ? 2 : 0);
        const bool keepsOrder = KeepsOrder(mesh.Vertices[a].Position, mesh.Vertices[b].Position,
                                           mesh.Vertices[c].Position, side.PlaneNormal);
        mesh.Corners[i] = keepsOrder ? a : c;
        mesh.Corners[i + 1] = b;
        mesh.Corners[i + 2] = keepsOrder ? c : a;
    }
    AppendTriangles(pool, mesh.Vertices, mesh.Corners, mesh.Numbers);
    WriteMaterialTexture(importer, importer.MaterialTable.Rows[static_cast<size_t>(side.MaterialIndex)]);
}

void ImportFaces(ModelImporter& importer, EntitiesHandle entities, PolygonList& polygons,
                 int32_t inheritedIndex, SideMesh& mesh) {
    if (importer.ImportStatus != StatusOk) {
        return;
    }
    const auto faces =
        ReadList(entities, SUEntitiesGetNumFaces, SUEntitiesGetFaces, ReturnedCount::NotRead);
    for (const FaceHandle& face : faces) {
        ShowFaces(importer, static_cast<uint64_t>(&face - faces.begin()), faces.Count,
                  mesh.Vertices.Count);
        if (IsNull(face) || IsExcludedByLayer(SUFaceToDrawingElement(face))) {
            continue;
        }
        const MaterialHandle inherited =
            importer.MaterialTable.Rows[static_cast<size_t>(inheritedIndex)].Material;
        const SideMaterial frontMaterial = FrontMaterial(face, inherited);
        const SideMaterial backMaterial = BackMaterial(face, inherited, inheritedIndex, frontMaterial);
        UVHelperHandle uvHelper = {};
        if (SUFaceGetUVHelper(face, true, true, importer.TextureWriter, &uvHelper) != 0) {
            continue;
        }
        MeshHelperHandle meshHelper = {};
        if (SUMeshHelperCreateWithUVHelper(&meshHelper, face, uvHelper) != 0) {
            continue;
        }
        FaceSide front;
        front.PlaneNormal = ReadPlaneNormal(face);
        FaceSide back;
        back.IsFront = false;
        back.PlaneNormal = {-front.PlaneNormal.X, -front.PlaneNormal.Y, -front.PlaneNormal.Z};
        front.Scale = ReadScale(frontMaterial);
        back.Scale = ReadScale(backMaterial);
        front.MaterialIndex = MaterialIndexOf(importer, frontMaterial.Material);
        back.MaterialIndex = MaterialIndexOf(importer, backMaterial.Material);
        ImportFaceSide(importer, meshHelper, polygons, front, mesh);
        ImportFaceSide(importer, meshHelper, polygons, back, mesh);
        SUUVHelperRelease(&uvHelper);
    }
    ReleaseLarge(mesh);
}
