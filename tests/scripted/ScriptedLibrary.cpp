// A second library with the 64 operations, for whole runs of the program: it answers from a script and
// can fail, do nothing or return wrong values in any call. It also checks the caller's side of the
// contract: defaults in the outputs, lifetimes of released objects, and fixed arguments.
//
// A handle is the address of its JSON value, so each element has one handle. Strings, image reps and UV
// helpers are numbered, because they are created and released.
#include "Script.h"
#include "api/SketchUpAPI.h"
#include "platform/Platform.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <vector>

using Json = nlohmann::json;

namespace {

constexpr int32_t Done = 0;
constexpr int32_t Failed = 1;
constexpr uint64_t WriterValue = 0x77;

bool running = false;
uint64_t lastNumber = 0;
std::map<uint64_t, std::u16string> strings;
std::map<uint64_t, const Json*> uvHelpers; // the face
std::map<uint64_t, const Json*> imageReps; // the image, or null while empty
std::vector<const Json*> loadedEntities;   // the texture id is the position plus 1

void Check(bool holds, const char* text) {
    if (!holds)
        Violation(text);
}

const Json* Member(const Json& node, const char* name) {
    const auto found = node.find(name);
    return found == node.end() || found->is_null() ? nullptr : &*found;
}

double Number(const Json& value) {
    if (!value.is_string())
        return value.get<double>();
    return value == "nan" ? std::nan("") : HUGE_VAL;
}

double NumberOr(const Json& node, const char* name, double otherwise) {
    const Json* value = Member(node, name);
    return value == nullptr ? otherwise : Number(*value);
}

// A flag of any byte value: true, false or a number.
uint8_t Byte(const Json& node, const char* name, uint8_t otherwise) {
    const Json* value = Member(node, name);
    if (value == nullptr)
        return otherwise;
    return value->is_boolean() ? uint8_t(value->get<bool>()) : value->get<uint8_t>();
}

// The element of a list of the script whose index is a member of the node, or null.
const Json* Referred(const Json& node, const char* name, const char* list) {
    const Json* index = Member(node, name);
    return index == nullptr ? nullptr : &Script()[list][index->get<size_t>()];
}

template <class Handle> const Json& NodeOf(Handle handle) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the handle was made from the pointer.
    return *reinterpret_cast<const Json*>(handle.Value);
}

template <class Handle> Handle HandleOf(const Json* node) {
    return {node == nullptr || node->is_null() ? 0 : reinterpret_cast<uintptr_t>(node)};
}

// One call: its fault or its work. Fails for a null owner and if the work returns false.
template <class Owner, class Work> int32_t Answer(const char* operation, Owner owner, Work work) {
    const Fault fault = NextCall(operation);
    Check(running, "called before SUInitialize or after SUTerminate");
    if (fault.Kind == FaultKind::Fail || IsNull(owner))
        return Failed;
    if (fault.Kind == FaultKind::Silent)
        return Done;
    return work(NodeOf(owner), fault) && fault.Kind != FaultKind::FailLate ? Done : Failed;
}

// The same for operations on numbered objects or without an owner.
template <class Work>
int32_t AnswerAny(const char* operation, Work work, const std::string& detail = "") {
    const Fault fault = NextCall(operation, detail);
    Check(running, "called before SUInitialize or after SUTerminate");
    if (fault.Kind == FaultKind::Fail)
        return Failed;
    if (fault.Kind == FaultKind::Silent)
        return Done;
    return work(fault) && fault.Kind != FaultKind::FailLate ? Done : Failed;
}

template <class Handle> bool Give(Handle* output, uint64_t value, Fault fault) {
    Check(IsNull(*output), "output is not null before the call");
    output->Value = fault.Kind == FaultKind::Null ? 0 : value;
    return true;
}

template <class Handle> bool Give(Handle* output, const Json* node, Fault fault) {
    return Give(output, HandleOf<Handle>(node).Value, fault);
}

