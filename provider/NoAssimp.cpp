// Replaces assimp in builds without it.
#include "provider/assimp/AssimpModel.h"

#include <algorithm>
#include <array>

// The most common formats of assimp.
constexpr std::array<std::string_view, 24> Endings = {
    ".3ds", ".3mf", ".ac",   ".amf", ".ase", ".blend", ".cob", ".dae", ".dxf", ".fbx", ".ifc", ".lwo",
    ".lws", ".md2", ".ms3d", ".obj", ".off", ".ply",   ".smd", ".stl", ".wrl", ".x",   ".x3d", ".zae"};

bool IsAssimpEnding(std::string_view ending) {
    return std::ranges::find(Endings, ending) != Endings.end();
}

bool ReadAssimpModel(const std::u16string&, std::string_view, Model&, std::string& error) {
    error = "this format requires the assimp library, which this build does not include";
    return false;
}
