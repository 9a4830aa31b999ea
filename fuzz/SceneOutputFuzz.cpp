// Feeds a scene file and a picture file to the drawing, the glTF export and the page of scene-inspect.
// An input is the size of the scene file in 4 bytes, that file, and the picture file, which all textures
// use.
#include "FuzzInput.h"
#include "inspect/drawing/ScenePicture.h"
#include "inspect/gltf/GltfExport.h"
#include "inspect/page/PageExport.h"
#include "inspect/page/PageTemplate.h"
#include "inspect/stored/SceneReader.h"
#include "picture/PictureReader.h"
#include "picture/PngWriter.h"

namespace {

constexpr uint32_t Width = 64;
constexpr uint32_t Height = 40;

// All texture paths become this name, so that no file is opened.
const std::u16string TextureName = u"t";

void GiveTexture(std::span<const uint8_t> file, StoredScene& scene, TextureShelf& shelf) {
    Texture texture;
    std::optional<Texture>& place = shelf.Pictures[TextureName];
    if (LoadTexture({file.begin(), file.end()}, texture).empty()) {
        place = std::move(texture);
    }
    for (StoredNode& node : scene.Nodes) {
        for (StoredMesh& mesh : node.Meshes) {
            if (!mesh.Material.TexturePath.empty()) {
                mesh.Material.TexturePath = TextureName;
            }
        }
    }
}

// No text of the scene is HTML in its page: all marks are those of the elements that contain the data.
void CheckPage(const StoredScene& scene, TextureShelf& shelf) {
    const PageFile page = ExportPage(scene, shelf, u"</script>");
    const auto marks = [](std::string_view html) {
        return std::count(html.begin(), html.end(), '<');
    };
    const auto added = marks(page.Bytes) - marks(PageTemplate) + 1;
    Expect(PageTemplate.empty() || added == 4 || added == 6);
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput input = {{data, size}};
    const size_t claimed = input.Take<uint32_t>();
    const size_t sceneSize = std::min(claimed, input.Bytes.size());
    StoredScene scene;
    if (ReadStoredScene(input.Bytes.first(sceneSize), scene)) {
        return 0;
    }
    TextureShelf shelf;
    GiveTexture(input.Bytes.subspan(sceneSize), scene, shelf);

    const ScenePicture drawn = DrawScene(scene, shelf, Width, Height);
    Expect(drawn.Width == Width && drawn.Height == Height);
    std::string reason;
    const std::vector<uint8_t> png = EncodePng(drawn.Pixels, Width, Height, PictureChannels, reason);
    DecodedPicture again;
    Expect(IsSoundPng(png) && !DecodePicture(png, 0, again) && again.Channels == PictureChannels);
    Expect(std::equal(drawn.Pixels.begin(), drawn.Pixels.end(), again.Pixels.get()));

    const GltfFile exported = ExportGltf(scene, shelf);
    const std::string_view glb = exported.Bytes;
    constexpr size_t lengthAt = 8;
    uint32_t length = 0;
    Expect(glb.starts_with("glTF") && glb.size() >= lengthAt + sizeof length);
    std::memcpy(&length, glb.data() + lengthAt, sizeof length);
    Expect(length == glb.size() && shelf.Warnings.empty());
    CheckPage(scene, shelf);
    return 0;
}