bool GiveCount(uint64_t* output, uint64_t count, Fault fault) {
    Check(*output == 0, "count is not 0 before the call");
    *output = fault.Kind == FaultKind::Count ? fault.Value : count;
    return true;
}

bool GiveFlag(uint8_t* output, uint8_t before, uint8_t flag) {
    Check(*output == before, "flag does not have its default before the call");
    *output = flag;
    return true;
}

size_t Size(const Json* list) {
    return list == nullptr ? 0 : list->size();
}

int32_t GiveNumber(const char* operation, EntitiesHandle entities, const char* list, uint64_t* count) {
    return Answer(operation, entities, [&](const Json& node, Fault fault) {
        return GiveCount(count, Size(Member(node, list)), fault);
    });
}

// Returns as many handles as exist and fit.
template <class Handle> int32_t GiveList(const char* operation, EntitiesHandle entities,
                                         const char* list, uint64_t count, Handle array[],
                                         uint64_t* returned) {
    return Answer(operation, entities, [&](const Json& node, Fault fault) {
        Check(std::all_of(array, array + count, IsNull<Handle>), "array is not cleared before the call");
        const Json* elements = Member(node, list);
        const uint64_t given = std::min<uint64_t>(count, Size(elements));
        for (size_t i = 0; i < given; ++i)
            array[i] = HandleOf<Handle>(&(*elements)[i]);
        return GiveCount(returned, given, fault);
    });
}

bool GiveNumbers(double output[], const Json* numbers, size_t count, double diagonal) {
    Check(std::all_of(output, output + count, [](double value) { return value == 0; }),
          "numbers are not 0 before the call");
    for (size_t i = 0; i < count; ++i)
        output[i] = numbers != nullptr ? Number((*numbers)[i]) : i % 5 == 0 ? diagonal : 0;
    return true;
}

template <class Element> DrawingElementHandle ToDrawingElement(const char* operation, Element element) {
    const Fault fault = NextCall(operation);
    return {fault.Kind == FaultKind::None ? element.Value : 0};
}

template <class Element>
int32_t GiveTransform(const char* operation, Element element, double transform[TransformValues]) {
    return Answer(operation, element, [&](const Json& node, Fault) {
        return GiveNumbers(transform, Member(node, "transform"), TransformValues, 1);
    });
}

template <class Owner>
int32_t GiveText(const char* operation, Owner owner, const char* name, StringHandle* string) {
    return Answer(operation, owner, [&](const Json& node, Fault) {
        const auto found = strings.find(string->Value);
        const Json* text = Member(node, name);
        if (found == strings.end() || text == nullptr)
            return false;
        found->second = Utf16FromUtf8(text->get<std::string>());
        return true;
    });
}

template <class Handle, class Made>
int32_t Release(const char* operation, Handle* handle, std::map<uint64_t, Made>& made) {
    return AnswerAny(operation, [&](Fault) {
        Check(IsNull(*handle) || made.count(handle->Value) == 1, "released an invalid handle");
        const bool done = made.erase(handle->Value) == 1;
        handle->Value = 0;
        return done;
    });
}

// The points, normals or coordinates of a face. Default normal: the plane's.
int32_t GiveTriples(const char* operation, MeshHelperHandle helper, const char* name, uint64_t count,
                    double array[][3], uint64_t* returned) {
    return Answer(operation, helper, [&](const Json& face, Fault fault) {
        static const Json Up = {0, 0, 1};
        const Json* triples = Member(face, name);
        const Json* plane = name == std::string("normals") ? Member(face, "plane") : nullptr;
        const uint64_t given =
            std::min<uint64_t>(count, Size(triples != nullptr ? triples : Member(face, "vertices")));
        for (size_t i = 0; i < given; ++i)
            for (size_t j = 0; j < 3; ++j) {
                const Json& triple = triples != nullptr ? (*triples)[i] : plane != nullptr ? *plane : Up;
                Check(array[i][j] == 0, "array is not cleared before the call");
                array[i][j] = Number(triple[j]);
            }
        return GiveCount(returned, given, fault);
    });
}

