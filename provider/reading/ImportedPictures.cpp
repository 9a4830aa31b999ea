// The pictures of a model in an interchange format. Callers that write pictures distinguish them by
// name alone, ignoring case.
#include "provider/reading/ImportedPictures.h"

#include "picture/PictureReader.h"
#include "platform/Files.h"
#include "platform/Text.h"

// UTF-16 units; readers of names truncate longer ones.
constexpr size_t LongestName = 200;

namespace {

void KeepName(ImportedPictures& pictures, const std::u16string& wanted) {
    const std::u16string base = wanted.empty() ? u"picture" : wanted.substr(0, LongestName);
    constexpr uint32_t second = 2;
    const auto [same, isFirst] = pictures.NextNumbers.emplace(FoldCase(base), second);
    std::u16string name = base;
    for (bool isNew = isFirst; !isNew;) {
        name = base + u"~" + Utf16FromUtf8(std::to_string(same->second++));
        isNew = pictures.NextNumbers.emplace(FoldCase(name), second).second;
    }
    pictures.Names.push_back(name);
}

uint32_t KeepPicture(ImportedPictures& pictures, Model& model, const std::u16string& key,
                     const std::u16string& name, ModelPicture picture) {
    const auto index = static_cast<uint32_t>(model.Pictures.size());
    model.Pictures.push_back(std::move(picture));
    KeepName(pictures, name);
    pictures.Found[key] = index;
    return index;
}

uint32_t RefusePicture(ImportedPictures& pictures, Model& model, const std::u16string& key,
                       const std::u16string& name, const std::string& reason) {
    model.Remarks.push_back("the picture \"" + Utf8FromUtf16(name) + "\" " + reason);
    pictures.Found[key] = NoIndex;
    return NoIndex;
}

} // namespace

uint32_t TakePictureBytes(ImportedPictures& pictures, Model& model, const std::u16string& key,
                          const std::u16string& name, std::vector<uint8_t> bytes) {
    const auto found = pictures.Found.find(key);
    if (found != pictures.Found.end()) {
        return found->second;
    }
    ModelPicture picture;
    std::string reason;
    if (!LoadPicture(std::move(bytes), picture, reason)) {
        return RefusePicture(pictures, model, key, name, reason);
    }
    return KeepPicture(pictures, model, key, name, std::move(picture));
}

uint32_t TakePictureFile(ImportedPictures& pictures, Model& model, const std::u16string& file) {
    const std::u16string key = u"file:" + file;
    const auto found = pictures.Found.find(key);
    if (found != pictures.Found.end()) {
        return found->second;
    }
    std::vector<uint8_t> bytes;
    // Models often contain the paths of the machine that made them. Its separator may be the colon, so
    // every colon separates here.
    const std::u16string bare = file.substr(file.find_last_of(u"/\\:") + 1);
    if (bare.empty() || (!ReadWholeFile(PathIn(pictures.Directory, file), bytes, LargestPictureFile) &&
                         !ReadWholeFile(pictures.Directory + bare, bytes, LargestPictureFile))) {
        return RefusePicture(pictures, model, key, file, "can't be found or read");
    }
    return TakePictureBytes(pictures, model, key, file, std::move(bytes));
}

uint32_t TakeTexels(ImportedPictures& pictures, Model& model, const std::u16string& key,
                    const std::u16string& name, uint32_t width, uint32_t height,
                    std::span<const uint8_t> texels) {
    const auto found = pictures.Found.find(key);
    if (found != pictures.Found.end()) {
        return found->second;
    }
    ModelPicture picture;
    std::string reason;
    if (!MakePicture(width, height, texels, picture, reason)) {
        return RefusePicture(pictures, model, key, name, reason);
    }
    return KeepPicture(pictures, model, key, name, std::move(picture));
}

void ShowPicture(const ImportedPictures& pictures, uint32_t picture, ModelMaterial& material) {
    if (picture != NoIndex) {
        material.Type = MaterialType::Textured;
        material.Picture = picture;
        material.PictureName = pictures.Names[picture];
    }
}
