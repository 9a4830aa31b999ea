// The format of a model file, which selects its reader. The only place that decides it.
#pragma once

#include "provider/gltf/data/GltfParts.h"
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
    std::string_view Ending; // for Assimp: that of the format that the content identifies, with its
                             // dot; empty if the file's own applies
};

// Decides by the content of a file if it has a signature, otherwise by ending: the ending of its name
// in lower case, with its dot, or empty. JSON and binary glTF are never identified by name. Fills an
// empty found. Returns false, with the reason in error, if the format is not supported or the file is
// broken.
bool FindFormat(std::span<const uint8_t> bytes, std::string_view ending, FoundFormat& found,
                std::string& error);
