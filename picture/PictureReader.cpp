// Finds the format of a picture file by its first bytes. TGA has none of its own, so it is what remains.
#include "picture/PictureReader.h"

#include "picture/Decoders.h"

#include <algorithm>
#include <cassert>

constexpr std::string_view PngMagic = "\x89PNG\r\n\x1A\n";
constexpr std::string_view RiffMagic = "RIFF";
constexpr std::string_view WebpMagic = "WEBP"; // after the length of the RIFF file
constexpr size_t WebpMagicAt = 8;
constexpr uint8_t JpegMarker = 0xFF;
constexpr uint8_t JpegStart = 0xD8;

namespace {

// The index of the marker that starts a JPEG file, or the size of any other file. Any number of fill
// bytes may precede a marker, including the first one.
size_t StartOfJpeg(std::span<const uint8_t> bytes) {
    const auto code = static_cast<size_t>(
        std::ranges::find_if_not(bytes, [](uint8_t byte) { return byte == JpegMarker; }) -
        bytes.begin());
    return code > 0 && code < bytes.size() && bytes[code] == JpegStart ? code - 1 : bytes.size();
}

std::optional<PictureFault> DecodeByMagic(std::span<const uint8_t> bytes, uint32_t channels,
                                          DecodedPicture& picture) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (text.starts_with(PngMagic)) {
        return DecodePng(bytes, channels, picture);
    }
    if (const size_t start = StartOfJpeg(bytes); start < bytes.size()) {
        return DecodeJpeg(bytes.subspan(start), channels, picture);
    }
    if (text.starts_with(RiffMagic) && text.size() > WebpMagicAt &&
        text.substr(WebpMagicAt).starts_with(WebpMagic)) {
        return DecodeWebp(bytes, channels, picture);
    }
    return DecodeBmpOrTga(bytes, channels, picture);
}

} // namespace

std::optional<PictureFault> DecodePicture(std::span<const uint8_t> bytes, uint32_t channels,
                                          DecodedPicture& picture) {
    assert(bytes.size() <= LargestPictureFile && (channels == 0 || channels == RgbaChannels));
    auto fault = DecodeByMagic(bytes, channels, picture);
    assert(fault || picture.Channels == channels || channels == 0);
    return fault;
}

std::string FaultWords(const PictureFault& fault, std::string_view formats) {
    const std::string reason = fault.Reason.empty() ? "" : " (" + fault.Reason + ")";
    switch (fault.Kind) {
    case PictureFaultKind::UnknownFile:
        return "is not a " + std::string(formats) + " file that can be decoded" + reason;
    case PictureFaultKind::TooManyPixels:
        return "has too many pixels";
    case PictureFaultKind::Undecodable:
        break;
    }
    return "can't be decoded" + reason;
}
