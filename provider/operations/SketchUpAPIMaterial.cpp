// Materials, their textures, and strings.
#include "provider/operations/ProviderState.h"

#include "platform/Text.h"

#include <algorithm>

namespace {

const ModelMaterial* FindMaterial(MaterialHandle material) {
    return FindElement(material.Value, HandleKind::Material, &Model::Materials);
}

// The material whose texture a handle refers to, or null.
const ModelMaterial* FindTexture(TextureHandle texture) {
    const ModelMaterial* material = FindElement(texture.Value, HandleKind::Texture, &Model::Materials);
    return material != nullptr && material->Picture != NoIndex ? material : nullptr;
}

template <class Value, class Output> int32_t WriteValue(const Value* value, Output* output) {
    if (value == nullptr || output == nullptr) {
        return Failure;
    }
    *output = static_cast<Output>(*value);
    return Success;
}

int32_t TypeNumber(MaterialType type) {
    switch (type) {
    case MaterialType::Plain:
        break;
    case MaterialType::Textured:
        return MaterialTypeTextured;
    case MaterialType::Colorized:
        return MaterialTypeColorized;
    }
    return MaterialTypePlain;
}

} // namespace

extern "C" {

int32_t SUMaterialGetName(MaterialHandle material, StringHandle* name) {
    const ModelMaterial* found = FindMaterial(material);
    return found != nullptr ? FillString(name, found->Name) : Failure;
}

int32_t SUMaterialGetColor(MaterialHandle material, uint8_t rgba[4]) {
    const ModelMaterial* found = FindMaterial(material);
    if (found == nullptr || rgba == nullptr) {
        return Failure;
    }
    std::ranges::copy(found->Color, rgba);
    return Success;
}

int32_t SUMaterialGetUseOpacity(MaterialHandle material, uint8_t* useOpacity) {
    const ModelMaterial* found = FindMaterial(material);
    return WriteValue(found != nullptr ? &found->UseOpacity : nullptr, useOpacity);
}

int32_t SUMaterialGetOpacity(MaterialHandle material, double* opacity) {
    const ModelMaterial* found = FindMaterial(material);
    return WriteValue(found != nullptr ? &found->Opacity : nullptr, opacity);
}

int32_t SUMaterialGetType(MaterialHandle material, int32_t* type) {
    const ModelMaterial* found = FindMaterial(material);
    if (found == nullptr || type == nullptr) {
        return Failure;
    }
    *type = TypeNumber(found->Type);
    return Success;
}

int32_t SUMaterialGetTexture(MaterialHandle material, TextureHandle* texture) {
    const ModelMaterial* found = FindMaterial(material);
    if (found == nullptr || found->Picture == NoIndex || texture == nullptr) {
        return Failure;
    }
    texture->Value = ModelHandleValue(HandleKind::Texture, PartsOf(material.Value).Index);
    return Success;
}

int32_t SUTextureGetFileName(TextureHandle texture, StringHandle* fileName) {
    const ModelMaterial* found = FindTexture(texture);
    return found != nullptr ? FillFileName(fileName, found->PictureName) : Failure;
}

int32_t SUTextureGetDimensions(TextureHandle texture, uint64_t* width, uint64_t* height, double* sScale,
                               double* tScale) {
    const ModelMaterial* found = FindTexture(texture);
    if (found == nullptr || width == nullptr || height == nullptr || sScale == nullptr ||
        tScale == nullptr) {
        return Failure;
    }
    const ModelPicture& picture = State().Open->Pictures[found->Picture];
    *width = picture.Width;
    *height = picture.Height;
    *sScale = 1.0 / found->Width;
    *tScale = 1.0 / found->Height;
    return Success;
}

int32_t SUTextureWriteToFile(TextureHandle texture, const char* path) {
    const ModelMaterial* found = FindTexture(texture);
    return found != nullptr ? WritePicture(State().Open->Pictures[found->Picture], path) : Failure;
}

int32_t SUStringCreate(StringHandle* string) {
    return CreateInSlot(State().Strings, HandleKind::String, string);
}

int32_t SUStringGetUTF16(StringHandle string, uint64_t limit, char16_t* text, uint64_t* length) {
    const Slot<std::u16string>* slot = FindSlot(State().Strings, HandleKind::String, string.Value);
    if (slot == nullptr || limit == 0 || text == nullptr || length == nullptr) {
        return Failure;
    }
    size_t count = slot->Value.size();
    if (count > limit - 1) {
        count = limit - 1;
        // Half of a surrogate pair is not text.
        count -= count > 0 && IsHighSurrogate(slot->Value[count - 1]) ? 1 : 0;
    }
    std::copy_n(slot->Value.begin(), count, text);
    text[count] = 0;
    *length = count;
    return Success;
}

int32_t SUStringRelease(StringHandle* string) {
    return ReleaseSlot(State().Strings, HandleKind::String, string);
}
}
