// Replaces libjpeg-turbo, libspng and libwebp in builds without them. BMP and TGA files can be read.
#include "picture/Decoders.h"
#include "picture/PictureReader.h"
#include "picture/PngWriter.h"

static PictureFault Lacks(const char* library) {
    return {PictureFaultKind::Undecodable, std::string("this build does not include ") + library};
}

std::optional<PictureFault> DecodeJpeg(std::span<const uint8_t>, uint32_t, DecodedPicture&) {
    return Lacks("libjpeg-turbo");
}

std::optional<PictureFault> DecodePng(std::span<const uint8_t>, uint32_t, DecodedPicture&) {
    return Lacks("libspng");
}

std::optional<PictureFault> DecodeWebp(std::span<const uint8_t>, uint32_t, DecodedPicture&) {
    return Lacks("libwebp");
}

// Nothing is copied that can't be decoded.
bool IsSoundPng(std::span<const uint8_t>) {
    return false;
}

std::vector<uint8_t> EncodePng(std::span<const uint8_t>, uint32_t, uint32_t, uint32_t,
                               std::string& reason) {
    reason = "can't be encoded (" + Lacks("libspng").Reason + ")";
    return {};
}
