// The model document as a whole: definitions, the lists of elements, and how deep they nest.
#include "provider/document/ModelDocument.h"

#include "provider/document/DocumentFaces.h"
#include "provider/document/DocumentMaterials.h"
#include "provider/document/Transforms.h"

#include <algorithm>

constexpr double Version = 1.0;

namespace {

bool ReadMatrix(DocumentReader& reader, uint32_t node, Transform& transform) {
    if (CountIn(reader.Json, node) != transform.size()) {
        return Fail(reader, node, "this must be an object or an array of 16 numbers");
    }
    for (uint32_t i = 0; i < transform.size(); ++i) {
        if (!ReadNumber(reader, ValueIn(reader.Json, node, i), transform[i])) {
            return false;
        }
    }
    return transform[15] != 0.0 ||
           Fail(reader, ValueIn(reader.Json, node, 15), "the homogeneous scale must not be 0");
}

bool ReadScale(DocumentReader& reader, uint32_t node, Point3& factors) {
    if (KindOf(reader.Json, node) == JsonKind::Array) {
        return ReadPoint(reader, node, factors);
    }
    if (node == 0) {
        return true;
    }
    double factor = 1.0;
    if (!ReadNumber(reader, node, factor)) {
        return false;
    }
    factors = {factor, factor, factor};
    return true;
}

bool ReadRotation(DocumentReader& reader, uint32_t node, Point3& axis, double& degrees) {
    if (node == 0 || KindOf(reader.Json, node) != JsonKind::Object) {
        return ReadNumber(reader, node, degrees);
    }
    uint32_t axisNode = 0;
    uint32_t angle = 0;
    return ReadMembers(reader, node, {{"axis", &axisNode, true}, {"angle", &angle, true}}) &&
           ReadDirection(reader, axisNode, axis) && ReadNumber(reader, angle, degrees);
}

bool ReadTransform(DocumentReader& reader, uint32_t node, Transform& transform) {
    if (node == 0) {
        return true;
    }
    if (KindOf(reader.Json, node) == JsonKind::Array) {
        return ReadMatrix(reader, node, transform);
    }
    uint32_t scale = 0;
    uint32_t rotate = 0;
    uint32_t move = 0;
    Point3 factors = {1.0, 1.0, 1.0};
    Point3 axis = {0.0, 0.0, 1.0};
    double degrees = 0.0;
    Point3 offset;
    if (!ReadMembers(reader, node, {{"scale", &scale}, {"rotate", &rotate}, {"move", &move}}) ||
        !ReadScale(reader, scale, factors) || !ReadRotation(reader, rotate, axis, degrees) ||
        !ReadPoint(reader, move, offset)) {
        return false;
    }
    transform = Multiply(Multiply(ScaleTransform(factors), RotateTransform(axis, degrees)),
                         MoveTransform(offset));
    return true;
}

// The nodes that groups, instances and images share.
struct ElementNodes {
    uint32_t Transform = 0;
    uint32_t Material = 0;
    uint32_t Layer = 0;
    uint32_t Hidden = 0;
};

void AddElementMembers(ElementNodes& nodes, std::vector<Member>& members) {
    members.insert(members.end(), {{"transform", &nodes.Transform},
                                   {"material", &nodes.Material},
                                   {"layer", &nodes.Layer},
                                   {"hidden", &nodes.Hidden}});
}

bool ReadElement(DocumentReader& reader, const ElementNodes& nodes, Transform& placement,
                 ModelElement& element) {
    return ReadTransform(reader, nodes.Transform, placement) &&
           ReadReference(reader, nodes.Material, reader.Materials, "material", element.Material) &&
           ReadReference(reader, nodes.Layer, reader.Layers, "layer", element.Layer) &&
           ReadFlag(reader, nodes.Hidden, element.Hidden);
}

bool ReadInstance(DocumentReader& reader, uint32_t node) {
    ElementNodes nodes;
    uint32_t definition = 0;
    std::vector<Member> members = {{"definition", &definition, true}};
    AddElementMembers(nodes, members);
    ModelInstance instance;
    if (!ReadMembers(reader, node, members) ||
        !ReadReference(reader, definition, reader.Definitions, "definition", instance.Definition) ||
        !ReadElement(reader, nodes, instance.Placement, instance.Element)) {
        return false;
    }
    reader.Output.Instances.push_back(instance);
    reader.InstanceNodes.push_back(definition);
    return true;
}

bool ReadImage(DocumentReader& reader, uint32_t node) {
    ElementNodes nodes;
    uint32_t picture = 0;
    uint32_t pictureName = 0;
    uint32_t width = 0;
    uint32_t height = 0;
    std::vector<Member> members = {{"picture", &picture, true},
                                   {"pictureName", &pictureName},
                                   {"width", &width},
                                   {"height", &height}};
    AddElementMembers(nodes, members);
    ModelImage image;
    double imageWidth = 1.0;
    double imageHeight = 1.0;
    if (!ReadMembers(reader, node, members) || !ReadPicture(reader, picture, image.Picture) ||
        !ReadText(reader, picture, image.PictureName) ||
        !ReadText(reader, pictureName, image.PictureName) ||
        !ReadPictureSize(reader, width, height, image.Picture, imageWidth, imageHeight) ||
        !ReadElement(reader, nodes, image.Placement, image.Element)) {
        return false;
    }
    if (width != 0 || height != 0) {
        const ModelPicture& pixels = reader.Output.Pictures[image.Picture];
        image.Placement =
            Multiply(ScaleTransform({imageWidth / pixels.Width, imageHeight / pixels.Height, 1.0}),
                     image.Placement);
    }
    reader.Output.Images.push_back(std::move(image));
    return true;
}

// The four lists of entities, a group or a definition.
struct ListNodes {
    uint32_t Faces = 0;
    uint32_t Groups = 0;
    uint32_t Instances = 0;
    uint32_t Images = 0;
};

void AddListMembers(ListNodes& nodes, std::vector<Member>& members) {
    members.insert(members.end(), {{"faces", &nodes.Faces},
                                   {"groups", &nodes.Groups},
                                   {"instances", &nodes.Instances},
                                   {"images", &nodes.Images}});
}

bool ReadLists(DocumentReader& reader, const ListNodes& nodes, uint32_t entities);

bool ReadGroup(DocumentReader& reader, uint32_t node, uint32_t index) {
    ElementNodes nodes;
    ListNodes lists;
    uint32_t name = 0;
    std::vector<Member> members = {{"name", &name}};
    AddElementMembers(nodes, members);
    AddListMembers(lists, members);
    ModelGroup group;
    if (!ReadMembers(reader, node, members) || !ReadText(reader, name, group.Name) ||
        !ReadElement(reader, nodes, group.Placement, group.Element)) {
        return false;
    }
    group.Entities = static_cast<uint32_t>(reader.Output.Entities.size());
    reader.Output.Entities.emplace_back();
    const uint32_t entities = group.Entities;
    reader.Output.Groups[index] = std::move(group);
    return ReadLists(reader, lists, entities);
}

// Reads all elements of a list before the lists inside it, so that a list owns a range.
bool ReadLists(DocumentReader& reader, const ListNodes& nodes, uint32_t entities) {
    Model& model = reader.Output;
    ModelEntities lists;
    const auto rangeFrom = [](uint32_t first, size_t end) {
        return IndexRange{first, static_cast<uint32_t>(end) - first};
    };
    const auto firstFace = static_cast<uint32_t>(model.Faces.size());
    const auto firstImage = static_cast<uint32_t>(model.Images.size());
    const auto firstInstance = static_cast<uint32_t>(model.Instances.size());
    const auto firstGroup = static_cast<uint32_t>(model.Groups.size());
    if (!ReadEach(reader, nodes.Faces, [&](uint32_t node) { return ReadFace(reader, node); }) ||
        !ReadEach(reader, nodes.Images, [&](uint32_t node) { return ReadImage(reader, node); }) ||
        !ReadEach(reader, nodes.Instances, [&](uint32_t node) { return ReadInstance(reader, node); })) {
        return false;
    }
    lists.Faces = rangeFrom(firstFace, model.Faces.size());
    lists.Images = rangeFrom(firstImage, model.Images.size());
    lists.Instances = rangeFrom(firstInstance, model.Instances.size());
    const bool counted = ReadEach(reader, nodes.Groups, [&](uint32_t) {
        model.Groups.emplace_back();
        return true;
    });
    lists.Groups = rangeFrom(firstGroup, model.Groups.size());
    model.Entities[entities] = lists;
    uint32_t next = firstGroup;
    return counted && ReadEach(reader, nodes.Groups,
                               [&](uint32_t node) { return ReadGroup(reader, node, next++); });
}

// Registers all names first: definitions can refer to later ones.
bool ReadDefinitions(DocumentReader& reader, uint32_t node) {
    std::vector<ListNodes> lists;
    const bool named = ReadEach(reader, node, [&](uint32_t element) {
        uint32_t name = 0;
        std::vector<Member> members = {{"name", &name, true}};
        AddListMembers(lists.emplace_back(), members);
        ModelDefinition definition;
        if (!ReadMembers(reader, element, members) ||
            !ReadUniqueName(reader, name, reader.Output.Definitions.size(), reader.Definitions,
                            definition.Name)) {
            return false;
        }
        definition.Entities = static_cast<uint32_t>(reader.Output.Entities.size());
        reader.Output.Entities.emplace_back();
        reader.Output.Definitions.push_back(std::move(definition));
        return true;
    });
    if (!named) {
        return false;
    }
    for (size_t i = 0; i < lists.size(); ++i) {
        if (!ReadLists(reader, lists[i], reader.Output.Definitions[i].Entities)) {
            return false;
        }
    }
    return true;
}

// For each list of entities, the levels of groups and instances in it.
struct NestingCheck {
    static constexpr uint32_t Unknown = NoIndex;
    static constexpr uint32_t UnderWay = NoIndex - 1;
    std::vector<uint32_t> Levels;
};

// depth is the number of levels above the list. node is the place for messages about the list.
bool CheckNesting(DocumentReader& reader, NestingCheck& check, uint32_t entities, uint32_t depth,
                  uint32_t node) {
    const Model& model = reader.Output;
    if (check.Levels[entities] == NestingCheck::UnderWay) {
        return Fail(reader, node, "the definition contains itself, directly or through others");
    }
    const uint32_t known = check.Levels[entities] == NestingCheck::Unknown ? 0 : check.Levels[entities];
    if (depth + known > DeepestNesting) {
        return Fail(reader, node,
                    "groups and instances are nested deeper than " + std::to_string(DeepestNesting) +
                        " levels");
    }
    if (check.Levels[entities] != NestingCheck::Unknown) {
        return true;
    }
    check.Levels[entities] = NestingCheck::UnderWay;
    uint32_t levels = 0;
    const ModelEntities& lists = model.Entities[entities];
    for (uint32_t i = 0; i < lists.Groups.Count; ++i) {
        const uint32_t inside = model.Groups[lists.Groups.First + i].Entities;
        if (!CheckNesting(reader, check, inside, depth + 1, node)) {
            return false;
        }
        levels = std::max(levels, check.Levels[inside] + 1);
    }
    for (uint32_t i = lists.Instances.First; i < lists.Instances.First + lists.Instances.Count; ++i) {
        const uint32_t inside = model.Definitions[model.Instances[i].Definition].Entities;
        if (!CheckNesting(reader, check, inside, depth + 1, reader.InstanceNodes[i])) {
            return false;
        }
        levels = std::max(levels, check.Levels[inside] + 1);
    }
    check.Levels[entities] = levels;
    return true;
}

bool ReadDocument(DocumentReader& reader) {
    uint32_t version = 0;
    uint32_t materials = 0;
    uint32_t layers = 0;
    uint32_t definitions = 0;
    uint32_t entities = 0;
    if (!ReadDocumentMembers(reader, {{ModelDocumentKey, &version, true},
                                      {"materials", &materials},
                                      {"layers", &layers},
                                      {"definitions", &definitions},
                                      {"entities", &entities}})) {
        return false;
    }
    double number = 0.0;
    if (!ReadNumber(reader, version, number) ||
        (number != Version && !Fail(reader, version, "this must be 1, the only version")) ||
        !ReadEach(reader, materials, [&](uint32_t node) { return ReadMaterial(reader, node); }) ||
        !ReadEach(reader, layers, [&](uint32_t node) { return ReadLayer(reader, node); }) ||
        !ReadDefinitions(reader, definitions)) {
        return false;
    }
    ListNodes lists;
    std::vector<Member> members;
    AddListMembers(lists, members);
    if (!ReadMembers(reader, entities, members) || !ReadLists(reader, lists, 0)) {
        return false;
    }
    NestingCheck check;
    check.Levels.assign(reader.Output.Entities.size(), NestingCheck::Unknown);
    for (uint32_t list = 0; list < check.Levels.size(); ++list) {
        if (!CheckNesting(reader, check, list, 0, 0)) {
            return false;
        }
    }
    return true;
}

} // namespace

bool ReadModelDocument(const JsonTape& json, const std::u16string& directory, Model& model,
                       std::string& error) {
    DocumentReader reader = {json, model, directory, {}, {}, {}, {}, {}, {}, {}};
    if (!ReadDocument(reader)) {
        error = reader.Error;
        return false;
    }
    return true;
}
