// The entity walk: groups and component instances, depth first.
#include "reader/EntityWalk.h"

#include "mesh/AddPolygons.h"
#include "reader/Faces.h"
#include "reader/Images.h"
#include "reader/LibraryReading.h"

#include <algorithm>

namespace {

// What is passed down the walk: the importer, and memory that every list uses again.
struct Walk {
    ModelImporter& Importer;
    PolygonList Polygons;
    SideMesh Side;
    WeldScratch Welding;
};

std::unique_ptr<SceneNode> WalkList(Walk& walk, EntitiesHandle entities, std::u16string name,
                                    int32_t inheritedIndex);

// Returns the row of the element's own material, if the MaterialTable has it, else the inherited row.
int32_t SubtreeMaterialIndex(const ModelImporter& importer, DrawingElementHandle element,
                             int32_t inheritedIndex) {
    MaterialHandle material = {};
    if (IsNull(element) || SUDrawingElementGetMaterial(element, &material) != 0) {
        return inheritedIndex;
    }
    const int32_t row = FindMaterial(importer.MaterialTable, material);
    return row != NoRow ? row : inheritedIndex;
}

// Whether a list may be walked below the open ones. A list that is already open would never end, and one
// too deep would overflow the stack: both are counted, and treated as unreadable.
bool CanWalkInto(ModelImporter& importer, EntitiesHandle entities) {
    const std::vector<EntitiesHandle>& open = importer.OpenEntities;
    if (open.size() >= NestingLimit) {
        ++importer.ListsTooDeep;
        return false;
    }
    if (std::ranges::find(open, entities.Value, &EntitiesHandle::Value) != open.end()) {
        ++importer.ListsInsideThemselves;
        return false;
    }
    return true;
}

// Adds the transform node of a group or an instance to the parent, with the content node below it.
void AddChildNode(Walk& walk, EntitiesHandle entities, DrawingElementHandle element, SceneNode& parent,
                  std::u16string name, int32_t inheritedIndex, const Matrix4& matrix) {
    const ModelImporter& importer = walk.Importer;
    if (importer.ImportStatus != StatusOk) {
        return;
    }
    const int32_t index = SubtreeMaterialIndex(importer, element, inheritedIndex);
    SceneNode& transformNode = parent.Children.Append(std::make_unique<SceneNode>(u""));
    transformNode.Matrix = matrix;
    std::unique_ptr<SceneNode> content = WalkList(walk, entities, std::move(name), index);
    if (content != nullptr) {
        transformNode.Children.Append(std::move(content));
    }
}

// Appends the meshes of a list's own images and faces to its node. Polygons read before a failed texture
// become meshes too.
void ImportGeometry(Walk& walk, EntitiesHandle entities, SceneNode& node, int32_t inheritedIndex) {
    ModelImporter& importer = walk.Importer;
    if (importer.ImportStatus != StatusOk) {
        return;
    }
    ImportImages(importer, entities, walk.Polygons);
    ImportFaces(importer, entities, walk.Polygons, inheritedIndex, walk.Side);
    AddPolygons(node, walk.Polygons, walk.Welding, importer.RootHolder->Meshes);
}

void ImportGroups(Walk& walk, EntitiesHandle entities, SceneNode& parent, int32_t inheritedIndex) {
    ModelImporter& importer = walk.Importer;
    if (importer.ImportStatus != StatusOk) {
        return;
    }
    for (const GroupHandle group :
         ReadList(entities, SUEntitiesGetNumGroups, SUEntitiesGetGroups, ReturnedCount::MustMatch)) {
        if (IsNull(group)) {
            continue;
        }
        const DrawingElementHandle element = SUGroupToDrawingElement(group);
        if (IsExcludedByLayer(element)) {
            continue;
        }
        std::u16string name = ReadText(group, SUGroupGetName);
        double transform[TransformValues] = {};
        if (SUGroupGetTransform(group, transform) != 0) {
            return;
        }
        EntitiesHandle content = {};
        if (SUGroupGetEntities(group, &content) != 0 || !CanWalkInto(importer, content)) {
            continue;
        }
        AddChildNode(walk, content, element, parent, std::move(name), inheritedIndex,
                     ConvertTransform(transform));
    }
}

void ImportInstances(Walk& walk, EntitiesHandle entities, SceneNode& parent, int32_t inheritedIndex) {
    ModelImporter& importer = walk.Importer;
    if (importer.ImportStatus != StatusOk) {
        return;
    }
    for (const ComponentInstanceHandle instance : ReadList(
             entities, SUEntitiesGetNumInstances, SUEntitiesGetInstances, ReturnedCount::MustMatch)) {
        if (IsNull(instance)) {
            continue;
        }
        const DrawingElementHandle element = SUComponentInstanceToDrawingElement(instance);
        if (IsExcludedByLayer(element)) {
            continue;
        }
        ComponentDefinitionHandle definition = {};
        if (SUComponentInstanceGetDefinition(instance, &definition) != 0 || IsNull(definition)) {
            continue;
        }
        EntitiesHandle content = {};
        if (SUComponentDefinitionGetEntities(definition, &content) != 0 || IsNull(content) ||
            !CanWalkInto(importer, content)) {
            continue;
        }
        double transform[TransformValues] = {};
        if (SUComponentInstanceGetTransform(instance, transform) != 0) {
            return;
        }
        AddChildNode(walk, content, element, parent, {}, inheritedIndex, ConvertTransform(transform));
    }
}

std::unique_ptr<SceneNode> WalkList(Walk& walk, EntitiesHandle entities, std::u16string name,
                                    int32_t inheritedIndex) {
    ModelImporter& importer = walk.Importer;
    if (importer.ImportStatus != StatusOk) {
        return nullptr;
    }
    auto node = std::make_unique<SceneNode>(std::move(name));
    importer.OpenEntities.push_back(entities);
    ImportGeometry(walk, entities, *node, inheritedIndex);
    ImportGroups(walk, entities, *node, inheritedIndex);
    ImportInstances(walk, entities, *node, inheritedIndex);
    importer.OpenEntities.pop_back();
    return node;
}

} // namespace

std::unique_ptr<SceneNode> ImportEntities(ModelImporter& importer, EntitiesHandle entities,
                                          std::u16string name, int32_t inheritedIndex) {
    Walk walk = {.Importer = importer, .Polygons = {}, .Side = {}, .Welding = {}};
    return WalkList(walk, entities, std::move(name), inheritedIndex);
}
