// The 64 operations of the shared library SketchUpAPI, the program's only access to a model.
//
// The library is bound when the program is loaded. Any library that exports these 64 names works. The
// build reads the names from the declarations below; no other file lists them.
//
// Common to all operations:
// - The result is 0 for success. Any other value is a failure; failures are not distinguished. Five
//   operations return a handle instead.
// - The caller sets every output to a default before the call. The default remains if the call does not
//   write the output.
// - A list is read in two steps: its count, then an array of exactly that many elements, which the
//   caller allocates and clears. With "must match", a returned count other than the requested one is a
//   failure.
// - Lengths are in model units and are not converted. Coordinates have Z up.
// - A flag output is one byte, 0 for false and anything else for true.
// - Texts are UTF-16. Paths are NUL-terminated UTF-8 of at most 260 bytes including the NUL, as the user
//   wrote them, with backslashes and drive letter.
// - All calls come from one thread.
#pragma once

#include "api/Handles.h"

#include <cstdint>

// The material types that SUMaterialGetType returns.
constexpr int32_t MaterialTypePlain = 0;     // plain colour
constexpr int32_t MaterialTypeTextured = 1;  // texture without tint
constexpr int32_t MaterialTypeColorized = 2; // texture tinted with the colour

// Values of the plane that SUFaceGetPlane returns: a, b, c are the normal; d is not read.
constexpr int PlaneValues = 4;
// Values of a transformation: a row-major matrix for row vectors, translation in 12 to 14.
constexpr int TransformValues = 16;
// The limit passed to SUStringGetUTF16, in UTF-16 units, closing NUL included.
constexpr uint64_t TextLimit = 260;

