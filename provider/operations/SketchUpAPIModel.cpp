// The library as a whole, the model and the lists of its elements.
#include "provider/OpenModel.h"
#include "provider/operations/ProviderState.h"

#include "platform/Text.h"

namespace {

const Model* FindModel(ModelHandle model) {
    HandleParts parts;
    return DecodeHandle(model.Value, HandleKind::Model, parts) &&
                   model.Value == ModelHandleValue(HandleKind::Model, 0)
               ? State().Open.get()
               : nullptr;
}

// The range of one kind of element in a list, or null.
const IndexRange* FindRange(EntitiesHandle entities, IndexRange ModelEntities::*range) {
    const ModelEntities* list = FindElement(entities.Value, HandleKind::Entities, &Model::Entities);
    return list != nullptr ? &(list->*range) : nullptr;
}

int32_t WriteCount(const IndexRange* range, uint64_t* count) {
    if (range == nullptr || count == nullptr) {
        return Failure;
    }
    *count = range->Count;
    return Success;
}

template <class Handle> int32_t WriteList(const IndexRange* range, HandleKind kind, uint64_t count,
                                          Handle handles[], uint64_t* returned) {
    return range != nullptr ? WriteHandles(kind, *range, count, handles, returned) : Failure;
}

} // namespace

extern "C" {

void SUInitialize(void) {
}

void SUTerminate(void) {
    // The serial number is kept, so that earlier handles stay invalid.
    const uint32_t serial = State().Serial;
    State() = ProviderState{};
    State().Serial = serial;
}

int32_t SUModelCreateFromFile(ModelHandle* model, const char* path) {
    if (model == nullptr || path == nullptr) {
        return Failure;
    }
    const int32_t result = WithoutExceptions([&] {
        if (State().Open != nullptr) {
            ReportLine(path, "another model is still open");
            return Failure;
        }
        auto opened = std::make_unique<Model>();
        std::string error;
        bool isOpen = false;
        try {
            isOpen = OpenModel(Utf16FromUtf8(path), *opened, error);
        } catch (const std::bad_alloc&) {
            opened = nullptr;
            error = "not enough memory";
        }
        if (!isOpen) {
            ReportLine(path, error);
            return Failure;
        }
        for (const std::string& remark : opened->Remarks) {
            ReportLine(path, remark);
        }
        State().Open = std::move(opened);
        ++State().Serial;
        return Success;
    });
    if (result == Success) {
        model->Value = ModelHandleValue(HandleKind::Model, 0);
    }
    return result;
}

int32_t SUModelRelease(ModelHandle* model) {
    if (model == nullptr || FindModel(*model) == nullptr) {
        return Failure;
    }
    State().Open = nullptr;
    model->Value = 0;
    return Success;
}

int32_t SUModelGetEntities(ModelHandle model, EntitiesHandle* entities) {
    if (FindModel(model) == nullptr || entities == nullptr) {
        return Failure;
    }
    entities->Value = ModelHandleValue(HandleKind::Entities, 0);
    return Success;
}

int32_t SUModelGetNumAllMaterials(ModelHandle model, uint64_t* count) {
    if (FindModel(model) == nullptr || count == nullptr) {
        return Failure;
    }
    *count = State().Open->Materials.size();
    return Success;
}

int32_t SUModelGetAllMaterials(ModelHandle model, uint64_t count, MaterialHandle materials[],
                               uint64_t* returned) {
    const Model* open = FindModel(model);
    if (open == nullptr) {
        return Failure;
    }
    const IndexRange all = {0, static_cast<uint32_t>(open->Materials.size())};
    return WriteHandles(HandleKind::Material, all, count, materials, returned);
}

int32_t SUEntitiesGetNumFaces(EntitiesHandle entities, uint64_t* count) {
    return WriteCount(FindRange(entities, &ModelEntities::Faces), count);
}

int32_t SUEntitiesGetFaces(EntitiesHandle entities, uint64_t count, FaceHandle faces[],
                           uint64_t* returned) {
    return WriteList(FindRange(entities, &ModelEntities::Faces), HandleKind::Face, count, faces,
                     returned);
}

int32_t SUEntitiesGetNumGroups(EntitiesHandle entities, uint64_t* count) {
    return WriteCount(FindRange(entities, &ModelEntities::Groups), count);
}

int32_t SUEntitiesGetGroups(EntitiesHandle entities, uint64_t count, GroupHandle groups[],
                            uint64_t* returned) {
    return WriteList(FindRange(entities, &ModelEntities::Groups), HandleKind::Group, count, groups,
                     returned);
}

int32_t SUEntitiesGetNumInstances(EntitiesHandle entities, uint64_t* count) {
    return WriteCount(FindRange(entities, &ModelEntities::Instances), count);
}

int32_t SUEntitiesGetInstances(EntitiesHandle entities, uint64_t count,
                               ComponentInstanceHandle instances[], uint64_t* returned) {
    return WriteList(FindRange(entities, &ModelEntities::Instances), HandleKind::Instance, count,
                     instances, returned);
}

int32_t SUEntitiesGetNumImages(EntitiesHandle entities, uint64_t* count) {
    return WriteCount(FindRange(entities, &ModelEntities::Images), count);
}

int32_t SUEntitiesGetImages(EntitiesHandle entities, uint64_t count, ImageHandle images[],
                            uint64_t* returned) {
    return WriteList(FindRange(entities, &ModelEntities::Images), HandleKind::Image, count, images,
                     returned);
}
}
