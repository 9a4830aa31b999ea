// Replaces assimp in builds without it.
#include "provider/assimp/AssimpModel.h"

#include <algorithm>
#include <array>

// The most common of the formats that the library reads.
constexpr std::array<std::string_view, 24> Endings = {
    ".3ds", ".3mf", ".ac",   ".amf", ".ase", ".blend", ".cob", ".dae", ".dxf", ".fbx", ".ifc", ".lwo",
    ".lws", ".md2", ".ms3d", ".obj", ".off", ".ply",   ".smd", ".stl", ".wrl", ".x",   ".x3d", ".zae"};

bool IsAssimpEnding(std::string_view ending) {
    return std::ranges::find(Endings, ending) != Endings.end();
}

bool ReadAssimpModel(const std::u16string&, std::string_view, Model&, std::string& error) {
    error = "this format is read through the assimp library, which this build leaves out";
    return false;
}