extern "C" {

// --- The library as a whole: the first and the last call. Nothing is read back.
void SUInitialize(void);
void SUTerminate(void);

// --- Model. If the model can't be opened or its entities can't be read, the run ends. Without its
// materials the run continues with the default material alone. Handles stay valid until the model is
// released. Releasing a null model has no effect.
int32_t SUModelCreateFromFile(ModelHandle* model, const char* path);
int32_t SUModelGetEntities(ModelHandle model, EntitiesHandle* entities);
int32_t SUModelGetNumAllMaterials(ModelHandle model, uint64_t* count);
int32_t SUModelGetAllMaterials(ModelHandle model, uint64_t count, MaterialHandle materials[],
                               uint64_t* returned); // must match
int32_t SUModelRelease(ModelHandle* model);

// --- Entities: one list of faces, groups, component instances and images. The scene keeps the order of
// the arrays. After a failure the list has no elements of that kind; nothing else is lost.
int32_t SUEntitiesGetNumFaces(EntitiesHandle entities, uint64_t* count);
int32_t SUEntitiesGetFaces(EntitiesHandle entities, uint64_t count, FaceHandle faces[],
                           uint64_t* returned); // returned count not read
int32_t SUEntitiesGetNumGroups(EntitiesHandle entities, uint64_t* count);
int32_t SUEntitiesGetGroups(EntitiesHandle entities, uint64_t count, GroupHandle groups[],
                            uint64_t* returned); // must match
int32_t SUEntitiesGetNumInstances(EntitiesHandle entities, uint64_t* count);
int32_t SUEntitiesGetInstances(EntitiesHandle entities, uint64_t count,
                               ComponentInstanceHandle instances[],
                               uint64_t* returned); // must match
int32_t SUEntitiesGetNumImages(EntitiesHandle entities, uint64_t* count);
int32_t SUEntitiesGetImages(EntitiesHandle entities, uint64_t count, ImageHandle images[],
                            uint64_t* returned); // must match

// --- Face. If a material fails, the side has none. If the plane fails, the normal is (0, 1, 0) in scene
// axes. Without a UV helper the face is skipped.
DrawingElementHandle SUFaceToDrawingElement(FaceHandle face);
int32_t SUFaceGetFrontMaterial(FaceHandle face, MaterialHandle* material);
int32_t SUFaceGetBackMaterial(FaceHandle face, MaterialHandle* material);
int32_t SUFaceGetPlane(FaceHandle face, double plane[PlaneValues]);
int32_t SUFaceGetUVHelper(FaceHandle face, bool front, bool back, TextureWriterHandle textureWriter,
                          UVHelperHandle* uvHelper);

// --- Mesh helper: the triangulation of one face, read once per side with the same result. Points and
// normals are x, y, z. Texture coordinates are s, t, q: final for a side with a material of its own, in
// model units for a side that inherits one. Indices are zero-based, three per triangle. Without the
// helper the face is skipped; without counts, points, normals or indices the side is. Without texture
// coordinates all are (0, 0, 1). A mesh helper is never released and lasts until SUTerminate. All
// returned counts must match.
int32_t SUMeshHelperCreateWithUVHelper(MeshHelperHandle* meshHelper, FaceHandle face,
                                       UVHelperHandle uvHelper);
int32_t SUMeshHelperGetNumTriangles(MeshHelperHandle meshHelper, uint64_t* count);
int32_t SUMeshHelperGetNumVertices(MeshHelperHandle meshHelper, uint64_t* count);
int32_t SUMeshHelperGetVertices(MeshHelperHandle meshHelper, uint64_t count, double points[][3],
                                uint64_t* returned);
int32_t SUMeshHelperGetNormals(MeshHelperHandle meshHelper, uint64_t count, double normals[][3],
                               uint64_t* returned);
int32_t SUMeshHelperGetFrontSTQCoords(MeshHelperHandle meshHelper, uint64_t count, double stq[][3],
                                      uint64_t* returned);
int32_t SUMeshHelperGetBackSTQCoords(MeshHelperHandle meshHelper, uint64_t count, double stq[][3],
                                     uint64_t* returned);
int32_t SUMeshHelperGetVertexIndices(MeshHelperHandle meshHelper, uint64_t count, uint64_t indices[],
                                     uint64_t* returned);

// --- UV helper: used for one face.
int32_t SUUVHelperRelease(UVHelperHandle* uvHelper);

// --- Material. After a failure the name is empty, the colour is opaque white and the opacity flag is 0.
// Type and opacity are used as the call leaves them. The fourth byte of the colour is not read. Without
// its texture a material is untextured. All handles of one material are equal.
int32_t SUMaterialGetName(MaterialHandle material, StringHandle* name);
int32_t SUMaterialGetColor(MaterialHandle material, uint8_t rgba[4]);
int32_t SUMaterialGetUseOpacity(MaterialHandle material, uint8_t* useOpacity);
int32_t SUMaterialGetOpacity(MaterialHandle material, double* opacity);
int32_t SUMaterialGetType(MaterialHandle material, int32_t* type);
int32_t SUMaterialGetTexture(MaterialHandle material, TextureHandle* texture);

// --- Texture. The two scales convert model units to texture coordinates; after a failure both are 1. If
// a picture can't be written, the run ends. Width and height, in pixels, are not read.
int32_t SUTextureGetFileName(TextureHandle texture, StringHandle* fileName);
int32_t SUTextureGetDimensions(TextureHandle texture, uint64_t* width, uint64_t* height, double* sScale,
                               double* tScale);
int32_t SUTextureWriteToFile(TextureHandle texture, const char* path);

// --- Image: a picture placed in space, one unit per pixel before its transformation. If the
// transformation fails, the rest of the list is skipped too. If the size fails, the image has no
// geometry.
DrawingElementHandle SUImageToDrawingElement(ImageHandle image);
EntityHandle SUImageToEntity(ImageHandle image);
int32_t SUImageGetFileName(ImageHandle image, StringHandle* fileName);
int32_t SUImageGetTransform(ImageHandle image, double transform[TransformValues]);
int32_t SUImageRepCreate(ImageRepHandle* imageRep);
int32_t SUImageGetImageRep(ImageHandle image, ImageRepHandle* imageRep);
int32_t SUImageRepGetPixelDimensions(ImageRepHandle imageRep, uint64_t* width, uint64_t* height);
int32_t SUImageRepRelease(ImageRepHandle* imageRep);

// --- Group. If the transformation fails, the rest of the list is skipped too. Without entities the
// group is skipped. After a failure the name is empty.
DrawingElementHandle SUGroupToDrawingElement(GroupHandle group);
int32_t SUGroupGetName(GroupHandle group, StringHandle* name);
int32_t SUGroupGetTransform(GroupHandle group, double transform[TransformValues]);
int32_t SUGroupGetEntities(GroupHandle group, EntitiesHandle* entities);

// --- Component instance and definition. If the transformation fails, the rest of the list is skipped
// too. Without definition or entities the instance is skipped.
DrawingElementHandle SUComponentInstanceToDrawingElement(ComponentInstanceHandle instance);
int32_t SUComponentInstanceGetDefinition(ComponentInstanceHandle instance,
                                         ComponentDefinitionHandle* definition);
int32_t SUComponentInstanceGetTransform(ComponentInstanceHandle instance,
                                        double transform[TransformValues]);
int32_t SUComponentDefinitionGetEntities(ComponentDefinitionHandle definition, EntitiesHandle* entities);

// --- Drawing element: the common part of faces, images, groups and instances. After a failure the
// element is not hidden by its layer, or has no material of its own.
int32_t SUDrawingElementGetHidden(DrawingElementHandle element, uint8_t* hidden);
int32_t SUDrawingElementGetLayer(DrawingElementHandle element, LayerHandle* layer);
int32_t SUDrawingElementGetMaterial(DrawingElementHandle element, MaterialHandle* material);
int32_t SULayerGetVisibility(LayerHandle layer, uint8_t* visible);

// --- String: created by the caller, filled by a getter, read once. SUStringGetUTF16 writes at most
// limit units, always including a closing NUL.
int32_t SUStringCreate(StringHandle* string);
int32_t SUStringGetUTF16(StringHandle string, uint64_t limit, char16_t* text, uint64_t* length);
int32_t SUStringRelease(StringHandle* string);

// --- Texture writer: one per run, never released. It writes the pictures of images. A picture that
// can't be loaded is skipped silently; one that can't be written ends the run.
int32_t SUTextureWriterCreate(TextureWriterHandle* textureWriter);
int32_t SUTextureWriterLoadEntity(TextureWriterHandle textureWriter, EntityHandle entity,
                                  int32_t* textureId);
int32_t SUTextureWriterWriteTexture(TextureWriterHandle textureWriter, int32_t textureId,
                                    const char* path, bool reduceSize);
}
