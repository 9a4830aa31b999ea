// Faces, UV helpers and mesh helpers. A helper's handle holds the face's index and owns no memory, so
// mesh helpers, which have no release operation, don't leak.
#include "provider/model/Mapping.h"
#include "provider/operations/ProviderState.h"

#include <algorithm>

namespace {

const ModelFace* FindFace(FaceHandle face) {
    return FindElement(face.Value, HandleKind::Face, &Model::Faces);
}

const ModelFace* FindFace(MeshHelperHandle meshHelper) {
    return FindElement(meshHelper.Value, HandleKind::MeshHelper, &Model::Faces);
}

int32_t WriteMaterial(const ModelFace* face, const ModelSide ModelFace::*side,
                      MaterialHandle* material) {
    if (face == nullptr || material == nullptr) {
        return Failure;
    }
    const uint32_t index = (face->*side).Material;
    material->Value = index != NoIndex ? ModelHandleValue(HandleKind::Material, index) : 0;
    return Success;
}

int32_t WriteMeshCount(const ModelFace* face, uint64_t number, uint64_t* count) {
    if (face == nullptr || count == nullptr) {
        return Failure;
    }
    *count = number;
    return Success;
}

// Limits count to the elements that the face has. Returns false if nothing can be written.
bool CanWrite(const ModelFace* face, IndexRange ModelFace::*elements, const void* array, uint64_t& count,
              uint64_t* returned) {
    if (face == nullptr || returned == nullptr || (array == nullptr && count > 0)) {
        return false;
    }
    count = std::min<uint64_t>(count, (face->*elements).Count);
    *returned = count;
    return true;
}

void WritePoint(Point3 point, double values[3]) {
    values[0] = point.X;
    values[1] = point.Y;
    values[2] = point.Z;
}

int32_t WriteCoordinates(MeshHelperHandle meshHelper, bool front, uint64_t count, double stq[][3],
                         uint64_t* returned) {
    const ModelFace* face = FindFace(meshHelper);
    if (!CanWrite(face, &ModelFace::Vertices, stq, count, returned)) {
        return Failure;
    }
    CoordinatesOfSide(*State().Open, *face, front, count, stq);
    return Success;
}

} // namespace

extern "C" {

DrawingElementHandle SUFaceToDrawingElement(FaceHandle face) {
    return DrawingElementOf(FindFace(face), face.Value, ElementKind::Face);
}

int32_t SUFaceGetFrontMaterial(FaceHandle face, MaterialHandle* material) {
    return WriteMaterial(FindFace(face), &ModelFace::Front, material);
}

int32_t SUFaceGetBackMaterial(FaceHandle face, MaterialHandle* material) {
    return WriteMaterial(FindFace(face), &ModelFace::Back, material);
}

int32_t SUFaceGetPlane(FaceHandle face, double plane[PlaneValues]) {
    const ModelFace* found = FindFace(face);
    if (found == nullptr || plane == nullptr) {
        return Failure;
    }
    WritePoint(found->Normal, plane);
    plane[3] = found->Distance;
    return Success;
}

int32_t SUFaceGetUVHelper(FaceHandle face, bool, bool, TextureWriterHandle, UVHelperHandle* uvHelper) {
    if (FindFace(face) == nullptr || uvHelper == nullptr) {
        return Failure;
    }
    uvHelper->Value = ModelHandleValue(HandleKind::UVHelper, PartsOf(face.Value).Index);
    return Success;
}

int32_t SUUVHelperRelease(UVHelperHandle* uvHelper) {
    if (uvHelper == nullptr ||
        FindElement(uvHelper->Value, HandleKind::UVHelper, &Model::Faces) == nullptr) {
        return Failure;
    }
    uvHelper->Value = 0;
    return Success;
}

int32_t SUMeshHelperCreateWithUVHelper(MeshHelperHandle* meshHelper, FaceHandle face,
                                       UVHelperHandle uvHelper) {
    const ModelFace* found = FindFace(face);
    if (meshHelper == nullptr || found == nullptr ||
        found != FindElement(uvHelper.Value, HandleKind::UVHelper, &Model::Faces)) {
        return Failure;
    }
    meshHelper->Value = ModelHandleValue(HandleKind::MeshHelper, PartsOf(face.Value).Index);
    return Success;
}

int32_t SUMeshHelperGetNumTriangles(MeshHelperHandle meshHelper, uint64_t* count) {
    const ModelFace* face = FindFace(meshHelper);
    return WriteMeshCount(face, face != nullptr ? face->Indices.Count / 3 : 0, count);
}

int32_t SUMeshHelperGetNumVertices(MeshHelperHandle meshHelper, uint64_t* count) {
    const ModelFace* face = FindFace(meshHelper);
    return WriteMeshCount(face, face != nullptr ? face->Vertices.Count : 0, count);
}

int32_t SUMeshHelperGetVertices(MeshHelperHandle meshHelper, uint64_t count, double points[][3],
                                uint64_t* returned) {
    const ModelFace* face = FindFace(meshHelper);
    if (!CanWrite(face, &ModelFace::Vertices, points, count, returned)) {
        return Failure;
    }
    for (size_t i = 0; i < count; ++i) {
        WritePoint(PositionOf(*State().Open, *face, i), points[i]);
    }
    return Success;
}

int32_t SUMeshHelperGetNormals(MeshHelperHandle meshHelper, uint64_t count, double normals[][3],
                               uint64_t* returned) {
    const ModelFace* face = FindFace(meshHelper);
    if (!CanWrite(face, &ModelFace::Vertices, normals, count, returned)) {
        return Failure;
    }
    for (size_t i = 0; i < count; ++i) {
        WritePoint(NormalOf(*State().Open, *face, i), normals[i]);
    }
    return Success;
}

int32_t SUMeshHelperGetFrontSTQCoords(MeshHelperHandle meshHelper, uint64_t count, double stq[][3],
                                      uint64_t* returned) {
    return WriteCoordinates(meshHelper, true, count, stq, returned);
}

int32_t SUMeshHelperGetBackSTQCoords(MeshHelperHandle meshHelper, uint64_t count, double stq[][3],
                                     uint64_t* returned) {
    return WriteCoordinates(meshHelper, false, count, stq, returned);
}

int32_t SUMeshHelperGetVertexIndices(MeshHelperHandle meshHelper, uint64_t count, uint64_t indices[],
                                     uint64_t* returned) {
    const ModelFace* face = FindFace(meshHelper);
    if (!CanWrite(face, &ModelFace::Indices, indices, count, returned)) {
        return Failure;
    }
    std::copy_n(State().Open->Indices.begin() + face->Indices.First, count, indices);
    return Success;
}
}
