// Feeds bytes to the reader of pictures; writes the accepted ones and reads them again.
#include "FuzzInput.h"
#include "picture/PictureReader.h"
#include "provider/model/ModelPicture.h"

namespace {

constexpr uint32_t Channels = 4;

// The pixels, or none if the bytes can't be decoded.
std::vector<uint8_t> PixelsOf(std::span<const uint8_t> bytes) {
    DecodedPicture decoded;
    if (DecodePicture(bytes, Channels, decoded)) {
        return {};
    }
    const size_t size = size_t{decoded.Width} * decoded.Height * Channels;
    return {decoded.Pixels.get(), decoded.Pixels.get() + size};
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr uint64_t largest = 1 << 20; // larger pictures take seconds to write
    ModelPicture picture;
    std::string reason;
    if (!LoadPicture({data, data + size}, picture, reason)) {
        Expect(!reason.empty());
        return 0;
    }
    const uint64_t pixels = uint64_t{picture.Width} * picture.Height;
    Expect(pixels > 0 && pixels <= LargestPicturePixels);
    if (pixels > largest) {
        return 0;
    }
    std::vector<uint8_t> png;
    Expect(EncodePng(picture, png, reason));
    ModelPicture again;
    Expect(LoadPicture(png, again, reason));
    Expect(again.Width == picture.Width && again.Height == picture.Height && again.SoundPng);
    // The file's own channels, which were written, and four channels show the same.
    const std::vector<uint8_t> shown = PixelsOf(png);
    Expect(!shown.empty() && shown == PixelsOf({data, size}));
    return 0;
}
