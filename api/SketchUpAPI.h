// The 64 operations of the shared library SketchUpAPI: all that this program knows of a model.
//
// The library is bound when the program is loaded; whatever exports these 64 names serves. The build
// reads the list of names from the declarations below, so this file is its only place.
//
// Common to all operations:
// - The result is 0 for success; any other value is a failure, and no two failures are told apart.
//   Five operations return a handle instead.
// - The caller writes a default to every output before the call; the default stands where a call
//   leaves its output alone.
// - A list is read in two steps: its count, then an array of exactly that many elements, which the
//   caller allocates and clears. Where the text says "must match", a returned count that differs from
//   the one asked for counts as a failure.
// - Lengths are in model units, passed on unchanged; coordinates have Z up.
// - A flag output is one byte, 0 for false and anything else for true.
// - Texts are UTF-16. Paths are NUL-terminated UTF-8 of at most 260 bytes with the NUL, in the form
//   the user gave them: backslashes and drive letter included.
// - Calls come from one thread, one at a time.
#pragma once

#include "api/Handles.h"

#include <cstdint>

// The material types that SUMaterialGetType gives.
constexpr int32_t MaterialTypePlain = 0;     // plain colour
constexpr int32_t MaterialTypeTextured = 1;  // texture as it is
constexpr int32_t MaterialTypeColorized = 2; // texture drawn over with the colour

// Where the normal of a face's plane lies in what SUFaceGetPlane gives: a, b, c; d is not read.
constexpr int PlaneValues = 4;
// Values of a transformation: rows of a matrix for row vectors, translation in 12 to 14.
constexpr int TransformValues = 16;
// The unit limit given to SUStringGetUTF16, closing NUL included.
constexpr uint64_t TextLimit = 260;

