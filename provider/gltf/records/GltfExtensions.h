// The extensions of glTF that this reader supports, by name.
#pragma once

#include "provider/reading/JsonTape.h"

#include <string>
#include <string_view>

constexpr std::string_view DracoExtension = "KHR_draco_mesh_compression";
constexpr std::string_view MeshoptExtension = "EXT_meshopt_compression";

// Whether a file may require the extension.
bool IsKnownExtension(std::string_view name);

// Returns false, with the name in error, if the document requires an extension that is not supported.
bool CheckRequiredExtensions(const JsonTape& json, std::string& error);

// The first extension of an object that is not supported; empty if there is none. Valid as long as the
// tape.
std::string_view UnknownExtensionOf(const JsonTape& json, uint32_t object);
