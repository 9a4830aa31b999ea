// Identifies the format of a model file. The content alone identifies JSON and binary glTF. Other
// formats without a signature are identified by the file name.
#include "provider/FileFormat.h"

#include "platform/Bytes.h"
#include "provider/assimp/AssimpModel.h"
#include "provider/document/ModelDocument.h"

#include <array>

namespace {

struct FormatMark {
    std::string_view Mark; // the file begins with it
    std::string_view Ending;
};

constexpr std::array<FormatMark, 13> Marks = {{{"Kaydara FBX Binary", ".fbx"},
                                               {"; FBX ", ".fbx"},
                                               {"ISO-10303-21;", ".ifc"},
                                               {"ply\n", ".ply"},
                                               {"ply\r", ".ply"},
                                               {"BLENDER", ".blend"},
                                               {"xof 03", ".x"},
                                               {"AC3D", ".ac"},
                                               {"#VRML V2.0", ".wrl"},
                                               {"*3DSMAX_ASCIIEXPORT", ".ase"},
                                               {"IDP2", ".md2"},
                                               {"MS3D000000", ".ms3d"},
                                               {"Caligari ", ".cob"}}};

constexpr std::string_view GlbMark = "glTF";
constexpr size_t GlbVersionAt = 4; // the version's first byte

// An XML document names its format within its first bytes.
constexpr size_t XmlStartSize = 4096; // bytes

constexpr size_t StlHeaderSize = 84; // bytes, with the number of triangles in the last four
constexpr uint64_t StlTriangleSize = 50;
constexpr size_t ChunkHeaderSize = 6; // bytes

// The text without the UTF-8 byte order mark.
std::string_view WithoutMark(std::string_view text) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(byteOrderMark)) {
        text.remove_prefix(byteOrderMark.size());
    }
    return text;
}

// Whether the first non-blank character can begin a JSON object or a comment before it.
bool LooksLikeJson(std::string_view text) {
    text = WithoutMark(text);
    const size_t start = text.find_first_not_of(" \t\r\n");
    return start != std::string_view::npos && (text[start] == '{' || text[start] == '/');
}

bool IsBinaryStl(std::span<const uint8_t> bytes) {
    return bytes.size() > StlHeaderSize &&
           bytes.size() == StlHeaderSize + StlTriangleSize * LittleEndian(bytes, StlHeaderSize - 4);
}

// The outermost chunk spans the whole file.
bool Is3ds(std::span<const uint8_t> bytes) {
    return bytes.size() > ChunkHeaderSize && bytes[0] == 'M' && bytes[1] == 'M' &&
           LittleEndian(bytes, 2) == bytes.size();
}

// The ending, with its dot, of the format that the content identifies for certain; otherwise empty.
// glTF and model documents are not covered.
std::string_view EndingOfContent(std::span<const uint8_t> bytes) {
    const std::string_view text = WithoutMark(TextOfBytes(bytes));
    for (const auto& [mark, ending] : Marks) {
        if (text.starts_with(mark)) {
            return ending;
        }
    }
    if (IsBinaryStl(bytes)) {
        return ".stl";
    }
    if (Is3ds(bytes)) {
        return ".3ds";
    }
    if (text.starts_with("solid") && text.substr(0, XmlStartSize).find("facet") != text.npos) {
        return ".stl";
    }
    if (text.starts_with("<?xml") || text.starts_with("<COLLADA")) {
        const std::string_view start = text.substr(0, XmlStartSize);
        if (start.find("<COLLADA") != start.npos) {
            return ".dae";
        }
        if (start.find("<X3D") != start.npos) {
            return ".x3d";
        }
        if (start.find("<amf") != start.npos) {
            return ".amf";
        }
    }
    return {};
}

// The glTF version that a JSON text states, such as "2.0"; empty if the text is not glTF.
std::string_view GltfVersion(const JsonTape& json) {
    const uint32_t asset = MemberOf(json, 0, "asset");
    const std::string_view version = asset != 0 ? TextMember(json, asset, "version") : "";
    // Version 1 allows omitting it.
    const bool isFirst =
        version.empty() && MemberOf(json, 0, "meshes") != 0 && MemberOf(json, 0, "accessors") != 0;
    return isFirst ? "1.0" : version;
}

// shown is the ending of the format that the content identifies, or empty.
bool UseAssimp(std::string_view shown, std::string_view ending, FoundFormat& found) {
    found.Format = FileFormat::Assimp;
    found.Ending = shown == ending ? "" : shown;
    return true;
}

bool UseGltf(std::string_view shown, std::string_view ending, FoundFormat& found) {
    if (!GltfVersion(found.Json).starts_with("2")) {
        return UseAssimp(shown, ending, found);
    }
    found.Format = FileFormat::Gltf;
    return true;
}

bool FindGlb(std::span<const uint8_t> bytes, std::string_view ending, FoundFormat& found,
             std::string& error) {
    constexpr std::string_view shown = ".glb";
    // Version 1 has another layout, and only assimp reads it.
    if (bytes.size() > GlbVersionAt && bytes[GlbVersionAt] == 1) {
        return UseAssimp(shown, ending, found);
    }
    return SplitGlb(bytes, found.Parts, error) && ParseJson(found.Parts.Json, found.Json, error) &&
           UseGltf(shown, ending, found);
}

bool FindJson(std::string_view text, std::string_view ending, FoundFormat& found, std::string& error) {
    if (!ParseJson(text, found.Json, error)) {
        return false;
    }
    if (MemberOf(found.Json, 0, ModelDocumentKey) != 0) {
        found.Format = FileFormat::ModelDocument;
        return true;
    }
    if (!GltfVersion(found.Json).empty()) {
        found.Parts.Json = text;
        return UseGltf(".gltf", ending, found);
    }
    error = "this is JSON but not a model document: the key orvaneModel is missing";
    return false;
}

} // namespace

bool FindFormat(std::span<const uint8_t> bytes, std::string_view ending, FoundFormat& found,
                std::string& error) {
    const std::string_view text = TextOfBytes(bytes);
    if (text.starts_with(GlbMark)) {
        return FindGlb(bytes, ending, found, error);
    }
    // Some text formats can begin with a comment, like JSON.
    if (LooksLikeJson(text) && (text.find('{') < text.find('/') || !IsAssimpEnding(ending))) {
        return FindJson(text, ending, found, error);
    }
    const std::string_view shown = EndingOfContent(bytes);
    if (shown.empty() && !IsAssimpEnding(ending)) {
        error = "this is not a model document or a file of another supported format";
        return false;
    }
    return UseAssimp(shown, ending, found);
}
