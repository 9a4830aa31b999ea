// The materials of a scene that assimp has read: diffuse or base colour, opacity, one picture.
#include "provider/assimp/AssimpMaterials.h"

#include "platform/Text.h"
#include "provider/reading/ImportedPictures.h"

#include <algorithm>
#include <array>
#include <assimp/material.h>
#include <cmath>
#include <cstring>

namespace {

std::u16string TextOf(const aiString& text) {
    return Utf16FromUtf8({text.data, text.length});
}

uint8_t ColorByte(ai_real value) {
    const double clamped = value > 0 ? std::min(static_cast<double>(value), 1.0) : 0.0;
    return static_cast<uint8_t>(std::lround(clamped * 255.0));
}

// A picture embedded in the file.
uint32_t TakeEmbedded(const aiTexture& texture, const std::u16string& name, ImportedPictures& pictures,
                      Model& model) {
    const std::u16string key = u"embedded:" + name;
    const auto* bytes = reinterpret_cast<const uint8_t*>(texture.pcData);
    if (texture.mHeight == 0) {
        return TakePictureBytes(pictures, model, key, name, {bytes, bytes + texture.mWidth});
    }
    std::vector<uint8_t> texels;
    const size_t count = size_t{texture.mWidth} * texture.mHeight;
    texels.reserve(count * 4);
    for (size_t i = 0; i < count; ++i) {
        const aiTexel& texel = texture.pcData[i];
        texels.insert(texels.end(), {texel.r, texel.g, texel.b, texel.a});
    }
    return TakeTexels(pictures, model, key, name, texture.mWidth, texture.mHeight, texels);
}

uint32_t TakePicture(const aiScene& scene, const aiString& path, ImportedPictures& pictures,
                     Model& model) {
    const aiTexture* embedded = scene.GetEmbeddedTexture(path.C_Str());
    return embedded != nullptr ? TakeEmbedded(*embedded, TextOf(path), pictures, model)
                               : TakePictureFile(pictures, model, TextOf(path));
}

// Diffuse colour, or base colour without one. Opacity is a separate property.
void ReadColor(const aiMaterial& source, ModelMaterial& material) {
    aiColor4D color(1, 1, 1, 1);
    if (aiGetMaterialColor(&source, AI_MATKEY_COLOR_DIFFUSE, &color) != aiReturn_SUCCESS) {
        aiGetMaterialColor(&source, AI_MATKEY_BASE_COLOR, &color);
    }
    material.Color = {ColorByte(color.r), ColorByte(color.g), ColorByte(color.b), 255};
    ai_real opacity = 1;
    aiGetMaterialFloat(&source, AI_MATKEY_OPACITY, &opacity);
    if (opacity < 1) {
        material.UseOpacity = true;
        material.Opacity = opacity > 0 ? static_cast<double>(opacity) : 0.0;
    }
}

} // namespace

void ReadAssimpMaterials(const aiScene& scene, const std::u16string& directory, Model& model,
                         std::vector<uint32_t>& coordinateSets) {
    ImportedPictures pictures;
    pictures.Directory = directory;
    for (uint32_t i = 0; i < scene.mNumMaterials; ++i) {
        const aiMaterial& source = *scene.mMaterials[i];
        ModelMaterial material;
        aiString text;
        if (aiGetMaterialString(&source, AI_MATKEY_NAME, &text) == aiReturn_SUCCESS) {
            material.Name = TextOf(text);
        }
        ReadColor(source, material);
        coordinateSets.push_back(0);
        for (const aiTextureType type : {aiTextureType_DIFFUSE, aiTextureType_BASE_COLOR}) {
            aiString path;
            unsigned set = 0;
            if (source.GetTexture(type, 0, &path, nullptr, &set) == aiReturn_SUCCESS &&
                path.length > 0) {
                int readSet = 0;
                if (source.Get(AI_MATKEY_UVWSRC(type, 0), readSet) == aiReturn_SUCCESS && readSet > 0) {
                    set = static_cast<unsigned>(readSet);
                }
                coordinateSets.back() = set;
                ShowPicture(pictures, TakePicture(scene, path, pictures, model), material);
                break;
            }
        }
        model.Materials.push_back(std::move(material));
    }
}