// A mesh helper is the face's value; it is valid until the face's UV helper is released.
template <class Work> int32_t AnswerMesh(const char* operation, MeshHelperHandle helper, Work work) {
    return Answer(operation, helper, [&](const Json& face, Fault fault) {
        Check(std::any_of(uvHelpers.begin(), uvHelpers.end(),
                          [&](const auto& entry) { return entry.second == &face; }),
              "mesh helper read without its UV helper");
        return work(face, fault);
    });
}

// Writes the content of the picture of a texture or an image.
bool WritePicture(const Json& node, const char* path) {
    std::FILE* file = OpenForWriting(Utf16FromUtf8(path));
    if (file == nullptr)
        return false;
    const Json* content = Member(node, Member(node, "content") != nullptr ? "content" : "file");
    const std::string bytes = content != nullptr ? content->get<std::string>() : "";
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    return std::fclose(file) == 0;
}

} // namespace

void SUInitialize(void) {
    NextCall("SUInitialize");
    Check(!running, "initialised twice");
    running = true;
}

void SUTerminate(void) {
    NextCall("SUTerminate");
    Check(running, "terminated without being initialised");
    Check(HadFault() || (strings.empty() && uvHelpers.empty() && imageReps.empty()),
          "strings, UV helpers or image reps were not released");
    running = false;
}

int32_t SUModelCreateFromFile(ModelHandle* model, const char* path) {
    const bool loaded = LoadScript(path);
    return AnswerAny(
        "SUModelCreateFromFile", [&](Fault fault) { return loaded && Give(model, &Script(), fault); },
        path);
}

int32_t SUModelGetEntities(ModelHandle model, EntitiesHandle* entities) {
    return Answer("SUModelGetEntities", model, [&](const Json& node, Fault fault) {
        return Give(entities, Member(node, "entities"), fault);
    });
}

int32_t SUModelGetNumAllMaterials(ModelHandle model, uint64_t* count) {
    return Answer("SUModelGetNumAllMaterials", model, [&](const Json& node, Fault fault) {
        const Json* list = Member(node, "materialList");
        return GiveCount(count, Size(list != nullptr ? list : Member(node, "materials")), fault);
    });
}

int32_t SUModelGetAllMaterials(ModelHandle model, uint64_t count, MaterialHandle materials[],
                               uint64_t* returned) {
    return Answer("SUModelGetAllMaterials", model, [&](const Json& node, Fault fault) {
        const Json* list = Member(node, "materialList");
        const Json* all = Member(node, "materials");
        const uint64_t given = std::min<uint64_t>(count, Size(list != nullptr ? list : all));
        for (size_t i = 0; i < given; ++i) {
            Check(IsNull(materials[i]), "array is not cleared before the call");
            const Json index = list != nullptr ? (*list)[i] : Json(i);
            materials[i] =
                HandleOf<MaterialHandle>(index.is_null() ? nullptr : &(*all)[index.get<size_t>()]);
        }
        return GiveCount(returned, given, fault);
    });
}

int32_t SUModelRelease(ModelHandle* model) {
    return AnswerAny(
        "SUModelRelease",
        [&](Fault) {
            const bool open = !IsNull(*model);
            model->Value = 0;
            return open;
        },
        IsNull(*model) ? "null" : "");
}

int32_t SUEntitiesGetNumFaces(EntitiesHandle entities, uint64_t* count) {
    return GiveNumber("SUEntitiesGetNumFaces", entities, "faces", count);
}

int32_t SUEntitiesGetFaces(EntitiesHandle entities, uint64_t count, FaceHandle faces[],
                           uint64_t* returned) {
    return GiveList("SUEntitiesGetFaces", entities, "faces", count, faces, returned);
}

