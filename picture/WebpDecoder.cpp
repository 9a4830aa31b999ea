// Decodes WebP files with libwebp: lossy and lossless ones, with or without alpha. An animation is not a
// picture.
#include "picture/Decoders.h"

#include <webp/decode.h>

constexpr size_t RiffHeader = 8; // magic and length

namespace {

// The library names its errors in its header alone.
PictureFault FaultOf(PictureFaultKind kind, VP8StatusCode status) {
    switch (status) {
    case VP8_STATUS_OUT_OF_MEMORY:
        return {kind, "out of memory"};
    case VP8_STATUS_UNSUPPORTED_FEATURE:
        return {kind, "unsupported feature"};
    case VP8_STATUS_NOT_ENOUGH_DATA:
        return {kind, "not enough data"};
    default:
        return {kind, "bitstream error"};
    }
}

// Expects a file with a complete header.
bool IsTruncated(std::span<const uint8_t> bytes) {
    const uint64_t length =
        uint64_t{bytes[7]} << 24 | uint64_t{bytes[6]} << 16 | uint64_t{bytes[5]} << 8 | bytes[4];
    return bytes.size() - RiffHeader < length;
}

} // namespace

std::optional<PictureFault> DecodeWebp(std::span<const uint8_t> bytes, uint32_t channels,
                                       DecodedPicture& picture) {
    WebPDecoderConfig config;
    WebPInitDecoderConfig(&config);
    VP8StatusCode status = WebPGetFeatures(bytes.data(), bytes.size(), &config.input);
    if (status != VP8_STATUS_OK) {
        return FaultOf(PictureFaultKind::UnknownFile, status);
    }
    const uint32_t ownChannels = config.input.has_alpha != 0 ? RgbaChannels : 3;
    const uint32_t wanted = channels != 0 ? channels : ownChannels;
    if (auto fault = StartPicture(static_cast<uint32_t>(config.input.width),
                                  static_cast<uint32_t>(config.input.height), wanted, picture)) {
        return fault;
    }
    if (IsTruncated(bytes)) {
        return PictureFault{PictureFaultKind::Undecodable, PrematureEnd};
    }
    config.output.colorspace = wanted == RgbaChannels ? MODE_RGBA : MODE_RGB;
    config.output.is_external_memory = 1;
    config.output.u.RGBA.rgba = picture.Pixels.get();
    config.output.u.RGBA.stride = static_cast<int>(picture.Width * wanted);
    config.output.u.RGBA.size = size_t{picture.Width} * picture.Height * wanted;
    status = WebPDecode(bytes.data(), bytes.size(), &config);
    if (status != VP8_STATUS_OK) {
        return FaultOf(PictureFaultKind::Undecodable, status);
    }
    if (wanted > ownChannels) {
        // The pixels of a lossless file have alpha even if its header denies that.
        constexpr uint8_t opaque = 255;
        for (size_t at = 3; at < config.output.u.RGBA.size; at += RgbaChannels) {
            picture.Pixels.get()[at] = opaque;
        }
    }
    return std::nullopt;
}