extern "C" {

// --- The library as a whole. Called first and last; nothing is read back.
void SUInitialize(void);
void SUTerminate(void);

// --- Model. A model that can't be opened, or whose entities can't be had, ends the run. Without its
// materials the run goes on with the default material alone. The handles given stay valid until the
// model is released; releasing a null model does no harm.
int32_t SUModelCreateFromFile(ModelHandle* model, const char* path);
int32_t SUModelGetEntities(ModelHandle model, EntitiesHandle* entities);
int32_t SUModelGetNumAllMaterials(ModelHandle model, uint64_t* count);
int32_t SUModelGetAllMaterials(ModelHandle model, uint64_t count, MaterialHandle materials[],
                               uint64_t* returned); // must match
int32_t SUModelRelease(ModelHandle* model);

// --- Entities: one list of faces, groups, component instances and images. The order of the arrays is
// the order in the scene. A failure loses that kind of element in that list, nothing else.
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

// --- Face. A failed material is a side without one; a failed plane is (0, 1, 0) in scene axes; without
// a UV helper the face is left out.
DrawingElementHandle SUFaceToDrawingElement(FaceHandle face);
int32_t SUFaceGetFrontMaterial(FaceHandle face, MaterialHandle* material);
int32_t SUFaceGetBackMaterial(FaceHandle face, MaterialHandle* material);
int32_t SUFaceGetPlane(FaceHandle face, double plane[PlaneValues]);
int32_t SUFaceGetUVHelper(FaceHandle face, bool front, bool back, TextureWriterHandle textureWriter,
                          UVHelperHandle* uvHelper);

// --- Mesh helper: the triangulation of one face, read once per side and the same both times. Points and
// normals are x, y, z; texture coordinates are s, t, q, finished for a side with a material of its own
// and in model units for a side that takes one over. Indices are zero-based, three per triangle. Without
// the helper the face is left out; without counts, points, normals or indices the side is; without
// texture coordinates every coordinate is (0, 0, 1). There is no release: a mesh helper lasts until
// SUTerminate. All returned counts must match.
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

// --- UV helper: lives for one face.
int32_t SUUVHelperRelease(UVHelperHandle* uvHelper);

// --- Material. A failed name is empty, a failed colour opaque white, a failed opacity flag opaque. Type
// and opacity are used as they stand after the call. The fourth byte of the colour is not read. Without
// its texture a material is untextured. Handles of one material are equal wherever they come from.
int32_t SUMaterialGetName(MaterialHandle material, StringHandle* name);
int32_t SUMaterialGetColor(MaterialHandle material, uint8_t rgba[4]);
int32_t SUMaterialGetUseOpacity(MaterialHandle material, uint8_t* useOpacity);
int32_t SUMaterialGetOpacity(MaterialHandle material, double* opacity);
int32_t SUMaterialGetType(MaterialHandle material, int32_t* type);
int32_t SUMaterialGetTexture(MaterialHandle material, TextureHandle* texture);

// --- Texture. The two scales turn coordinates in model units into texture coordinates; failed ones are
// 1. A picture that can't be written ends the run. Width and height, in pixels, are not read.
int32_t SUTextureGetFileName(TextureHandle texture, StringHandle* fileName);
int32_t SUTextureGetDimensions(TextureHandle texture, uint64_t* width, uint64_t* height, double* sScale,
                               double* tScale);
int32_t SUTextureWriteToFile(TextureHandle texture, const char* path);

// --- Image: a picture placed in space, one unit per pixel before its transformation. A failed
// transformation ends the list of images; a failed size leaves the image without geometry.
DrawingElementHandle SUImageToDrawingElement(ImageHandle image);
EntityHandle SUImageToEntity(ImageHandle image);
int32_t SUImageGetFileName(ImageHandle image, StringHandle* fileName);
int32_t SUImageGetTransform(ImageHandle image, double transform[TransformValues]);
int32_t SUImageRepCreate(ImageRepHandle* imageRep);
int32_t SUImageGetImageRep(ImageHandle image, ImageRepHandle* imageRep);
int32_t SUImageRepGetPixelDimensions(ImageRepHandle imageRep, uint64_t* width, uint64_t* height);
int32_t SUImageRepRelease(ImageRepHandle* imageRep);

// --- Group. A failed transformation ends the list of groups; without entities the group is left out; a
// failed name is empty.
DrawingElementHandle SUGroupToDrawingElement(GroupHandle group);
int32_t SUGroupGetName(GroupHandle group, StringHandle* name);
int32_t SUGroupGetTransform(GroupHandle group, double transform[TransformValues]);
int32_t SUGroupGetEntities(GroupHandle group, EntitiesHandle* entities);

// --- Component instance and definition. A failed transformation ends the list of instances; without
// definition or entities the instance is left out.
DrawingElementHandle SUComponentInstanceToDrawingElement(ComponentInstanceHandle instance);
int32_t SUComponentInstanceGetDefinition(ComponentInstanceHandle instance,
                                         ComponentDefinitionHandle* definition);
int32_t SUComponentInstanceGetTransform(ComponentInstanceHandle instance,
                                        double transform[TransformValues]);
int32_t SUComponentDefinitionGetEntities(ComponentDefinitionHandle definition, EntitiesHandle* entities);

// --- Drawing element: what faces, images, groups and instances have in common. Any failure here means
// that the element is not hidden by its layer, or has no material of its own.
int32_t SUDrawingElementGetHidden(DrawingElementHandle element, uint8_t* hidden);
int32_t SUDrawingElementGetLayer(DrawingElementHandle element, LayerHandle* layer);
int32_t SUDrawingElementGetMaterial(DrawingElementHandle element, MaterialHandle* material);
int32_t SULayerGetVisibility(LayerHandle layer, uint8_t* visible);

// --- String: made by the caller, filled by a getter, read once. SUStringGetUTF16 writes at most limit
// units, closing NUL included, and always terminates what it writes.
int32_t SUStringCreate(StringHandle* string);
int32_t SUStringGetUTF16(StringHandle string, uint64_t limit, char16_t* text, uint64_t* length);
int32_t SUStringRelease(StringHandle* string);

// --- Texture writer: one for the run, without a release. It writes the pictures of images; one that
// can't be loaded is left out without a word, one that can't be written ends the run.
int32_t SUTextureWriterCreate(TextureWriterHandle* textureWriter);
int32_t SUTextureWriterLoadEntity(TextureWriterHandle textureWriter, EntityHandle entity,
                                  int32_t* textureId);
int32_t SUTextureWriterWriteTexture(TextureWriterHandle textureWriter, int32_t textureId,
                                    const char* path, bool reduceSize);
}
