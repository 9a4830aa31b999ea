// Opens a model file of any format known here.
#include "provider/OpenModel.h"

#include "provider/Files.h"
#include "provider/ModelDocument.h"

#include <string_view>

namespace {

// The directory of a path with its closing separator; empty for a bare name.
std::u16string DirectoryOfFile(const std::u16string& path) {
    const size_t separator = path.find_last_of(u"/\\:");
    return separator == std::u16string::npos ? std::u16string() : path.substr(0, separator + 1);
}

// Whether the first thing after marks, blanks and comments can begin a JSON object.
bool LooksLikeJson(std::string_view text) {
    constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(ByteOrderMark)) {
        text.remove_prefix(ByteOrderMark.size());
    }
    const size_t start = text.find_first_not_of(" \t\r\n");
    return start != std::string_view::npos && (text[start] == '{' || text[start] == '/');
}

} // namespace

bool OpenModel(const std::u16string& path, Model& model, std::string& error) {
    std::vector<uint8_t> bytes;
    if (!ReadWholeFile(path, bytes)) {
        error = "the file can't be found or read";
        return false;
    }
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());

    // Formats are told apart here, binary ones by their first bytes, those in JSON by their keys.
    if (LooksLikeJson(text)) {
        JsonTape json;
        if (!ParseJson(text, json, error)) {
            return false;
        }
        bytes = {}; // the tape has all of it
        if (IsModelDocument(json)) {
            return ReadModelDocument(json, DirectoryOfFile(path), model, error);
        }
        error = "this is JSON, but no model document: the key orvaneModel is missing";
        return false;
    }
    error = "this is not a model document";
    return false;
}
