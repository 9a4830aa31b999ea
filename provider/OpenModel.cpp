// Opens a model file of any format known here. JSON and binary glTF are told by their content alone, the
// other formats by content where it has a mark, else by the name's ending.
#include "provider/OpenModel.h"

#include "platform/Bytes.h"
#include "platform/Files.h"
#include "platform/Text.h"
#include "provider/FileFormat.h"
#include "provider/assimp/AssimpModel.h"
#include "provider/document/ModelDocument.h"
#include "provider/gltf/GltfModel.h"

#include <string_view>

namespace {

// Whether the first thing after marks, blanks and comments can begin a JSON object.
bool LooksLikeJson(std::string_view text) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(byteOrderMark)) {
        text.remove_prefix(byteOrderMark.size());
    }
    const size_t start = text.find_first_not_of(" \t\r\n");
    return start != std::string_view::npos && (text[start] == '{' || text[start] == '/');
}

// The ending of a path's last component in lower case, with its dot.
std::string EndingOfPath(const std::u16string& path) {
    const std::u16string name = LastComponent(path);
    const size_t dot = name.rfind(u'.');
    return dot != std::u16string::npos ? FoldCase(Utf8FromUtf16(name.substr(dot))) : std::string();
}

// told is the ending of the format that the content shows, or empty.
bool OpenWithAssimp(const std::u16string& path, std::string_view told, Model& model,
                    std::string& error) {
    return ReadAssimpModel(path, told == EndingOfPath(path) ? "" : told, model, error);
}

// A glTF document, alone or in its binary file. Version 1 is left to the other library.
bool OpenGltf(const std::u16string& path, const GltfParts& parts, const JsonTape& json,
              std::string_view ending, Model& model, std::string& error) {
    if (GltfVersion(json).starts_with("2")) {
        return ReadGltfModel(parts, json, DirectoryPart(path), model, error);
    }
    return OpenWithAssimp(path, ending, model, error);
}

} // namespace

bool OpenModel(const std::u16string& path, Model& model, std::string& error) {
    std::vector<uint8_t> bytes;
    if (!ReadWholeFile(path, bytes)) {
        error = "the file can't be found or read";
        return false;
    }
    const std::string_view text = TextOfBytes(bytes);
    const std::string ending = EndingOfPath(path);

    if (IsGlb(bytes)) {
        GltfParts parts;
        JsonTape json;
        // The first version has another layout, and only the other library reads it.
        if (bytes.size() > 4 && bytes[4] == 1) {
            return OpenWithAssimp(path, ".glb", model, error);
        }
        return SplitGlb(bytes, parts, error) && ParseJson(parts.Json, json, error) &&
               OpenGltf(path, parts, json, ".glb", model, error);
    }
    // Some text formats open with a comment that JSON knows too.
    if (LooksLikeJson(text) && (text.find('{') < text.find('/') || !IsAssimpEnding(ending))) {
        JsonTape json;
        if (!ParseJson(text, json, error)) {
            return false;
        }
        if (IsModelDocument(json)) {
            bytes = {}; // the tape has all of it
            return ReadModelDocument(json, DirectoryPart(path), model, error);
        }
        if (!GltfVersion(json).empty()) {
            return OpenGltf(path, {text, {}}, json, ".gltf", model, error);
        }
        error = "this is JSON, but no model document: the key orvaneModel is missing";
        return false;
    }
    const std::string_view told = EndingOfContent(bytes);
    if (told.empty() && !IsAssimpEnding(ending)) {
        error = "this is not a model document, nor a file of any other format known here";
        return false;
    }
    bytes = {}; // the library reads the file itself
    return OpenWithAssimp(path, told, model, error);
}
