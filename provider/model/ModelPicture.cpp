// Keeps a picture's file unchanged, so that a sound PNG file is written byte for byte.
#include "provider/model/ModelPicture.h"

#include "picture/PictureReader.h"
#include "picture/PngWriter.h"

namespace {

constexpr uint32_t OwnChannels = 0;

const char* Words(PictureFault fault) {
    switch (fault) {
    case PictureFault::UnknownFile:
        return "is not a PNG, JPEG, BMP or TGA file that can be decoded";
    case PictureFault::TooManyPixels:
        return "has too many pixels";
    case PictureFault::Undecodable:
        break;
    }
    return "can't be decoded";
}

} // namespace

const char* LoadPicture(std::vector<uint8_t> bytes, ModelPicture& picture) {
    if (bytes.size() > LargestPictureFile) {
        return "is too large";
    }
    DecodedPicture decoded;
    if (const auto fault = DecodePicture(bytes, OwnChannels, decoded)) {
        return Words(*fault);
    }
    picture.SoundPng = IsSoundPng(bytes);
    picture.Bytes = std::move(bytes);
    picture.Width = decoded.Width;
    picture.Height = decoded.Height;
    return nullptr;
}

bool EncodePng(const ModelPicture& picture, std::vector<uint8_t>& png) {
    if (picture.SoundPng) {
        png = picture.Bytes;
        return true;
    }
    DecodedPicture decoded;
    if (DecodePicture(picture.Bytes, OwnChannels, decoded)) {
        return false;
    }
    const size_t size = size_t{decoded.Width} * decoded.Height * decoded.Channels;
    png = EncodePng({decoded.Pixels.get(), size}, decoded.Width, decoded.Height, decoded.Channels);
    return !png.empty();
}

bool MakePicture(uint32_t width, uint32_t height, std::span<const uint8_t> texels,
                 ModelPicture& picture) {
    constexpr uint32_t channels = 4;
    if (width == 0 || height == 0 || !HasAllowedSize(width, height) ||
        texels.size() != size_t{width} * height * channels) {
        return false;
    }
    picture.Width = width;
    picture.Height = height;
    picture.SoundPng = true;
    picture.Bytes = EncodePng(texels, width, height, channels);
    return !picture.Bytes.empty();
}
