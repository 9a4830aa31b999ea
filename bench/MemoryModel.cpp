// A library with the 64 operations that computes its answers, so that a run measures only the program:
// it reads no file and stores nothing per face. The digits of the model's name are the number of quads
// in the scene: two fifths in the model's own list, two fifths in twenty groups of five groups each, the
// rest in ten instances of one definition. With a name that begins with "flat", all quads are in the
// model's own list and have one material.
#include "City.h"
#include "api/SketchUpAPI.h"

#include <algorithm>
#include <cstdio>
#include <string>

namespace {

constexpr uint64_t GroupCount = 20;
constexpr uint64_t InnerGroupCount = 5;
constexpr uint64_t InstanceCount = 10;
constexpr uint64_t TexturedEvery = 5; // each fifth material has a picture

// Handle values of lists: the model's own, the groups, the inner groups, the definition.
constexpr uint64_t ModelList = 1;
constexpr uint64_t FirstGroup = 2;
constexpr uint64_t FirstInnerGroup = FirstGroup + GroupCount;
constexpr uint64_t Definition = FirstInnerGroup + GroupCount * InnerGroupCount;

constexpr int ListShift = 40; // of the list's number in the handle of a face or an instance

uint64_t quadCount = 0;
bool flat = false;

bool IsInnerGroup(uint64_t list) {
    return list >= FirstInnerGroup && list < Definition;
}

uint64_t FaceCount(uint64_t list) {
    if (flat) {
        return list == ModelList ? quadCount : 0;
    }
    if (list == ModelList) {
        return quadCount * 2 / 5;
    }
    if (IsInnerGroup(list)) {
        return quadCount * 2 / 5 / (GroupCount * InnerGroupCount);
    }
    return list == Definition ? quadCount / 5 / InstanceCount : 0;
}

// The quad of a face or of its mesh helper. Caches the last one: each face gets many calls.
template <class Handle> const Quad& QuadOf(Handle handle) {
    static uint64_t value = 0;
    static Quad quad;
    if (handle.Value != value) {
        value = handle.Value;
        quad = CityQuad((value & ((uint64_t{1} << ListShift) - 1)) - 1);
    }
    return quad;
}

int32_t Give(uint64_t* output, uint64_t value) {
    *output = value;
    return 0;
}

template <class Handle>
int32_t GiveRange(Handle handles[], uint64_t first, uint64_t count, uint64_t* returned) {
    for (uint64_t i = 0; i < count; ++i) {
        handles[i].Value = first + i;
    }
    return Give(returned, count);
}

// Places elements in rows, so that they don't overlap.
int32_t Place(double transform[TransformValues], uint64_t number) {
    for (int i = 0; i < TransformValues; ++i) {
        transform[i] = i % 5 == 0 ? 1 : 0;
    }
    transform[12] = 3100.0 * static_cast<double>(number % 7);
    transform[13] = 40.0 * static_cast<double>(number);
    return 0;
}

int32_t GiveCoordinates(MeshHelperHandle helper, double stq[][3], uint64_t* returned) {
    const Quad& quad = QuadOf(helper);
    for (size_t i = 0; i < 4; ++i) {
        stq[i][0] = quad.Coordinates[i][0];
        stq[i][1] = quad.Coordinates[i][1];
        stq[i][2] = 1;
    }
    return Give(returned, 4);
}

} // namespace

void SUInitialize(void) {
}

void SUTerminate(void) {
}

int32_t SUModelCreateFromFile(ModelHandle* model, const char* path) {
    const std::string name = path;
    const size_t digits = name.find_last_not_of("0123456789") + 1;
    if (digits == name.size()) {
        return 1;
    }
    quadCount = std::stoull(name.substr(digits));
    flat = name.starts_with("flat");
    model->Value = 1;
    return 0;
}

int32_t SUModelGetEntities(ModelHandle, EntitiesHandle* entities) {
    return Give(&entities->Value, ModelList);
}

int32_t SUModelGetNumAllMaterials(ModelHandle, uint64_t* count) {
    return Give(count, MaterialCount);
}

int32_t SUModelGetAllMaterials(ModelHandle, uint64_t count, MaterialHandle materials[],
                               uint64_t* returned) {
    return GiveRange(materials, 1, count, returned);
}

int32_t SUModelRelease(ModelHandle*) {
    return 0;
}

int32_t SUEntitiesGetNumFaces(EntitiesHandle entities, uint64_t* count) {
    return Give(count, FaceCount(entities.Value));
}

