// Accepts the picture formats that glTF allows.
#include "inspect/stored/Textures.h"

#include "inspect/stored/Wording.h"
#include "picture/PictureReader.h"
#include "platform/Files.h"
#include "platform/Text.h"

#include <string_view>

namespace {

// Bytes of a picture file.
constexpr size_t LargestFile = size_t{1} << 30;
static_assert(LargestFile <= LargestPictureFile);

constexpr uint32_t Channels = 4;

constexpr std::string_view PngMagic = "\x89PNG";
constexpr std::string_view JpegMagic = "\xFF\xD8\xFF";

const char* MimeTypeOf(const std::vector<uint8_t>& bytes) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (text.starts_with(PngMagic)) {
        return "image/png";
    }
    return text.starts_with(JpegMagic) ? "image/jpeg" : nullptr;
}

std::u16string Words(const PictureFault& fault) {
    return Utf16FromUtf8(FaultWords(fault, "PNG or JPEG"));
}

} // namespace

std::u16string LoadTexture(std::vector<uint8_t> bytes, Texture& texture) {
    texture.MimeType = MimeTypeOf(bytes);
    if (texture.MimeType == nullptr) {
        return Words({PictureFaultKind::UnknownFile, {}});
    }
    DecodedPicture picture;
    if (const auto fault = DecodePicture(bytes, Channels, picture)) {
        return Words(*fault);
    }
    texture.FileBytes = std::move(bytes);
    texture.Width = picture.Width;
    texture.Height = picture.Height;
    const size_t size = size_t{texture.Width} * texture.Height * Channels;
    texture.Pixels.assign(picture.Pixels.get(), picture.Pixels.get() + size);
    for (size_t alpha = Channels - 1; alpha < size; alpha += Channels) {
        texture.IsOpaque = texture.IsOpaque && texture.Pixels[alpha] == 255;
    }
    return {};
}

const Texture* FindTexture(TextureShelf& shelf, const std::u16string& storedPath) {
    if (storedPath.empty()) {
        return nullptr;
    }
    const std::u16string name = LastComponent(storedPath);
    const auto [place, isNew] = shelf.Pictures.try_emplace(name);
    std::optional<Texture>& picture = place->second;
    if (isNew) {
        std::u16string reason = u"can't be read";
        std::vector<uint8_t> bytes;
        if (ReadWholeFile(shelf.Directory + name, bytes, LargestFile)) {
            reason = LoadTexture(std::move(bytes), picture.emplace());
        }
        if (!reason.empty()) {
            picture.reset();
            shelf.Warnings.push_back(u"texture " + Quoted(shelf.Directory + name) + u" " + reason +
                                     u" and is omitted");
        }
    }
    return picture ? &*picture : nullptr;
}
