// Reads the materials of a glTF document: base colour, or diffuse colour of the older extension.
#include "provider/gltf/GltfMaterials.h"

#include "platform/Text.h"
#include "provider/gltf/GltfAccessor.h"
#include "provider/gltf/Uri.h"
#include "provider/reading/ImportedPictures.h"

#include <algorithm>
#include <cmath>

constexpr const char* TransformExtension = "KHR_texture_transform";
constexpr const char* DiffuseExtension = "KHR_materials_pbrSpecularGlossiness";

namespace {

using GltfExtensions = tinygltf::ExtensionMap;

// A member of an extension's object, or null.
const tinygltf::Value* FindValue(const tinygltf::Value& object, const char* key) {
    return object.IsObject() && object.Has(key) ? &object.Get(key) : nullptr;
}

// A number of an array; fallback if there is none.
double NumberIn(const tinygltf::Value* value, int place, double fallback) {
    if (value == nullptr || !value->IsArray() || static_cast<size_t>(place) >= value->ArrayLen() ||
        !value->Get(place).IsNumber()) {
        return fallback;
    }
    return value->Get(place).GetNumberAsDouble();
}

int WholeNumber(const tinygltf::Value* value, int fallback) {
    return value != nullptr && value->IsInt() ? value->GetNumberAsInt() : fallback;
}

// glTF colours are linear; the model's are sRGB.
uint8_t ScreenColor(double light) {
    constexpr double linearPart = 0.0031308;
    const double clamped = light > 0.0 ? std::min(light, 1.0) : 0.0;
    const double shown =
        clamped <= linearPart ? 12.92 * clamped : 1.055 * std::pow(clamped, 1.0 / 2.4) - 0.055;
    return static_cast<uint8_t>(std::lround(shown * 255.0));
}

// Scale, then rotation, then offset, with v pointing down.
void ReadTransform(const tinygltf::Value& transform, GltfSurface& surface) {
    const tinygltf::Value* offset = FindValue(transform, "offset");
    const tinygltf::Value* scale = FindValue(transform, "scale");
    const tinygltf::Value* rotation = FindValue(transform, "rotation");
    const double angle =
        rotation != nullptr && rotation->IsNumber() ? rotation->GetNumberAsDouble() : 0.0;
    const double scaleU = NumberIn(scale, 0, 1.0);
    const double scaleV = NumberIn(scale, 1, 1.0);
    surface.U = {std::cos(angle) * scaleU, std::sin(angle) * scaleV, NumberIn(offset, 0, 0.0)};
    surface.V = {-std::sin(angle) * scaleU, std::cos(angle) * scaleV, NumberIn(offset, 1, 0.0)};
    surface.CoordinateSet = WholeNumber(FindValue(transform, "texCoord"), surface.CoordinateSet);
}

struct MaterialReading {
    const GltfDocument& Document;
    Model& Output;
    ImportedPictures Pictures;
};

uint32_t ReadPicture(MaterialReading& reading, size_t index) {
    const GltfImage& image = reading.Document.Images[index];
    const std::u16string key = u"image:" + Utf16FromUtf8(std::to_string(index));
    const std::u16string name = Utf16FromUtf8(image.Name);
    std::vector<uint8_t> bytes;
    if (image.BufferView.has_value()) {
        std::span<const uint8_t> view;
        FindBufferView(reading.Document, *image.BufferView, view);
        bytes.assign(view.begin(), view.end());
    } else if (IsDataUri(image.Uri)) {
        DecodeDataUri(image.Uri, bytes);
    } else {
        return TakePictureFile(reading.Pictures, reading.Output,
                               Utf16FromUtf8(DecodePercent(image.Uri)));
    }
    // Without bytes, the check of the picture reports the reason.
    return TakePictureBytes(reading.Pictures, reading.Output, key, name.empty() ? key : name,
                            std::move(bytes));
}

void ReadTexture(MaterialReading& reading, int texture, int set, const tinygltf::Value* transform,
                 ModelMaterial& material, GltfSurface& surface) {
    const std::vector<tinygltf::Texture>& textures = reading.Document.Records.textures;
    if (texture < 0) {
        return;
    }
    const int source = static_cast<size_t>(texture) < textures.size()
                           ? textures[static_cast<size_t>(texture)].source
                           : -1;
    surface.CoordinateSet = set;
    if (transform != nullptr) {
        ReadTransform(*transform, surface);
    }
    if (source < 0 || static_cast<size_t>(source) >= reading.Document.Images.size()) {
        reading.Output.Remarks.push_back("the texture of the material \"" +
                                         Utf8FromUtf16(material.Name) + "\" has no usable picture");
        return;
    }
    ShowPicture(reading.Pictures, ReadPicture(reading, static_cast<size_t>(source)), material);
}

void SetColor(const std::array<double, 4>& factor, const std::string& alphaMode,
              ModelMaterial& material) {
    for (size_t i = 0; i < 3; ++i) {
        material.Color[i] = ScreenColor(factor[i]);
    }
    // Only this mode blends; in the others alpha has no effect or cuts out parts of the picture.
    if (alphaMode == "BLEND" && factor[3] < 1.0) {
        material.UseOpacity = true;
        material.Opacity = std::max(factor[3], 0.0);
    }
}

const tinygltf::Value* FindExtension(const GltfExtensions& extensions, const char* name) {
    const auto found = extensions.find(name);
    return found != extensions.end() ? &found->second : nullptr;
}

void ReadMaterial(MaterialReading& reading, const tinygltf::Material& source, ModelMaterial& material,
                  GltfSurface& surface) {
    std::array<double, 4> factor = {1.0, 1.0, 1.0, 1.0};
    const tinygltf::Value* diffuse = FindExtension(source.extensions, DiffuseExtension);
    if (diffuse != nullptr) {
        const tinygltf::Value* texture = FindValue(*diffuse, "diffuseTexture");
        for (int i = 0; i < 4; ++i) {
            factor[static_cast<size_t>(i)] = NumberIn(FindValue(*diffuse, "diffuseFactor"), i, 1.0);
        }
        SetColor(factor, source.alphaMode, material);
        if (texture != nullptr) {
            const tinygltf::Value* extensions = FindValue(*texture, "extensions");
            ReadTexture(reading, WholeNumber(FindValue(*texture, "index"), -1),
                        WholeNumber(FindValue(*texture, "texCoord"), 0),
                        extensions != nullptr ? FindValue(*extensions, TransformExtension) : nullptr,
                        material, surface);
        }
        return;
    }
    const tinygltf::PbrMetallicRoughness& base = source.pbrMetallicRoughness;
    if (base.baseColorFactor.size() == factor.size()) {
        std::ranges::copy(base.baseColorFactor, factor.begin());
    }
    SetColor(factor, source.alphaMode, material);
    ReadTexture(reading, base.baseColorTexture.index, base.baseColorTexture.texCoord,
                FindExtension(base.baseColorTexture.extensions, TransformExtension), material, surface);
}

} // namespace

void ReadGltfMaterials(const GltfDocument& document, const std::u16string& directory, Model& model,
                       std::vector<GltfSurface>& surfaces) {
    MaterialReading reading = {document, model, {}};
    reading.Pictures.Directory = directory;
    for (const tinygltf::Material& source : document.Records.materials) {
        ModelMaterial material;
        material.Name = Utf16FromUtf8(source.name);
        surfaces.emplace_back();
        ReadMaterial(reading, source, material, surfaces.back());
        model.Materials.push_back(std::move(material));
    }
}
