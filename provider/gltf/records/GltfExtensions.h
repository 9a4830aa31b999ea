// The extensions of glTF that this reader supports, by name.
#pragma once

#include "provider/reading/JsonTape.h"

#include <array>
#include <string>
#include <string_view>

constexpr std::string_view DracoExtension = "KHR_draco_mesh_compression";
constexpr std::string_view MeshoptExtension = "EXT_meshopt_compression";
constexpr std::string_view InstancingExtension = "EXT_mesh_gpu_instancing";
constexpr std::string_view VisibilityExtension = "KHR_node_visibility";
constexpr std::string_view WebpExtension = "EXT_texture_webp";

// Extensions of textures whose pictures can't be read. The texture may have a plain one too.
constexpr std::array<std::string_view, 3> PictureExtensions = {"KHR_texture_basisu", "MSFT_texture_dds",
                                                               "EXT_texture_avif"};

// Whether a file may require the extension.
bool IsKnownExtension(std::string_view name);

// Returns false, with the name in error, if the document requires an extension that is not supported.
bool CheckRequiredExtensions(const JsonTape& json, std::string& error);

// The first extension of an object that is not supported; empty if there is none. Valid as long as the
// tape.
std::string_view UnknownExtensionOf(const JsonTape& json, uint32_t object);