int32_t SUEntitiesGetNumGroups(EntitiesHandle entities, uint64_t* count) {
    return GiveNumber("SUEntitiesGetNumGroups", entities, "groups", count);
}

int32_t SUEntitiesGetGroups(EntitiesHandle entities, uint64_t count, GroupHandle groups[],
                            uint64_t* returned) {
    return GiveList("SUEntitiesGetGroups", entities, "groups", count, groups, returned);
}

int32_t SUEntitiesGetNumInstances(EntitiesHandle entities, uint64_t* count) {
    return GiveNumber("SUEntitiesGetNumInstances", entities, "instances", count);
}

int32_t SUEntitiesGetInstances(EntitiesHandle entities, uint64_t count,
                               ComponentInstanceHandle instances[], uint64_t* returned) {
    return GiveList("SUEntitiesGetInstances", entities, "instances", count, instances, returned);
}

int32_t SUEntitiesGetNumImages(EntitiesHandle entities, uint64_t* count) {
    return GiveNumber("SUEntitiesGetNumImages", entities, "images", count);
}

int32_t SUEntitiesGetImages(EntitiesHandle entities, uint64_t count, ImageHandle images[],
                            uint64_t* returned) {
    return GiveList("SUEntitiesGetImages", entities, "images", count, images, returned);
}

DrawingElementHandle SUFaceToDrawingElement(FaceHandle face) {
    return ToDrawingElement("SUFaceToDrawingElement", face);
}

int32_t SUFaceGetFrontMaterial(FaceHandle face, MaterialHandle* material) {
    return Answer("SUFaceGetFrontMaterial", face, [&](const Json& node, Fault fault) {
        return Give(material, Referred(node, "front", "materials"), fault);
    });
}

int32_t SUFaceGetBackMaterial(FaceHandle face, MaterialHandle* material) {
    return Answer("SUFaceGetBackMaterial", face, [&](const Json& node, Fault fault) {
        return Give(material, Referred(node, "back", "materials"), fault);
    });
}

int32_t SUFaceGetPlane(FaceHandle face, double plane[PlaneValues]) {
    return Answer("SUFaceGetPlane", face, [&](const Json& node, Fault) {
        static const Json Ground = {0, 0, 1, 0};
        const Json* own = Member(node, "plane");
        return GiveNumbers(plane, own != nullptr ? own : &Ground, PlaneValues, 0);
    });
}

int32_t SUFaceGetUVHelper(FaceHandle face, bool front, bool back, TextureWriterHandle textureWriter,
                          UVHelperHandle* uvHelper) {
    return Answer("SUFaceGetUVHelper", face, [&](const Json& node, Fault fault) {
        Check(front && back, "UV helper not for both sides");
        Check(textureWriter.Value == WriterValue, "not the texture writer");
        uvHelpers[++lastNumber] = &node;
        return Give(uvHelper, lastNumber, fault);
    });
}

int32_t SUMeshHelperCreateWithUVHelper(MeshHelperHandle* meshHelper, FaceHandle face,
                                       UVHelperHandle uvHelper) {
    return Answer("SUMeshHelperCreateWithUVHelper", face, [&](const Json& node, Fault fault) {
        const auto found = uvHelpers.find(uvHelper.Value);
        return found != uvHelpers.end() && found->second == &node && Give(meshHelper, &node, fault);
    });
}

int32_t SUMeshHelperGetNumTriangles(MeshHelperHandle meshHelper, uint64_t* count) {
    return AnswerMesh("SUMeshHelperGetNumTriangles", meshHelper, [&](const Json& face, Fault fault) {
        return GiveCount(count, Size(Member(face, "indices")) / 3, fault);
    });
}

int32_t SUMeshHelperGetNumVertices(MeshHelperHandle meshHelper, uint64_t* count) {
    return AnswerMesh("SUMeshHelperGetNumVertices", meshHelper, [&](const Json& face, Fault fault) {
        return GiveCount(count, Size(Member(face, "vertices")), fault);
    });
}