int32_t SUEntitiesGetFaces(EntitiesHandle entities, uint64_t count, FaceHandle faces[],
                           uint64_t* returned) {
    return GiveRange(faces, (entities.Value << ListShift) + 1, count, returned);
}

int32_t SUEntitiesGetNumGroups(EntitiesHandle entities, uint64_t* count) {
    const bool outer = entities.Value >= FirstGroup && entities.Value < FirstInnerGroup;
    return Give(count, entities.Value == ModelList ? GroupCount : outer ? InnerGroupCount : 0);
}

int32_t SUEntitiesGetGroups(EntitiesHandle entities, uint64_t count, GroupHandle groups[],
                            uint64_t* returned) {
    const uint64_t inner = FirstInnerGroup + (entities.Value - FirstGroup) * InnerGroupCount;
    return GiveRange(groups, entities.Value == ModelList ? FirstGroup : inner, count, returned);
}

int32_t SUEntitiesGetNumInstances(EntitiesHandle entities, uint64_t* count) {
    return Give(count, entities.Value == ModelList ? InstanceCount : 0);
}

int32_t SUEntitiesGetInstances(EntitiesHandle, uint64_t count, ComponentInstanceHandle instances[],
                               uint64_t* returned) {
    return GiveRange(instances, 1, count, returned);
}

int32_t SUEntitiesGetNumImages(EntitiesHandle, uint64_t* count) {
    return Give(count, 0);
}

int32_t SUEntitiesGetImages(EntitiesHandle, uint64_t, ImageHandle[], uint64_t*) {
    return 1;
}

DrawingElementHandle SUFaceToDrawingElement(FaceHandle face) {
    return {face.Value};
}

int32_t SUFaceGetFrontMaterial(FaceHandle face, MaterialHandle* material) {
    return Give(&material->Value, flat ? 1 : QuadOf(face).Material + 1);
}

// Backs take the material of the fronts.
int32_t SUFaceGetBackMaterial(FaceHandle, MaterialHandle*) {
    return 1;
}

int32_t SUFaceGetPlane(FaceHandle face, double plane[PlaneValues]) {
    const Quad& quad = QuadOf(face);
    std::copy_n(quad.Normal.begin(), 3, plane);
    return 0;
}

int32_t SUFaceGetUVHelper(FaceHandle face, bool, bool, TextureWriterHandle, UVHelperHandle* uvHelper) {
    return Give(&uvHelper->Value, face.Value);
}

int32_t SUMeshHelperCreateWithUVHelper(MeshHelperHandle* meshHelper, FaceHandle face, UVHelperHandle) {
    return Give(&meshHelper->Value, face.Value);
}

int32_t SUMeshHelperGetNumTriangles(MeshHelperHandle, uint64_t* count) {
    return Give(count, 2);
}

int32_t SUMeshHelperGetNumVertices(MeshHelperHandle, uint64_t* count) {
    return Give(count, 4);
}

int32_t SUMeshHelperGetVertices(MeshHelperHandle meshHelper, uint64_t, double points[][3],
                                uint64_t* returned) {
    const Quad& quad = QuadOf(meshHelper);
    for (size_t i = 0; i < 4; ++i) {
        std::copy_n(quad.Corners[i].begin(), 3, points[i]);
    }
    return Give(returned, 4);
}

int32_t SUMeshHelperGetNormals(MeshHelperHandle meshHelper, uint64_t, double normals[][3],
                               uint64_t* returned) {
    const Quad& quad = QuadOf(meshHelper);
    for (size_t i = 0; i < 4; ++i) {
        std::copy_n(quad.Normal.begin(), 3, normals[i]);
    }
    return Give(returned, 4);
}

int32_t SUMeshHelperGetFrontSTQCoords(MeshHelperHandle meshHelper, uint64_t, double stq[][3],
                                      uint64_t* returned) {
    return GiveCoordinates(meshHelper, stq, returned);
}

int32_t SUMeshHelperGetBackSTQCoords(MeshHelperHandle meshHelper, uint64_t, double stq[][3],
                                     uint64_t* returned) {
    return GiveCoordinates(meshHelper, stq, returned);
}

int32_t SUMeshHelperGetVertexIndices(MeshHelperHandle, uint64_t, uint64_t indices[],
                                     uint64_t* returned) {
    constexpr uint64_t corners[6] = {0, 1, 2, 0, 2, 3};
    std::copy_n(corners, 6, indices);
    return Give(returned, 6);
}

