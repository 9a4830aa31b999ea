// The pictures, materials and layers of a model document.
#include "provider/document/DocumentMaterials.h"

#include "picture/PictureReader.h"
#include "platform/Files.h"
#include "platform/Text.h"

constexpr uint32_t ColorLimit = 256;

namespace {

// Six hexadecimal digits after a number sign.
bool ReadHexColor(std::string_view text, std::array<uint8_t, 4>& color) {
    if (text.size() != 7 || text[0] != '#') {
        return false;
    }
    for (size_t i = 0; i < 6; ++i) {
        const int digit = HexDigit(text[i + 1]);
        if (digit < 0) {
            return false;
        }
        color[i / 2] = static_cast<uint8_t>(i % 2 == 0 ? digit * 16 : color[i / 2] + digit);
    }
    return true;
}

bool ReadColor(DocumentReader& reader, uint32_t node, std::array<uint8_t, 4>& color) {
    if (node == 0) {
        return true;
    }
    if (KindOf(reader.Json, node) == JsonKind::Text) {
        return ReadHexColor(TextOf(reader.Json, node), color) ||
               Fail(reader, node, "this must be \"#RRGGBB\" with hexadecimal digits");
    }
    const bool isArray = KindOf(reader.Json, node) == JsonKind::Array;
    const uint32_t count = isArray ? CountIn(reader.Json, node) : 0;
    if (count != 3 && count != 4) {
        return Fail(reader, node, "this must be \"#RRGGBB\" or an array of three or four numbers");
    }
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t value = 0;
        if (!ReadWhole(reader, ValueIn(reader.Json, node, i), ColorLimit, value)) {
            return false;
        }
        color[i] = static_cast<uint8_t>(value);
    }
    return true;
}

bool ReadMaterialType(DocumentReader& reader, uint32_t node, ModelMaterial& material) {
    material.Type = material.Picture == NoIndex ? MaterialType::Plain : MaterialType::Textured;
    std::string_view type;
    if (node == 0) {
        return true;
    }
    if (!ReadText(reader, node, type)) {
        return false;
    }
    if (type == "plain") {
        material.Type = MaterialType::Plain;
    } else if (type == "textured" || type == "colorized") {
        if (material.Picture == NoIndex) {
            return Fail(reader, node, "a material of this type requires a picture");
        }
        material.Type = type == "textured" ? MaterialType::Textured : MaterialType::Colorized;
    } else {
        return Fail(reader, node, "this must be \"plain\", \"textured\" or \"colorized\"");
    }
    return true;
}

} // namespace

bool ReadPicture(DocumentReader& reader, uint32_t node, uint32_t& index) {
    if (node == 0) {
        return true;
    }
    std::string_view name;
    if (!ReadText(reader, node, name)) {
        return false;
    }
    const auto found = reader.Pictures.find(name);
    if (found != reader.Pictures.end()) {
        index = found->second;
        return true;
    }
    const std::u16string file = Utf16FromUtf8(name);
    std::vector<uint8_t> bytes;
    if (!ReadWholeFile(PathIn(reader.Directory, file), bytes, LargestPictureFile)) {
        return Fail(reader, node, "the picture " + Quoted(name) + " can't be found or read");
    }
    ModelPicture picture;
    std::string reason;
    if (!LoadPicture(std::move(bytes), picture, reason)) {
        return Fail(reader, node, "the picture " + Quoted(name) + " " + reason);
    }
    index = static_cast<uint32_t>(reader.Output.Pictures.size());
    reader.Output.Pictures.push_back(std::move(picture));
    reader.Pictures.emplace(name, index);
    return true;
}

bool ReadPictureSize(DocumentReader& reader, uint32_t widthNode, uint32_t heightNode, uint32_t picture,
                     double& width, double& height) {
    const double pixelsWide = reader.Output.Pictures[picture].Width;
    const double pixelsHigh = reader.Output.Pictures[picture].Height;
    width = pixelsWide;
    height = pixelsHigh;
    if (!ReadLength(reader, widthNode, width) || !ReadLength(reader, heightNode, height)) {
        return false;
    }
    if (widthNode != 0 && heightNode == 0) {
        height = width * pixelsHigh / pixelsWide;
    } else if (widthNode == 0 && heightNode != 0) {
        width = height * pixelsWide / pixelsHigh;
    }
    return true;
}

bool ReadMaterial(DocumentReader& reader, uint32_t node) {
    uint32_t name = 0;
    uint32_t color = 0;
    uint32_t opacity = 0;
    uint32_t picture = 0;
    uint32_t pictureName = 0;
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t type = 0;
    ModelMaterial material;
    if (!ReadMembers(reader, node,
                     {{"name", &name, true},
                      {"color", &color},
                      {"opacity", &opacity},
                      {"picture", &picture},
                      {"pictureName", &pictureName},
                      {"width", &width},
                      {"height", &height},
                      {"type", &type}}) ||
        !ReadUniqueName(reader, name, reader.Output.Materials.size(), reader.Materials, material.Name) ||
        !ReadColor(reader, color, material.Color) ||
        !ReadNumberIn(reader, opacity, 0.0, 1.0, material.Opacity)) {
        return false;
    }
    material.UseOpacity = opacity != 0;
    if (picture != 0) {
        if (!ReadPicture(reader, picture, material.Picture) ||
            !ReadText(reader, picture, material.PictureName) ||
            !ReadText(reader, pictureName, material.PictureName) ||
            !ReadPictureSize(reader, width, height, material.Picture, material.Width, material.Height)) {
            return false;
        }
    } else {
        for (const uint32_t needsPicture : {pictureName, width, height}) {
            if (needsPicture != 0) {
                return Fail(reader, needsPicture, "this key requires a picture");
            }
        }
    }
    if (!ReadMaterialType(reader, type, material)) {
        return false;
    }
    reader.Output.Materials.push_back(std::move(material));
    return true;
}

bool ReadLayer(DocumentReader& reader, uint32_t node) {
    uint32_t name = 0;
    uint32_t visible = 0;
    ModelLayer layer;
    if (!ReadMembers(reader, node, {{"name", &name, true}, {"visible", &visible}}) ||
        !ReadUniqueName(reader, name, reader.Output.Layers.size(), reader.Layers, layer.Name) ||
        !ReadFlag(reader, visible, layer.Visible)) {
        return false;
    }
    reader.Output.Layers.push_back(std::move(layer));
    return true;
}
