// Limits and layouts of decoded pictures.
#include "picture/DecodedPicture.h"

#include <algorithm>
#include <cassert>

bool HasAllowedSize(uint64_t width, uint64_t height) {
    return width <= LargestPictureSide && height <= LargestPictureSide &&
           width * height <= LargestPicturePixels;
}

std::optional<PictureFault> StartPicture(uint32_t width, uint32_t height, uint32_t channels,
                                         DecodedPicture& picture) {
    assert(width > 0 && height > 0 && channels > 0 && channels <= RgbaChannels);
    if (!HasAllowedSize(width, height)) {
        return PictureFault{PictureFaultKind::TooManyPixels, {}};
    }
    picture.Width = width;
    picture.Height = height;
    picture.Channels = channels;
    picture.Pixels.reset(static_cast<uint8_t*>(std::malloc(size_t{width} * height * channels)));
    if (picture.Pixels == nullptr) {
        return PictureFault{PictureFaultKind::Undecodable, "not enough memory"};
    }
    return std::nullopt;
}

void ReduceChannels(uint32_t channels, DecodedPicture& picture) {
    assert(picture.Channels == RgbaChannels && channels > 0 && channels < RgbaChannels);
    const uint32_t colors = channels == 2 ? 1 : channels;
    const uint8_t* from = picture.Pixels.get();
    uint8_t* to = picture.Pixels.get();
    const uint8_t* const end = from + size_t{picture.Width} * picture.Height * RgbaChannels;
    for (; from < end; from += RgbaChannels) {
        to = std::copy_n(from, colors, to);
        if (channels == 2) {
            *to++ = from[RgbaChannels - 1];
        }
    }
    picture.Channels = channels;
}
