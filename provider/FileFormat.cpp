// What a model file is, told by its first bytes. Formats without a mark of their own are left to the
// name.
#include "provider/FileFormat.h"

#include "platform/Bytes.h"

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

// A document in XML names its format soon.
constexpr size_t XmlStartSize = 4096; // bytes

constexpr size_t StlHeaderSize = 84; // bytes, with the number of triangles in the last four
constexpr uint64_t StlTriangleSize = 50;
constexpr size_t ChunkHeaderSize = 6; // bytes

bool IsBinaryStl(std::span<const uint8_t> bytes) {
    return bytes.size() > StlHeaderSize &&
           bytes.size() == StlHeaderSize + StlTriangleSize * LittleEndian(bytes, StlHeaderSize - 4);
}

// The one outermost chunk holds all of the file.
bool Is3ds(std::span<const uint8_t> bytes) {
    return bytes.size() > ChunkHeaderSize && bytes[0] == 'M' && bytes[1] == 'M' &&
           LittleEndian(bytes, 2) == bytes.size();
}

} // namespace

std::string_view EndingOfContent(std::span<const uint8_t> bytes) {
    std::string_view text = TextOfBytes(bytes);
    if (text.starts_with("\xEF\xBB\xBF")) {
        text.remove_prefix(3);
    }
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
