// Images, image reps and the texture writer. A texture id is an image's number from 1 on, so the writer
// has no state of its own.
#include "provider/operations/ProviderState.h"

#include <limits>

namespace {

const ModelImage* FindImage(ImageHandle image) {
    return FindElement(image.Value, HandleKind::Image, &Model::Images);
}

// The writer belongs to no model: a caller can create it before it opens one and keep it for the next.
constexpr uint64_t TheTextureWriter = HandleValue({HandleKind::TextureWriter, ElementKind::None, 0, 0});

bool IsTextureWriter(TextureWriterHandle textureWriter) {
    return State().HasTextureWriter && textureWriter.Value == TheTextureWriter;
}

} // namespace

extern "C" {

DrawingElementHandle SUImageToDrawingElement(ImageHandle image) {
    return DrawingElementOf(FindImage(image), image.Value, ElementKind::Image);
}

EntityHandle SUImageToEntity(ImageHandle image) {
    if (FindImage(image) == nullptr) {
        return {0};
    }
    return {ModelHandleValue(HandleKind::Entity, PartsOf(image.Value).Index)};
}

int32_t SUImageGetFileName(ImageHandle image, StringHandle* fileName) {
    const ModelImage* found = FindImage(image);
    return found != nullptr ? FillFileName(fileName, found->PictureName) : Failure;
}

int32_t SUImageGetTransform(ImageHandle image, double transform[TransformValues]) {
    return WritePlacement(FindImage(image), transform);
}

int32_t SUImageRepCreate(ImageRepHandle* imageRep) {
    return CreateInSlot(State().ImageReps, HandleKind::ImageRep, imageRep);
}

int32_t SUImageGetImageRep(ImageHandle image, ImageRepHandle* imageRep) {
    const ModelImage* found = FindImage(image);
    Slot<ImageRep>* slot = imageRep != nullptr
                               ? FindSlot(State().ImageReps, HandleKind::ImageRep, imageRep->Value)
                               : nullptr;
    if (found == nullptr || slot == nullptr) {
        return Failure;
    }
    const ModelPicture& picture = State().Open->Pictures[found->Picture];
    slot->Value = {picture.Width, picture.Height};
    return Success;
}

int32_t SUImageRepGetPixelDimensions(ImageRepHandle imageRep, uint64_t* width, uint64_t* height) {
    const Slot<ImageRep>* slot = FindSlot(State().ImageReps, HandleKind::ImageRep, imageRep.Value);
    if (slot == nullptr || slot->Value.Width == 0 || width == nullptr || height == nullptr) {
        return Failure;
    }
    *width = slot->Value.Width;
    *height = slot->Value.Height;
    return Success;
}

int32_t SUImageRepRelease(ImageRepHandle* imageRep) {
    return ReleaseSlot(State().ImageReps, HandleKind::ImageRep, imageRep);
}

int32_t SUTextureWriterCreate(TextureWriterHandle* textureWriter) {
    if (textureWriter == nullptr) {
        return Failure;
    }
    State().HasTextureWriter = true;
    textureWriter->Value = TheTextureWriter;
    return Success;
}

int32_t SUTextureWriterLoadEntity(TextureWriterHandle textureWriter, EntityHandle entity,
                                  int32_t* textureId) {
    const uint32_t index = PartsOf(entity.Value).Index;
    if (!IsTextureWriter(textureWriter) || textureId == nullptr ||
        FindElement(entity.Value, HandleKind::Entity, &Model::Images) == nullptr ||
        index >= static_cast<uint32_t>(std::numeric_limits<int32_t>::max())) {
        return Failure;
    }
    *textureId = static_cast<int32_t>(index + 1);
    return Success;
}

int32_t SUTextureWriterWriteTexture(TextureWriterHandle textureWriter, int32_t textureId,
                                    const char* path, bool) {
    const Model* model = State().Open.get();
    if (!IsTextureWriter(textureWriter) || model == nullptr || textureId < 1 ||
        static_cast<uint32_t>(textureId) > model->Images.size()) {
        return Failure;
    }
    const ModelImage& image = model->Images[static_cast<uint32_t>(textureId) - 1];
    return WritePicture(model->Pictures[image.Picture], path);
}
}
