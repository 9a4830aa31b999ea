// Keeps a picture's file unchanged, so that a sound PNG file is written byte for byte.
#include "provider/model/ModelPicture.h"

#include "picture/PictureReader.h"
#include "picture/PngWriter.h"

constexpr uint32_t OwnChannels = 0;
constexpr std::string_view Formats = "PNG, JPEG, WebP, BMP or TGA";

bool LoadPicture(std::vector<uint8_t> bytes, ModelPicture& picture, std::string& reason) {
    if (bytes.size() > LargestPictureFile) {
        reason = "is too large";
        return false;
    }
    DecodedPicture decoded;
    if (const auto fault = DecodePicture(bytes, OwnChannels, decoded)) {
        reason = FaultWords(*fault, Formats);
        return false;
    }
    picture.SoundPng = IsSoundPng(bytes);
    picture.Bytes = std::move(bytes);
    picture.Width = decoded.Width;
    picture.Height = decoded.Height;
    return true;
}

bool EncodePng(const ModelPicture& picture, std::vector<uint8_t>& png, std::string& reason) {
    if (picture.SoundPng) {
        png = picture.Bytes;
        return true;
    }
    DecodedPicture decoded;
    if (const auto fault = DecodePicture(picture.Bytes, OwnChannels, decoded)) {
        reason = FaultWords(*fault, Formats);
        return false;
    }
    const size_t size = size_t{decoded.Width} * decoded.Height * decoded.Channels;
    png =
        EncodePng({decoded.Pixels.get(), size}, decoded.Width, decoded.Height, decoded.Channels, reason);
    return !png.empty();
}

bool MakePicture(uint32_t width, uint32_t height, std::span<const uint8_t> texels, ModelPicture& picture,
                 std::string& reason) {
    constexpr uint32_t channels = 4;
    if (width == 0 || height == 0 || !HasAllowedSize(width, height) ||
        texels.size() != size_t{width} * height * channels) {
        reason = "is empty or too large";
        return false;
    }
    picture.Width = width;
    picture.Height = height;
    picture.SoundPng = true;
    picture.Bytes = EncodePng(texels, width, height, channels, reason);
    return !picture.Bytes.empty();
}
