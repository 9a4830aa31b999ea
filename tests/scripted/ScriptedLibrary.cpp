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
#include <limits>
#include <map>
#include <vector>

#define IDENTITY 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1

using Json = nlohmann::json;

namespace {

constexpr int32_t Done = 0;
constexpr int32_t Failed = 1;
constexpr uint64_t WriterValue = 0x77;
constexpr uint64_t Garbage = 0xA5A5A5A5A5A5A5A5;

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

// One call: its fault or its work. Fails if the work returns false.
template <class Work>
int32_t AnswerAny(const char* operation, Work work, const std::string& detail = "") {
    const Fault fault = NextCall(operation, detail);
    Check(running, "called before SUInitialize or after SUTerminate");
    if (Has(fault, FaultKind::Fail))
        return Failed;
    if (Has(fault, FaultKind::Silent))
        return Done;
    const bool fails = fault.Kind == FaultKind::FailLate || fault.Kind == FaultKind::Scribble;
    return work(fault) && !fails ? Done : Failed;
}

// The same for operations on JSON values. Fails for a null owner.
template <class Owner, class Work> int32_t Answer(const char* operation, Owner owner, Work work) {
    return AnswerAny(operation,
                     [&](const Fault& fault) { return !IsNull(owner) && work(NodeOf(owner), fault); });
}

// A mesh helper is the face's value; it is valid until the face's UV helper is released.
template <class Work> int32_t Answer(const char* operation, MeshHelperHandle helper, Work work) {
    return Answer(operation, FaceHandle{helper.Value}, [&](const Json& face, const Fault& fault) {
        Check(std::any_of(uvHelpers.begin(), uvHelpers.end(),
                          [&](const auto& entry) { return entry.second == &face; }),
              "mesh helper read without its UV helper");
        return work(face, fault);
    });
}

// Whether the outputs that aren't handles are overwritten.
bool Spoils(const Fault& fault) {
    const bool lies = Has(fault, FaultKind::Lie);
    return Has(fault, FaultKind::Scribble) || lies;
}

double HostileNumber() {
    constexpr double numbers[] = {std::numeric_limits<double>::quiet_NaN(),
                                  HUGE_VAL,
                                  -HUGE_VAL,
                                  1e300,
                                  -3.5e38,
                                  1e-320,
                                  0.0,
                                  -1.0};
    return numbers[Random(std::size(numbers))];
}

template <class Handle> Handle Changed(Handle handle, const Fault& fault) {
    static std::vector<Handle> earlier;
    earlier.push_back(handle);
    if (Has(fault, FaultKind::Null))
        return {0};
    if (Has(fault, FaultKind::Swap))
        return earlier[Random(earlier.size())];
    return handle;
}

// The same for an output.
template <class Handle> Handle Stored(Handle handle, const Fault& fault) {
    return Has(fault, FaultKind::Scribble) ? Handle{Garbage} : Changed(handle, fault);
}

template <class Handle> bool Give(Handle* output, uint64_t value, const Fault& fault) {
    Check(IsNull(*output), "output is not null before the call");
    *output = Stored(Handle{value}, fault);
    return true;
}

template <class Handle> bool Give(Handle* output, const Json* node, const Fault& fault) {
    return Give(output, HandleOf<Handle>(node).Value, fault);
}

bool GiveCount(uint64_t* output, uint64_t count, const Fault& fault) {
    Check(*output == 0, "count is not 0 before the call");
    *output = Has(fault, FaultKind::Count) ? fault.Value.value_or(count + 1)
              : Spoils(fault)              ? Garbage
                                           : count;
    return true;
}

size_t Size(const Json* list) {
    return list == nullptr ? 0 : list->size();
}

template <class Owner> int32_t GiveNumber(const char* operation, Owner owner, const char* list,
                                          size_t divisor, uint64_t* count) {
    return Answer(operation, owner, [&](const Json& node, const Fault& fault) {
        return GiveCount(count, Size(Member(node, list)) / divisor, fault);
    });
}

// Returns as many handles as exist and fit.
template <class Handle> int32_t GiveList(const char* operation, EntitiesHandle entities,
                                         const char* list, uint64_t count, Handle array[],
                                         uint64_t* returned) {
    return Answer(operation, entities, [&](const Json& node, const Fault& fault) {
        Check(std::all_of(array, array + count, IsNull<Handle>), "array is not cleared before the call");
        const Json* elements = Member(node, list);
        const uint64_t given = std::min<uint64_t>(count, Size(elements));
        for (size_t i = 0; i < given; ++i)
            array[i] = Stored(HandleOf<Handle>(&(*elements)[i]), fault);
        return GiveCount(returned, given, fault);
    });
}

bool GiveNumbers(double output[], const Json* numbers, size_t count, const Fault& fault) {
    Check(std::all_of(output, output + count, [](double value) { return value == 0; }),
          "numbers are not 0 before the call");
    const bool spoils = Spoils(fault);
    for (size_t i = 0; i < count; ++i)
        output[i] = spoils ? HostileNumber() : Number((*numbers)[i]);
    return true;
}

// The points, normals or coordinates of a face. Default normal: the plane's.
int32_t GiveTriples(const char* operation, MeshHelperHandle helper, const char* name, uint64_t count,
                    double array[][3], uint64_t* returned) {
    return Answer(operation, helper, [&](const Json& face, const Fault& fault) {
        static const Json Up = {0, 0, 1};
        const Json* triples = Member(face, name);
        const Json* plane = name == std::string("normals") ? Member(face, "plane") : nullptr;
        const uint64_t given =
            std::min<uint64_t>(count, Size(triples != nullptr ? triples : Member(face, "vertices")));
        const bool spoils = Spoils(fault);
        for (size_t i = 0; i < given; ++i)
            for (size_t j = 0; j < 3; ++j) {
                const Json& triple = triples != nullptr ? (*triples)[i] : plane != nullptr ? *plane : Up;
                Check(array[i][j] == 0, "array is not cleared before the call");
                array[i][j] = spoils ? HostileNumber() : Number(triple[j]);
            }
        return GiveCount(returned, given, fault);
    });
}

template <class Owner>
int32_t GiveText(const char* operation, Owner owner, const char* name, StringHandle* string) {
    return Answer(operation, owner, [&](const Json& node, const Fault&) {
        const auto found = strings.find(string->Value);
        const Json* text = Member(node, name);
        if (found == strings.end() || text == nullptr)
            return false;
        found->second = Utf16FromUtf8(text->get<std::string>());
        return true;
    });
}

template <class Owner> int32_t GiveFlag(const char* operation, Owner owner, const char* name,
                                        uint8_t otherwise, uint8_t* flag) {
    return Answer(operation, owner, [&](const Json& node, const Fault& fault) {
        Check(*flag == otherwise, "flag does not have its default before the call");
        *flag = Spoils(fault) ? uint8_t(Garbage) : Byte(node, name, otherwise);
        return true;
    });
}

template <class Handle, class Made>
int32_t Release(const char* operation, Handle* handle, std::map<uint64_t, Made>& made) {
    return AnswerAny(operation, [&](const Fault&) {
        Check(IsNull(*handle) || made.count(handle->Value) == 1, "released an invalid handle");
        const bool done = made.erase(handle->Value) == 1;
        handle->Value = 0;
        return done;
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

// The families of operations that differ only in names.
// NOLINTBEGIN(bugprone-macro-parentheses): the arguments are types and names.

#define TO_ELEMENT(name, Element, Result)                                                               \
    Result name(Element element) {                                                                      \
        return Changed(Result{element.Value}, NextCall(#name));                                         \
    }
TO_ELEMENT(SUFaceToDrawingElement, FaceHandle, DrawingElementHandle)
TO_ELEMENT(SUImageToDrawingElement, ImageHandle, DrawingElementHandle)
TO_ELEMENT(SUImageToEntity, ImageHandle, EntityHandle)
TO_ELEMENT(SUGroupToDrawingElement, GroupHandle, DrawingElementHandle)
TO_ELEMENT(SUComponentInstanceToDrawingElement, ComponentInstanceHandle, DrawingElementHandle)

#define NUMBER(name, Owner, list, divisor)                                                              \
    int32_t name(Owner owner, uint64_t* count) {                                                        \
        return GiveNumber(#name, owner, list, divisor, count);                                          \
    }
NUMBER(SUEntitiesGetNumFaces, EntitiesHandle, "faces", 1)
NUMBER(SUEntitiesGetNumGroups, EntitiesHandle, "groups", 1)
NUMBER(SUEntitiesGetNumInstances, EntitiesHandle, "instances", 1)
NUMBER(SUEntitiesGetNumImages, EntitiesHandle, "images", 1)
NUMBER(SUMeshHelperGetNumVertices, MeshHelperHandle, "vertices", 1)
NUMBER(SUMeshHelperGetNumTriangles, MeshHelperHandle, "indices", 3)

#define LIST(name, list, Handle)                                                                        \
    int32_t name(EntitiesHandle entities, uint64_t count, Handle array[], uint64_t* returned) {         \
        return GiveList(#name, entities, list, count, array, returned);                                 \
    }
LIST(SUEntitiesGetFaces, "faces", FaceHandle)
LIST(SUEntitiesGetGroups, "groups", GroupHandle)
LIST(SUEntitiesGetInstances, "instances", ComponentInstanceHandle)
LIST(SUEntitiesGetImages, "images", ImageHandle)

#define TRIPLES(name, list)                                                                             \
    int32_t name(MeshHelperHandle helper, uint64_t count, double array[][3], uint64_t* returned) {      \
        return GiveTriples(#name, helper, list, count, array, returned);                                \
    }
TRIPLES(SUMeshHelperGetVertices, "vertices")
TRIPLES(SUMeshHelperGetNormals, "normals")
TRIPLES(SUMeshHelperGetFrontSTQCoords, "frontStq")
TRIPLES(SUMeshHelperGetBackSTQCoords, "backStq")

// The JSON value is an expression of the owner's node.
#define HANDLE(name, Owner, Handle, value)                                                              \
    int32_t name(Owner owner, Handle* handle) {                                                         \
        return Answer(#name, owner, [&](const Json& node, const Fault& fault) {                         \
            return Give(handle, value, fault);                                                          \
        });                                                                                             \
    }
HANDLE(SUModelGetEntities, ModelHandle, EntitiesHandle, Member(node, "entities"))
HANDLE(SUGroupGetEntities, GroupHandle, EntitiesHandle, Member(node, "entities"))
HANDLE(SUComponentDefinitionGetEntities, ComponentDefinitionHandle, EntitiesHandle, &node)
HANDLE(SUComponentInstanceGetDefinition, ComponentInstanceHandle, ComponentDefinitionHandle,
       Referred(node, "definition", "definitions"))
HANDLE(SUFaceGetFrontMaterial, FaceHandle, MaterialHandle, Referred(node, "front", "materials"))
HANDLE(SUFaceGetBackMaterial, FaceHandle, MaterialHandle, Referred(node, "back", "materials"))
HANDLE(SUDrawingElementGetLayer, DrawingElementHandle, LayerHandle, Referred(node, "layer", "layers"))
HANDLE(SUDrawingElementGetMaterial, DrawingElementHandle, MaterialHandle,
       Referred(node, "material", "materials"))

#define NUMBERS(name, Owner, member, size, ...)                                                         \
    int32_t name(Owner owner, double values[size]) {                                                    \
        return Answer(#name, owner, [&](const Json& node, const Fault& fault) {                         \
            static const Json Otherwise = {__VA_ARGS__};                                                \
            const Json* own = Member(node, member);                                                     \
            return GiveNumbers(values, own != nullptr ? own : &Otherwise, size, fault);                 \
        });                                                                                             \
    }
NUMBERS(SUFaceGetPlane, FaceHandle, "plane", PlaneValues, 0, 0, 1, 0)
NUMBERS(SUImageGetTransform, ImageHandle, "transform", TransformValues, IDENTITY)
NUMBERS(SUGroupGetTransform, GroupHandle, "transform", TransformValues, IDENTITY)
NUMBERS(SUComponentInstanceGetTransform, ComponentInstanceHandle, "transform", TransformValues, IDENTITY)

#define TEXT(name, Owner, member)                                                                       \
    int32_t name(Owner owner, StringHandle* string) {                                                   \
        return GiveText(#name, owner, member, string);                                                  \
    }
TEXT(SUMaterialGetName, MaterialHandle, "name")
TEXT(SUTextureGetFileName, TextureHandle, "file")
TEXT(SUImageGetFileName, ImageHandle, "file")
TEXT(SUGroupGetName, GroupHandle, "name")

#define FLAG(name, Owner, member, otherwise)                                                            \
    int32_t name(Owner owner, uint8_t* flag) {                                                          \
        return GiveFlag(#name, owner, member, otherwise, flag);                                         \
    }
FLAG(SUMaterialGetUseOpacity, MaterialHandle, "useOpacity", 0)
FLAG(SUDrawingElementGetHidden, DrawingElementHandle, "hidden", 0)
FLAG(SULayerGetVisibility, LayerHandle, "visible", 1)

#define CREATE(name, Handle, objects)                                                                   \
    int32_t name(Handle* handle) {                                                                      \
        return AnswerAny(#name, [&](const Fault& fault) {                                               \
            objects[++lastNumber];                                                                      \
            return Give(handle, lastNumber, fault);                                                     \
        });                                                                                             \
    }
CREATE(SUStringCreate, StringHandle, strings)
CREATE(SUImageRepCreate, ImageRepHandle, imageReps)

#define RELEASE(name, Handle, objects)                                                                  \
    int32_t name(Handle* handle) {                                                                      \
        return Release(#name, handle, objects);                                                         \
    }
RELEASE(SUStringRelease, StringHandle, strings)
RELEASE(SUImageRepRelease, ImageRepHandle, imageReps)
RELEASE(SUUVHelperRelease, UVHelperHandle, uvHelpers)
// NOLINTEND(bugprone-macro-parentheses)

// The other operations.

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
        "SUModelCreateFromFile",
        [&](const Fault& fault) { return loaded && Give(model, &Script(), fault); }, path);
}

int32_t SUModelGetNumAllMaterials(ModelHandle model, uint64_t* count) {
    return Answer("SUModelGetNumAllMaterials", model, [&](const Json& node, const Fault& fault) {
        const Json* list = Member(node, "materialList");
        return GiveCount(count, Size(list != nullptr ? list : Member(node, "materials")), fault);
    });
}

int32_t SUModelGetAllMaterials(ModelHandle model, uint64_t count, MaterialHandle materials[],
                               uint64_t* returned) {
    return Answer("SUModelGetAllMaterials", model, [&](const Json& node, const Fault& fault) {
        const Json* list = Member(node, "materialList");
        const Json* all = Member(node, "materials");
        const uint64_t given = std::min<uint64_t>(count, Size(list != nullptr ? list : all));
        for (size_t i = 0; i < given; ++i) {
            Check(IsNull(materials[i]), "array is not cleared before the call");
            const Json index = list != nullptr ? (*list)[i] : Json(i);
            const Json* own = index.is_null() ? nullptr : &(*all)[index.get<size_t>()];
            materials[i] = Stored(HandleOf<MaterialHandle>(own), fault);
        }
        return GiveCount(returned, given, fault);
    });
}

int32_t SUModelRelease(ModelHandle* model) {
    return AnswerAny(
        "SUModelRelease",
        [&](const Fault&) {
            const bool open = !IsNull(*model);
            model->Value = 0;
            return open;
        },
        IsNull(*model) ? "null" : "");
}

int32_t SUFaceGetUVHelper(FaceHandle face, bool front, bool back, TextureWriterHandle textureWriter,
                          UVHelperHandle* uvHelper) {
    return Answer("SUFaceGetUVHelper", face, [&](const Json& node, const Fault& fault) {
        Check(front && back, "UV helper not for both sides");
        Check(textureWriter.Value == WriterValue, "not the texture writer");
        uvHelpers[++lastNumber] = &node;
        return Give(uvHelper, lastNumber, fault);
    });
}

int32_t SUMeshHelperCreateWithUVHelper(MeshHelperHandle* meshHelper, FaceHandle face,
                                       UVHelperHandle uvHelper) {
    return Answer("SUMeshHelperCreateWithUVHelper", face, [&](const Json& node, const Fault& fault) {
        const auto found = uvHelpers.find(uvHelper.Value);
        return found != uvHelpers.end() && found->second == &node && Give(meshHelper, &node, fault);
    });
}

int32_t SUMeshHelperGetVertexIndices(MeshHelperHandle meshHelper, uint64_t count, uint64_t indices[],
                                     uint64_t* returned) {
    return Answer("SUMeshHelperGetVertexIndices", meshHelper, [&](const Json& face, const Fault& fault) {
        const Json* own = Member(face, "indices");
        const uint64_t given = std::min<uint64_t>(count, Size(own));
        const bool spoils = Spoils(fault);
        for (size_t i = 0; i < given; ++i)
            indices[i] = spoils ? Garbage : (*own)[i].get<uint64_t>();
        return GiveCount(returned, given, fault);
    });
}

int32_t SUMaterialGetColor(MaterialHandle material, uint8_t rgba[4]) {
    return Answer("SUMaterialGetColor", material, [&](const Json& node, const Fault& fault) {
        const Json* color = Member(node, "color");
        const bool spoils = Spoils(fault);
        for (size_t i = 0; i < Size(color); ++i)
            rgba[i] = spoils ? uint8_t(Garbage) : (*color)[i].get<uint8_t>();
        return color != nullptr;
    });
}

int32_t SUMaterialGetOpacity(MaterialHandle material, double* opacity) {
    return Answer("SUMaterialGetOpacity", material, [&](const Json& node, const Fault& fault) {
        Check(Byte(node, "useOpacity", 0) != 0, "opacity asked for although it is not in use");
        Check(*opacity == 0, "opacity is not 0 before the call");
        *opacity = Spoils(fault) ? HostileNumber() : NumberOr(node, "opacity", 1);
        return true;
    });
}

int32_t SUMaterialGetType(MaterialHandle material, int32_t* type) {
    return Answer("SUMaterialGetType", material, [&](const Json& node, const Fault& fault) {
        Check(*type == MaterialTypePlain, "type is not 0 before the call");
        const Json* texture = Member(node, "texture");
        *type = Spoils(fault)
                    ? int32_t(Garbage)
                    : node.value("type", texture != nullptr ? MaterialTypeTextured : MaterialTypePlain);
        return true;
    });
}

int32_t SUMaterialGetTexture(MaterialHandle material, TextureHandle* texture) {
    return Answer("SUMaterialGetTexture", material, [&](const Json& node, const Fault& fault) {
        const Json* own = Member(node, "texture");
        return own != nullptr && Give(texture, own, fault);
    });
}

int32_t SUTextureGetDimensions(TextureHandle texture, uint64_t* width, uint64_t* height, double* sScale,
                               double* tScale) {
    return Answer("SUTextureGetDimensions", texture, [&](const Json& node, const Fault& fault) {
        Check(*sScale == 1 && *tScale == 1, "scales are not 1 before the call");
        *width = *height = 64;
        const bool spoils = Spoils(fault);
        *sScale = spoils ? HostileNumber() : NumberOr(node, "sScale", 1);
        *tScale = spoils ? HostileNumber() : NumberOr(node, "tScale", 1);
        return true;
    });
}

int32_t SUTextureWriteToFile(TextureHandle texture, const char* path) {
    return AnswerAny(
        "SUTextureWriteToFile",
        [&](const Fault&) { return !IsNull(texture) && WritePicture(NodeOf(texture), path); }, path);
}

int32_t SUImageGetImageRep(ImageHandle image, ImageRepHandle* imageRep) {
    return Answer("SUImageGetImageRep", image, [&](const Json& node, const Fault&) {
        const auto found = imageReps.find(imageRep->Value);
        if (found == imageReps.end())
            return false;
        found->second = &node;
        return true;
    });
}

int32_t SUImageRepGetPixelDimensions(ImageRepHandle imageRep, uint64_t* width, uint64_t* height) {
    return AnswerAny("SUImageRepGetPixelDimensions", [&](const Fault& fault) {
        const auto found = imageReps.find(imageRep.Value);
        if (found == imageReps.end() || found->second == nullptr)
            return false;
        return GiveCount(width, found->second->value("width", uint64_t(1)), fault) &&
               GiveCount(height, found->second->value("height", uint64_t(1)), fault);
    });
}

int32_t SUStringGetUTF16(StringHandle string, uint64_t limit, char16_t* text, uint64_t* length) {
    return AnswerAny("SUStringGetUTF16", [&](const Fault& fault) {
        Check(limit == TextLimit, "limit is not 260");
        Check(text[0] == 0, "text is not cleared before the call");
        const auto found = strings.find(string.Value);
        if (found == strings.end())
            return false;
        if (Spoils(fault)) {
            std::fill(text, text + limit, u'x');
            return GiveCount(length, limit, fault);
        }
        const size_t units = found->second.copy(text, limit - 1);
        text[units] = 0;
        return GiveCount(length, units, fault);
    });
}

int32_t SUTextureWriterCreate(TextureWriterHandle* textureWriter) {
    return AnswerAny("SUTextureWriterCreate",
                     [&](const Fault& fault) { return Give(textureWriter, WriterValue, fault); });
}

int32_t SUTextureWriterLoadEntity(TextureWriterHandle textureWriter, EntityHandle entity,
                                  int32_t* textureId) {
    return Answer("SUTextureWriterLoadEntity", entity, [&](const Json& node, const Fault& fault) {
        Check(textureWriter.Value == WriterValue, "not the texture writer");
        Check(*textureId == 0, "texture id is not 0 before the call");
        loadedEntities.push_back(&node);
        *textureId = Spoils(fault) ? int32_t(Garbage) : int32_t(loadedEntities.size());
        return true;
    });
}

int32_t SUTextureWriterWriteTexture(TextureWriterHandle textureWriter, int32_t textureId,
                                    const char* path, bool reduceSize) {
    return AnswerAny(
        "SUTextureWriterWriteTexture",
        [&](const Fault&) {
            Check(textureWriter.Value == WriterValue, "not the texture writer");
            Check(!reduceSize, "the picture is to be reduced");
            return textureId > 0 && size_t(textureId) <= loadedEntities.size() &&
                   WritePicture(*loadedEntities[size_t(textureId) - 1], path);
        },
        path);
}
