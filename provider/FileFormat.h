// Which format a model file has, and so which reader it goes to. The one place that decides.
#pragma once

#include "provider/gltf/GltfDocument.h"
#include "provider/reading/JsonTape.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

enum class FileFormat : uint8_t {
    ModelDocument,
    Gltf,   // version 2, as text or as a binary file
    Assimp, // all others, version 1 of glTF among them
};

struct FoundFormat {
    FileFormat Format = FileFormat::Assimp;
    JsonTape Json;           // for ModelDocument and Gltf
    GltfParts Parts;         // for Gltf: views of the file's bytes
    std::string_view Ending; // for Assimp: that of the format that the content shows, with its dot;
                             // empty where the file's own serves
};

// Decides by the content of a file where it has a mark, else by the ending of its name, which comes in
// lower case, with its dot, or empty. JSON and binary glTF are never decided by name. Fills an empty
// found; gives false, and the reason in error, when the file has no format known here or is broken.
bool FindFormat(std::span<const uint8_t> bytes, std::string_view ending, FoundFormat& found,
                std::string& error);
