// Feeds bytes to the reader of pictures; writes the accepted ones and reads them again.
#include "FuzzInput.h"
#include "picture/PictureReader.h"
#include "provider/model/ModelPicture.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr uint64_t largest = 1 << 20; // larger pictures take seconds to write
    ModelPicture picture;
    if (LoadPicture({data, data + size}, picture) != nullptr) {
        return 0;
    }
    const uint64_t pixels = uint64_t{picture.Width} * picture.Height;
    Expect(pixels > 0 && pixels <= LargestPicturePixels);
    if (pixels > largest) {
        return 0;
    }
    std::vector<uint8_t> png;
    Expect(EncodePng(picture, png));
    ModelPicture again;
    Expect(LoadPicture(png, again) == nullptr);
    Expect(again.Width == picture.Width && again.Height == picture.Height && again.SoundPng);
    return 0;
}
