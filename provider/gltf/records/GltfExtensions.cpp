// The list of supported extensions.
#include "provider/gltf/records/GltfExtensions.h"

#include "provider/gltf/records/GltfFields.h"

#include <algorithm>
#include <array>

// Names that end in an underscore are prefixes. Some of these extensions have no effect here.
constexpr std::array<std::string_view, 11> KnownExtensions = {
    DracoExtension,        MeshoptExtension,        InstancingExtension,     VisibilityExtension,
    WebpExtension,         "KHR_texture_transform", "KHR_mesh_quantization", "KHR_materials_",
    "KHR_technique_webgl", "KHR_techniques_webgl",  "KHR_lights_punctual"};

bool IsKnownExtension(std::string_view name) {
    const auto isMeant = [&](std::string_view known) {
        return name == known || (known.ends_with('_') && name.starts_with(known));
    };
    return std::ranges::any_of(KnownExtensions, isMeant) ||
           std::ranges::any_of(PictureExtensions, isMeant);
}

bool CheckRequiredExtensions(const JsonTape& json, std::string& error) {
    for (const uint32_t element : ElementsOf(json, RootArray(json, "extensionsRequired"))) {
        const std::string_view name =
            KindOf(json, element) == JsonKind::Text ? TextOf(json, element) : "";
        if (!IsKnownExtension(name)) {
            error = "the file requires the glTF extension \"" + std::string(name) +
                    "\", which is not supported";
            return false;
        }
    }
    return true;
}

std::string_view UnknownExtensionOf(const JsonTape& json, uint32_t object) {
    const uint32_t extensions = ObjectMember(json, object, "extensions");
    for (uint32_t i = extensions + 1; extensions != 0 && i < json.Values[extensions].Next;
         i = json.Values[i].Next) {
        if (!IsKnownExtension(KeyOf(json, i))) {
            return KeyOf(json, i);
        }
    }
    return {};
}
