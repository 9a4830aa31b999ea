// Reads pictures with stb_image.
#include "inspect/stored/Textures.h"

#include "inspect/stored/Wording.h"
#include "platform/Files.h"

#include <memory>
#include <string_view>

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG
#define STBI_ONLY_JPEG
#define STBI_NO_STDIO
#define STBI_MAX_DIMENSIONS 32768
#include <stb_image.h>

namespace {

// Bytes of a picture file, and pixels of a picture: keep a small file from asking for gigabytes.
constexpr size_t LargestFile = size_t{1} << 30;
constexpr uint64_t LargestPicture = uint64_t{1} << 27;

constexpr std::string_view PngMagic = "\x89PNG";
constexpr std::string_view JpegMagic = "\xFF\xD8\xFF";

const char* MimeTypeOf(const std::vector<uint8_t>& bytes) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (text.starts_with(PngMagic)) {
        return "image/png";
    }
    return text.starts_with(JpegMagic) ? "image/jpeg" : nullptr;
}

// Gives null, or the reason why the bytes can't be used.
const char16_t* Decode(Texture& texture) {
    const int size = static_cast<int>(texture.FileBytes.size());
    int width = 0;
    int height = 0;
    int channels = 0;
    texture.MimeType = MimeTypeOf(texture.FileBytes);
    if (texture.MimeType == nullptr ||
        stbi_info_from_memory(texture.FileBytes.data(), size, &width, &height, &channels) == 0) {
        return u"is no PNG or JPEG file";
    }
    if (static_cast<uint64_t>(width) * static_cast<uint64_t>(height) > LargestPicture) {
        return u"has too many pixels";
    }
    const std::unique_ptr<stbi_uc, void (*)(void*)> pixels(
        stbi_load_from_memory(texture.FileBytes.data(), size, &width, &height, &channels, 4),
        stbi_image_free);
    if (pixels == nullptr || width <= 0 || height <= 0) {
        return u"can't be decoded";
    }
    texture.Width = static_cast<uint32_t>(width);
    texture.Height = static_cast<uint32_t>(height);
    const size_t bytes = size_t{texture.Width} * texture.Height * 4;
    texture.Pixels.assign(pixels.get(), pixels.get() + bytes);
    for (size_t alpha = 3; alpha < bytes; alpha += 4) {
        texture.IsOpaque = texture.IsOpaque && texture.Pixels[alpha] == 255;
    }
    return nullptr;
}

} // namespace

const Texture* FindTexture(TextureShelf& shelf, const std::u16string& storedPath) {
    if (storedPath.empty()) {
        return nullptr;
    }
    const std::u16string name = LastComponent(storedPath);
    const auto [place, isNew] = shelf.Pictures.try_emplace(name);
    std::optional<Texture>& picture = place->second;
    if (isNew) {
        const char16_t* reason = u"can't be read";
        if (ReadWholeFile(shelf.Directory + name, picture.emplace().FileBytes,
                          {.LargestSize = LargestFile, .AllowDevices = true})) {
            reason = Decode(*picture);
        }
        if (reason != nullptr) {
            picture.reset();
            shelf.Warnings.push_back(u"texture " + Quoted(shelf.Directory + name) + u" " + reason +
                                     u"; what bears it is left without one");
        }
    }
    return picture ? &*picture : nullptr;
}