int32_t SUUVHelperRelease(UVHelperHandle*) {
    return 0;
}

int32_t SUMaterialGetName(MaterialHandle, StringHandle*) {
    return 1;
}

int32_t SUMaterialGetColor(MaterialHandle material, uint8_t rgba[4]) {
    rgba[0] = static_cast<uint8_t>(material.Value);
    return 0;
}

int32_t SUMaterialGetUseOpacity(MaterialHandle, uint8_t*) {
    return 1;
}

int32_t SUMaterialGetOpacity(MaterialHandle, double*) {
    return 1;
}

int32_t SUMaterialGetType(MaterialHandle, int32_t* type) {
    *type = MaterialTypeTextured;
    return 0;
}

int32_t SUMaterialGetTexture(MaterialHandle material, TextureHandle* texture) {
    return material.Value % TexturedEvery == 0 ? Give(&texture->Value, material.Value) : 1;
}

int32_t SUTextureGetFileName(TextureHandle, StringHandle*) {
    return 1;
}

int32_t SUTextureGetDimensions(TextureHandle, uint64_t*, uint64_t*, double*, double*) {
    return 0;
}

int32_t SUTextureWriteToFile(TextureHandle, const char*) {
    return 0;
}

DrawingElementHandle SUImageToDrawingElement(ImageHandle) {
    return {0};
}

EntityHandle SUImageToEntity(ImageHandle) {
    return {0};
}

int32_t SUImageGetFileName(ImageHandle, StringHandle*) {
    return 1;
}

int32_t SUImageGetTransform(ImageHandle, double[TransformValues]) {
    return 1;
}

int32_t SUImageRepCreate(ImageRepHandle*) {
    return 1;
}

int32_t SUImageGetImageRep(ImageHandle, ImageRepHandle*) {
    return 1;
}

int32_t SUImageRepGetPixelDimensions(ImageRepHandle, uint64_t*, uint64_t*) {
    return 1;
}

int32_t SUImageRepRelease(ImageRepHandle*) {
    return 0;
}

DrawingElementHandle SUGroupToDrawingElement(GroupHandle group) {
    return {group.Value};
}

int32_t SUGroupGetName(GroupHandle, StringHandle*) {
    return 1;
}

int32_t SUGroupGetTransform(GroupHandle group, double transform[TransformValues]) {
    return Place(transform, group.Value);
}

int32_t SUGroupGetEntities(GroupHandle group, EntitiesHandle* entities) {
    return Give(&entities->Value, group.Value);
}

DrawingElementHandle SUComponentInstanceToDrawingElement(ComponentInstanceHandle instance) {
    return {instance.Value};
}

int32_t SUComponentInstanceGetDefinition(ComponentInstanceHandle,
                                         ComponentDefinitionHandle* definition) {
    return Give(&definition->Value, Definition);
}

int32_t SUComponentInstanceGetTransform(ComponentInstanceHandle instance,
                                        double transform[TransformValues]) {
    return Place(transform, instance.Value + Definition);
}

int32_t SUComponentDefinitionGetEntities(ComponentDefinitionHandle definition,
                                         EntitiesHandle* entities) {
    return Give(&entities->Value, definition.Value);
}

int32_t SUDrawingElementGetHidden(DrawingElementHandle, uint8_t*) {
    return 0;
}

int32_t SUDrawingElementGetLayer(DrawingElementHandle, LayerHandle* layer) {
    return Give(&layer->Value, 1);
}

int32_t SUDrawingElementGetMaterial(DrawingElementHandle, MaterialHandle*) {
    return 1;
}

int32_t SULayerGetVisibility(LayerHandle, uint8_t*) {
    return 0;
}

int32_t SUStringCreate(StringHandle*) {
    return 0;
}

int32_t SUStringGetUTF16(StringHandle, uint64_t, char16_t*, uint64_t*) {
    return 1;
}

int32_t SUStringRelease(StringHandle*) {
    return 0;
}

int32_t SUTextureWriterCreate(TextureWriterHandle* textureWriter) {
    return Give(&textureWriter->Value, 1);
}

int32_t SUTextureWriterLoadEntity(TextureWriterHandle, EntityHandle, int32_t*) {
    return 1;
}

int32_t SUTextureWriterWriteTexture(TextureWriterHandle, int32_t, const char*, bool) {
    return 1;
}
