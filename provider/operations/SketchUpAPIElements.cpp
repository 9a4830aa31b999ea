// Groups, component instances and definitions, drawing elements and layers.
#include "provider/operations/ProviderState.h"

namespace {

const ModelGroup* FindGroup(GroupHandle group) {
    return FindElement(group.Value, HandleKind::Group, &Model::Groups);
}

const ModelInstance* FindInstance(ComponentInstanceHandle instance) {
    return FindElement(instance.Value, HandleKind::Instance, &Model::Instances);
}

// The properties of the element behind a drawing element. Returns false for any other handle.
bool FindDrawingElement(DrawingElementHandle handle, ModelElement& element) {
    HandleParts parts;
    if (!DecodeHandle(handle.Value, HandleKind::DrawingElement, parts)) {
        return false;
    }
    const Model& model = *State().Open;
    if (parts.Element == ElementKind::Face && parts.Index < model.Faces.size()) {
        const ModelFace& face = model.Faces[parts.Index];
        element = {face.Layer, face.Front.Material, face.Hidden};
        return true;
    }
    if (parts.Element == ElementKind::Group && parts.Index < model.Groups.size()) {
        element = model.Groups[parts.Index].Element;
        return true;
    }
    if (parts.Element == ElementKind::Instance && parts.Index < model.Instances.size()) {
        element = model.Instances[parts.Index].Element;
        return true;
    }
    if (parts.Element == ElementKind::Image && parts.Index < model.Images.size()) {
        element = model.Images[parts.Index].Element;
        return true;
    }
    return false;
}

} // namespace

extern "C" {

DrawingElementHandle SUGroupToDrawingElement(GroupHandle group) {
    return DrawingElementOf(FindGroup(group), group.Value, ElementKind::Group);
}

int32_t SUGroupGetName(GroupHandle group, StringHandle* name) {
    const ModelGroup* found = FindGroup(group);
    return found != nullptr ? FillString(name, found->Name) : Failure;
}

int32_t SUGroupGetTransform(GroupHandle group, double transform[TransformValues]) {
    return WritePlacement(FindGroup(group), transform);
}

int32_t SUGroupGetEntities(GroupHandle group, EntitiesHandle* entities) {
    const ModelGroup* found = FindGroup(group);
    if (found == nullptr || entities == nullptr) {
        return Failure;
    }
    entities->Value = ModelHandleValue(HandleKind::Entities, found->Entities);
    return Success;
}

DrawingElementHandle SUComponentInstanceToDrawingElement(ComponentInstanceHandle instance) {
    return DrawingElementOf(FindInstance(instance), instance.Value, ElementKind::Instance);
}

int32_t SUComponentInstanceGetDefinition(ComponentInstanceHandle instance,
                                         ComponentDefinitionHandle* definition) {
    const ModelInstance* found = FindInstance(instance);
    if (found == nullptr || definition == nullptr) {
        return Failure;
    }
    definition->Value = ModelHandleValue(HandleKind::Definition, found->Definition);
    return Success;
}

int32_t SUComponentInstanceGetTransform(ComponentInstanceHandle instance,
                                        double transform[TransformValues]) {
    return WritePlacement(FindInstance(instance), transform);
}

int32_t SUComponentDefinitionGetEntities(ComponentDefinitionHandle definition,
                                         EntitiesHandle* entities) {
    const ModelDefinition* found =
        FindElement(definition.Value, HandleKind::Definition, &Model::Definitions);
    if (found == nullptr || entities == nullptr) {
        return Failure;
    }
    entities->Value = ModelHandleValue(HandleKind::Entities, found->Entities);
    return Success;
}

int32_t SUDrawingElementGetHidden(DrawingElementHandle element, uint8_t* hidden) {
    ModelElement found;
    if (!FindDrawingElement(element, found) || hidden == nullptr) {
        return Failure;
    }
    *hidden = found.Hidden ? 1 : 0;
    return Success;
}

int32_t SUDrawingElementGetLayer(DrawingElementHandle element, LayerHandle* layer) {
    ModelElement found;
    if (!FindDrawingElement(element, found) || layer == nullptr) {
        return Failure;
    }
    layer->Value = ModelHandleValue(HandleKind::Layer, found.Layer);
    return Success;
}

int32_t SUDrawingElementGetMaterial(DrawingElementHandle element, MaterialHandle* material) {
    ModelElement found;
    if (!FindDrawingElement(element, found) || material == nullptr) {
        return Failure;
    }
    material->Value =
        found.Material != NoIndex ? ModelHandleValue(HandleKind::Material, found.Material) : 0;
    return Success;
}

int32_t SULayerGetVisibility(LayerHandle layer, uint8_t* visible) {
    const ModelLayer* found = FindElement(layer.Value, HandleKind::Layer, &Model::Layers);
    if (found == nullptr || visible == nullptr) {
        return Failure;
    }
    *visible = found->Visible ? 1 : 0;
    return Success;
}
}