int32_t SUMeshHelperGetVertices(MeshHelperHandle meshHelper, uint64_t count, double points[][3],
                                uint64_t* returned) {
    return GiveTriples("SUMeshHelperGetVertices", meshHelper, "vertices", count, points, returned);
}

int32_t SUMeshHelperGetNormals(MeshHelperHandle meshHelper, uint64_t count, double normals[][3],
                               uint64_t* returned) {
    return GiveTriples("SUMeshHelperGetNormals", meshHelper, "normals", count, normals, returned);
}

int32_t SUMeshHelperGetFrontSTQCoords(MeshHelperHandle meshHelper, uint64_t count, double stq[][3],
                                      uint64_t* returned) {
    return GiveTriples("SUMeshHelperGetFrontSTQCoords", meshHelper, "frontStq", count, stq, returned);
}

int32_t SUMeshHelperGetBackSTQCoords(MeshHelperHandle meshHelper, uint64_t count, double stq[][3],
                                     uint64_t* returned) {
    return GiveTriples("SUMeshHelperGetBackSTQCoords", meshHelper, "backStq", count, stq, returned);
}

int32_t SUMeshHelperGetVertexIndices(MeshHelperHandle meshHelper, uint64_t count, uint64_t indices[],
                                     uint64_t* returned) {
    return AnswerMesh("SUMeshHelperGetVertexIndices", meshHelper, [&](const Json& face, Fault fault) {
        const Json* own = Member(face, "indices");
        const uint64_t given = std::min<uint64_t>(count, Size(own));
        for (size_t i = 0; i < given; ++i)
            indices[i] = (*own)[i].get<uint64_t>();
        return GiveCount(returned, given, fault);
    });
}

int32_t SUUVHelperRelease(UVHelperHandle* uvHelper) {
    return Release("SUUVHelperRelease", uvHelper, uvHelpers);
}

int32_t SUMaterialGetName(MaterialHandle material, StringHandle* name) {
    return GiveText("SUMaterialGetName", material, "name", name);
}

int32_t SUMaterialGetColor(MaterialHandle material, uint8_t rgba[4]) {
    return Answer("SUMaterialGetColor", material, [&](const Json& node, Fault) {
        const Json* color = Member(node, "color");
        for (size_t i = 0; i < Size(color); ++i)
            rgba[i] = (*color)[i].get<uint8_t>();
        return color != nullptr;
    });
}

int32_t SUMaterialGetUseOpacity(MaterialHandle material, uint8_t* useOpacity) {
    return Answer("SUMaterialGetUseOpacity", material, [&](const Json& node, Fault) {
        return GiveFlag(useOpacity, 0, Byte(node, "useOpacity", 0));
    });
}

int32_t SUMaterialGetOpacity(MaterialHandle material, double* opacity) {
    return Answer("SUMaterialGetOpacity", material, [&](const Json& node, Fault) {
        Check(Byte(node, "useOpacity", 0) != 0, "opacity asked for although it is not in use");
        Check(*opacity == 0, "opacity is not 0 before the call");
        *opacity = NumberOr(node, "opacity", 1);
        return true;
    });
}

int32_t SUMaterialGetType(MaterialHandle material, int32_t* type) {
    return Answer("SUMaterialGetType", material, [&](const Json& node, Fault) {
        Check(*type == MaterialTypePlain, "type is not 0 before the call");
        *type = node.value("type", Member(node, "texture") != nullptr ? MaterialTypeTextured
                                                                      : MaterialTypePlain);
        return true;
    });
}

int32_t SUMaterialGetTexture(MaterialHandle material, TextureHandle* texture) {
    return Answer("SUMaterialGetTexture", material, [&](const Json& node, Fault fault) {
        const Json* own = Member(node, "texture");
        return own != nullptr && Give(texture, own, fault);
    });
}

