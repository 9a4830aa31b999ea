// Reads the materials of a glTF document: base colour, or diffuse colour of the older extension.
#include "provider/gltf/GltfMaterials.h"

#include "platform/Text.h"
#include "provider/gltf/data/Uri.h"
#include "provider/gltf/records/GltfFields.h"
#include "provider/reading/ImportedPictures.h"

#include <algorithm>
#include <cmath>

constexpr std::string_view TransformExtension = "KHR_texture_transform";
constexpr std::string_view DiffuseExtension = "KHR_materials_pbrSpecularGlossiness";

namespace {

// glTF colours are linear; the model's are sRGB.
uint8_t ScreenColor(double light) {
    constexpr double linearPart = 0.0031308;
    const double clamped = light > 0.0 ? std::min(light, 1.0) : 0.0;
    const double shown =
        clamped <= linearPart ? 12.92 * clamped : 1.055 * std::pow(clamped, 1.0 / 2.4) - 0.055;
    return static_cast<uint8_t>(std::lround(shown * 255.0));
}

// Scale, then rotation, then offset, with v pointing down.
void ReadTransform(const JsonTape& json, uint32_t transform, GltfSurface& surface) {
    std::array<double, 2> offset = {0.0, 0.0};
    std::array<double, 2> scale = {1.0, 1.0};
    ReadSomeNumbers(json, transform, "offset", offset);
    ReadSomeNumbers(json, transform, "scale", scale);
    const double angle = NumberMember(json, transform, "rotation", 0.0);
    surface.U = {std::cos(angle) * scale[0], std::sin(angle) * scale[1], offset[0]};
    surface.V = {-std::sin(angle) * scale[0], std::cos(angle) * scale[1], offset[1]};
    const uint32_t set = IndexMember(json, transform, "texCoord");
    surface.CoordinateSet = set != NoIndex ? set : surface.CoordinateSet;
}

struct MaterialReading {
    GltfDocument& Document;
    const JsonTape& Json;
    Model& Output;
    std::vector<uint32_t> Images;
    ImportedPictures Pictures;
    std::vector<bool> LacksPicture; // textures with a picture only in an extension that can't be read
};

uint32_t ReadPicture(MaterialReading& reading, uint32_t index) {
    const uint32_t image = reading.Images[index];
    const std::u16string key = u"image:" + Utf16FromUtf8(std::to_string(index));
    // Before its bytes are copied or decoded: any number of materials may have it.
    if (const auto found = reading.Pictures.Found.find(key); found != reading.Pictures.Found.end()) {
        return found->second;
    }
    const std::u16string name = Utf16FromUtf8(TextMember(reading.Json, image, "name"));
    const std::string_view uri = TextMember(reading.Json, image, "uri");
    const uint32_t bufferView = MemberOf(reading.Json, image, "bufferView");
    std::vector<uint8_t> bytes;
    if (bufferView != 0 && KindOf(reading.Json, bufferView) == JsonKind::Number) {
        std::span<const uint8_t> view;
        std::string ignored;
        if (FindBufferView(reading.Document, IndexIn(reading.Json, bufferView), view, ignored)) {
            bytes.assign(view.begin(), view.end());
        }
    } else if (IsDataUri(uri)) {
        DecodeDataUri(uri, bytes);
    } else {
        return TakePictureFile(reading.Pictures, reading.Output, Utf16FromUtf8(DecodePercent(uri)));
    }
    // Without bytes, the check of the picture reports the reason.
    return TakePictureBytes(reading.Pictures, reading.Output, key, name.empty() ? key : name,
                            std::move(bytes));
}

// info is the object that refers to a texture.
void ReadTexture(MaterialReading& reading, uint32_t info, ModelMaterial& material,
                 GltfSurface& surface) {
    const JsonTape& json = reading.Json;
    const uint32_t texture = IndexMember(json, info, "index");
    if (texture == NoIndex) {
        return;
    }
    const uint32_t set = IndexMember(json, info, "texCoord");
    surface.CoordinateSet = set != NoIndex ? set : 0;
    const uint32_t transform = ExtensionOf(json, info, TransformExtension);
    if (transform != 0) {
        ReadTransform(json, transform, surface);
    }
    const std::vector<GltfTexture>& textures = reading.Document.Records.Textures;
    const uint32_t image = texture < textures.size() ? textures[texture].Image : NoIndex;
    if (image == NoIndex && texture < textures.size() && textures[texture].Extension != NoIndex) {
        reading.LacksPicture[texture] = true;
        return;
    }
    if (image >= reading.Images.size()) {
        reading.Output.Remarks.push_back("the texture of the material \"" +
                                         Utf8FromUtf16(material.Name) + "\" has no usable picture");
        return;
    }
    ShowPicture(reading.Pictures, ReadPicture(reading, image), material);
}

void SetColor(const std::array<double, 4>& factor, std::string_view alphaMode, ModelMaterial& material) {
    for (size_t i = 0; i < 3; ++i) {
        material.Color[i] = ScreenColor(factor[i]);
    }
    // Only this mode blends; in the others alpha has no effect or cuts out parts of the picture.
    if (alphaMode == "BLEND" && factor[3] < 1.0) {
        material.UseOpacity = true;
        material.Opacity = std::max(factor[3], 0.0);
    }
}

void ReadMaterial(MaterialReading& reading, uint32_t source, ModelMaterial& material,
                  GltfSurface& surface) {
    const JsonTape& json = reading.Json;
    const uint32_t diffuse = ExtensionOf(json, source, DiffuseExtension);
    const uint32_t base = diffuse != 0 ? diffuse : ObjectMember(json, source, "pbrMetallicRoughness");
    std::array<double, 4> factor = {1.0, 1.0, 1.0, 1.0};
    if (diffuse != 0) {
        ReadSomeNumbers(json, diffuse, "diffuseFactor", factor);
    } else {
        ReadNumbers(json, base, "baseColorFactor", factor);
    }
    SetColor(factor, TextMember(json, source, "alphaMode"), material);
    ReadTexture(reading, ObjectMember(json, base, diffuse != 0 ? "diffuseTexture" : "baseColorTexture"),
                material, surface);
}

// One line for each extension with pictures that can't be read.
void RemarkLackingPictures(const MaterialReading& reading) {
    const GltfRecords& records = reading.Document.Records;
    std::map<uint32_t, size_t> counts; // by extension
    for (size_t i = 0; i < records.Textures.size(); ++i) {
        if (reading.LacksPicture[i]) {
            ++counts[records.Textures[i].Extension];
        }
    }
    for (const auto& [name, count] : counts) {
        reading.Output.Remarks.push_back(std::to_string(count) +
                                         (count == 1 ? " texture has its" : " textures have their") +
                                         " picture only in the glTF extension \"" +
                                         records.Extensions[name] + "\", which is not supported");
    }
}

} // namespace

bool ReadGltfMaterials(GltfDocument& document, const JsonTape& json, const std::u16string& directory,
                       Model& model, std::vector<GltfSurface>& surfaces, std::string& error) {
    MaterialReading reading = {document, json,
                               model,    ElementsOf(json, RootArray(json, "images")),
                               {},       std::vector<bool>(document.Records.Textures.size())};
    reading.Pictures.Directory = directory;
    for (const uint32_t source : ElementsOf(json, RootArray(json, "materials"))) {
        if (KindOf(json, source) != JsonKind::Object) {
            return FailAt(json, source, "this must be an object", error);
        }
        ModelMaterial material;
        material.Name = Utf16FromUtf8(TextMember(json, source, "name"));
        surfaces.emplace_back();
        ReadMaterial(reading, source, material, surfaces.back());
        model.Materials.push_back(std::move(material));
    }
    RemarkLackingPictures(reading);
    return true;
}
