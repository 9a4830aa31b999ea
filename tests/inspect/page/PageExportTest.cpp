// The limits of a page. tests/inspect/page/try-page.mjs looks at pages in browsers.
#include "inspect/page/PageExport.h"

#include "inspect/InspectTesting.h"
#include "inspect/page/PageTemplate.h"

namespace {

// A mesh whose triangles have no area.
StoredMesh MeshOf(size_t triangles, const std::u16string& texture = u"") {
    return {{u"plain", texture, {1, 1, 1, 1}}, {StoredVertex{}}, std::vector<uint32_t>(triangles * 3)};
}

TEST(InspectPage, RefusesWhatIsTooLarge) {
    TextureShelf textures;
    if (PageTemplate.empty()) {
        EXPECT_NE(ExportPage(SceneWith({}), textures, u"").Reason.find(u"lacks --html"),
                  std::u16string::npos);
        return;
    }
    const PageFile most = ExportPage(SceneWith({MeshOf(MostPageTriangles)}), textures, u"most");
    EXPECT_EQ(most.Reason, u"");
    EXPECT_GT(most.Bytes.size(), MostPageTriangles * 12 / 3 * 4);
    const PageFile more = ExportPage(SceneWith({MeshOf(MostPageTriangles + 1)}), textures, u"more");
    EXPECT_EQ(more.Bytes, "");
    EXPECT_EQ(more.Reason,
              u"the scene has 2000001 triangles, more than 2000000, which a page can't show; "
              u"--glb writes the scene for other viewers");

    // Base64 makes 200,000,004 bytes of these.
    textures.Pictures[u"large.png"] =
        Texture{std::vector<uint8_t>(150'000'001), "image/png", 1, 1, {}, true};
    const StoredScene painted = SceneWith({MeshOf(1, u"large.png")});
    EXPECT_EQ(ExportPage(painted, textures, u"").Reason,
              u"the page would exceed 200000000 bytes, which a page can't show; --glb writes the scene "
              u"for other viewers");
}

} // namespace