int32_t SUTextureGetFileName(TextureHandle texture, StringHandle* fileName) {
    return GiveText("SUTextureGetFileName", texture, "file", fileName);
}

int32_t SUTextureGetDimensions(TextureHandle texture, uint64_t* width, uint64_t* height, double* sScale,
                               double* tScale) {
    return Answer("SUTextureGetDimensions", texture, [&](const Json& node, Fault) {
        Check(*sScale == 1 && *tScale == 1, "scales are not 1 before the call");
        *width = *height = 64;
        *sScale = NumberOr(node, "sScale", 1);
        *tScale = NumberOr(node, "tScale", 1);
        return true;
    });
}

int32_t SUTextureWriteToFile(TextureHandle texture, const char* path) {
    return AnswerAny(
        "SUTextureWriteToFile",
        [&](Fault) { return !IsNull(texture) && WritePicture(NodeOf(texture), path); }, path);
}

DrawingElementHandle SUImageToDrawingElement(ImageHandle image) {
    return ToDrawingElement("SUImageToDrawingElement", image);
}

EntityHandle SUImageToEntity(ImageHandle image) {
    return {ToDrawingElement("SUImageToEntity", image).Value};
}

int32_t SUImageGetFileName(ImageHandle image, StringHandle* fileName) {
    return GiveText("SUImageGetFileName", image, "file", fileName);
}

int32_t SUImageGetTransform(ImageHandle image, double transform[TransformValues]) {
    return GiveTransform("SUImageGetTransform", image, transform);
}

int32_t SUImageRepCreate(ImageRepHandle* imageRep) {
    return AnswerAny("SUImageRepCreate", [&](Fault fault) {
        imageReps[++lastNumber] = nullptr;
        return Give(imageRep, lastNumber, fault);
    });
}

int32_t SUImageGetImageRep(ImageHandle image, ImageRepHandle* imageRep) {
    return Answer("SUImageGetImageRep", image, [&](const Json& node, Fault) {
        const auto found = imageReps.find(imageRep->Value);
        if (found == imageReps.end())
            return false;
        found->second = &node;
        return true;
    });
}

int32_t SUImageRepGetPixelDimensions(ImageRepHandle imageRep, uint64_t* width, uint64_t* height) {
    return AnswerAny("SUImageRepGetPixelDimensions", [&](Fault fault) {
        const auto found = imageReps.find(imageRep.Value);
        if (found == imageReps.end() || found->second == nullptr)
            return false;
        return GiveCount(width, found->second->value("width", uint64_t(1)), fault) &&
               GiveCount(height, found->second->value("height", uint64_t(1)), fault);
    });
}

int32_t SUImageRepRelease(ImageRepHandle* imageRep) {
    return Release("SUImageRepRelease", imageRep, imageReps);
}

DrawingElementHandle SUGroupToDrawingElement(GroupHandle group) {
    return ToDrawingElement("SUGroupToDrawingElement", group);
}

int32_t SUGroupGetName(GroupHandle group, StringHandle* name) {
    return GiveText("SUGroupGetName", group, "name", name);
}

int32_t SUGroupGetTransform(GroupHandle group, double transform[TransformValues]) {
    return GiveTransform("SUGroupGetTransform", group, transform);
}

int32_t SUGroupGetEntities(GroupHandle group, EntitiesHandle* entities) {
    return Answer("SUGroupGetEntities", group, [&](const Json& node, Fault fault) {
        return Give(entities, Member(node, "entities"), fault);
    });
}

DrawingElementHandle SUComponentInstanceToDrawingElement(ComponentInstanceHandle instance) {
    return ToDrawingElement("SUComponentInstanceToDrawingElement", instance);
}

int32_t SUComponentInstanceGetDefinition(ComponentInstanceHandle instance,
                                         ComponentDefinitionHandle* definition) {
    return Answer("SUComponentInstanceGetDefinition", instance, [&](const Json& node, Fault fault) {
        return Give(definition, Referred(node, "definition", "definitions"), fault);
    });
}

int32_t SUComponentInstanceGetTransform(ComponentInstanceHandle instance,
                                        double transform[TransformValues]) {
    return GiveTransform("SUComponentInstanceGetTransform", instance, transform);
}

int32_t SUComponentDefinitionGetEntities(ComponentDefinitionHandle definition,
                                         EntitiesHandle* entities) {
    return Answer("SUComponentDefinitionGetEntities", definition,
                  [&](const Json& node, Fault fault) { return Give(entities, &node, fault); });
}

int32_t SUDrawingElementGetHidden(DrawingElementHandle element, uint8_t* hidden) {
    return Answer("SUDrawingElementGetHidden", element,
                  [&](const Json& node, Fault) { return GiveFlag(hidden, 0, Byte(node, "hidden", 0)); });
}

int32_t SUDrawingElementGetLayer(DrawingElementHandle element, LayerHandle* layer) {
    return Answer("SUDrawingElementGetLayer", element, [&](const Json& node, Fault fault) {
        return Give(layer, Referred(node, "layer", "layers"), fault);
    });
}

int32_t SUDrawingElementGetMaterial(DrawingElementHandle element, MaterialHandle* material) {
    return Answer("SUDrawingElementGetMaterial", element, [&](const Json& node, Fault fault) {
        return Give(material, Referred(node, "material", "materials"), fault);
    });
}

int32_t SULayerGetVisibility(LayerHandle layer, uint8_t* visible) {
    return Answer("SULayerGetVisibility", layer, [&](const Json& node, Fault) {
        return GiveFlag(visible, 1, Byte(node, "visible", 1));
    });
}

int32_t SUStringCreate(StringHandle* string) {
    return AnswerAny("SUStringCreate", [&](Fault fault) {
        strings[++lastNumber];
        return Give(string, lastNumber, fault);
    });
}

int32_t SUStringGetUTF16(StringHandle string, uint64_t limit, char16_t* text, uint64_t* length) {
    return AnswerAny("SUStringGetUTF16", [&](Fault fault) {
        Check(limit == TextLimit, "limit is not 260");
        Check(text[0] == 0, "text is not cleared before the call");
        const auto found = strings.find(string.Value);
        if (found == strings.end())
            return false;
        if (fault.Kind == FaultKind::Unterminated) {
            std::fill(text, text + limit, u'x');
            *length = limit;
            return true;
        }
        *length = found->second.copy(text, limit - 1);
        text[*length] = 0;
        return true;
    });
}

int32_t SUStringRelease(StringHandle* string) {
    return Release("SUStringRelease", string, strings);
}

int32_t SUTextureWriterCreate(TextureWriterHandle* textureWriter) {
    return AnswerAny("SUTextureWriterCreate",
                     [&](Fault fault) { return Give(textureWriter, WriterValue, fault); });
}

int32_t SUTextureWriterLoadEntity(TextureWriterHandle textureWriter, EntityHandle entity,
                                  int32_t* textureId) {
    return Answer("SUTextureWriterLoadEntity", entity, [&](const Json& node, Fault) {
        Check(textureWriter.Value == WriterValue, "not the texture writer");
        Check(*textureId == 0, "texture id is not 0 before the call");
        loadedEntities.push_back(&node);
        *textureId = int32_t(loadedEntities.size());
        return true;
    });
}

int32_t SUTextureWriterWriteTexture(TextureWriterHandle textureWriter, int32_t textureId,
                                    const char* path, bool reduceSize) {
    return AnswerAny(
        "SUTextureWriterWriteTexture",
        [&](Fault) {
            Check(textureWriter.Value == WriterValue, "not the texture writer");
            Check(!reduceSize, "the picture is to be reduced");
            return textureId > 0 && size_t(textureId) <= loadedEntities.size() &&
                   WritePicture(*loadedEntities[size_t(textureId) - 1], path);
        },
        path);
}
