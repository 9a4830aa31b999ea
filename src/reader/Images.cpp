// Reads images as quads.
#include "reader/Images.h"

#include "reader/LibraryReading.h"
#include "reader/Textures.h"
#include "run/Paths.h"

#include <array>

namespace {

// Returns the first row, of a material or an image, that has the key as its source texture name, or a
// new row.
int32_t ImageMaterialIndex(ModelImporter& importer, ImageHandle image, const std::u16string& key) {
    const int32_t row = FindSource(importer.MaterialTable, key);
    if (row != NoRow) {
        return row;
    }
    TexturePaths paths = NextTexturePaths(importer);
    MaterialEntry entry;
    entry.OutputFileName = FileNameOf(paths.OutputPath);
    entry.OutputPath = std::move(paths.OutputPath);
    entry.RelativePath = std::move(paths.RelativePath);
    entry.SourceTextureName = key;
    entry.Image = image;
    return AppendRow(importer.MaterialTable, std::move(entry));
}

// Size of a picture. [Units: pixels]
struct PixelSize {
    uint64_t Width = 0;
    uint64_t Height = 0;
};

// Returns 0 by 0 if a query fails.
PixelSize ReadPixelSize(ImageHandle image) {
    PixelSize size;
    ImageRepHandle imageRep = {};
    if (SUImageRepCreate(&imageRep) != 0) {
        return {};
    }
    const bool read = SUImageGetImageRep(image, &imageRep) == 0 &&
                      SUImageRepGetPixelDimensions(imageRep, &size.Width, &size.Height) == 0;
    SUImageRepRelease(&imageRep);
    return read ? size : PixelSize();
}

using QuadCorners = std::array<Vertex, 4>;

// Returns the corners of the front quad: the plane Y = 0, one unit per pixel, height along Z,
// transformed.
QuadCorners FrontCorners(const PixelSize& size, const Matrix4& matrix) {
    const auto width = static_cast<float>(size.Width);
    const auto height = static_cast<float>(size.Height);
    Vec3 normal = {0, 1, 0};
    TransformNormal(matrix, normal);
    QuadCorners corners = {{{.Position = {0, 0, 0}, .Normal = normal, .U = 0, .V = 1},
                            {.Position = {0, 0, height}, .Normal = normal, .U = 0, .V = 0},
                            {.Position = {width, 0, height}, .Normal = normal, .U = 1, .V = 0},
                            {.Position = {width, 0, 0}, .Normal = normal, .U = 1, .V = 1}}};
    for (Vertex& corner : corners) {
        TransformPoint(matrix, corner.Position);
    }
    return corners;
}

QuadCorners BackCorners(const QuadCorners& front) {
    QuadCorners corners = {front[3], front[2], front[1], front[0]};
    for (Vertex& corner : corners) {
        corner.Normal = {-corner.Normal.X, -corner.Normal.Y, -corner.Normal.Z};
    }
    return corners;
}

} // namespace

void ImportImages(ModelImporter& importer, EntitiesHandle entities, PolygonList& polygons) {
    if (importer.ImportStatus != StatusOk) {
        return;
    }
    for (const ImageHandle image :
         ReadList(entities, SUEntitiesGetNumImages, SUEntitiesGetImages, ReturnedCount::MustMatch)) {
        if (IsNull(image) || IsExcludedByLayer(SUImageToDrawingElement(image))) {
            continue;
        }
        const std::u16string key = FileNameOf(ReadText(image, SUImageGetFileName));
        const int32_t row = ImageMaterialIndex(importer, image, key);
        WriteMaterialTexture(importer, importer.MaterialTable.Rows[static_cast<size_t>(row)]);
        double transform[TransformValues] = {};
        if (SUImageGetTransform(image, transform) != 0) {
            return;
        }
        const PixelSize size = ReadPixelSize(image);
        if (size.Width == 0 || size.Height == 0) {
            continue;
        }
        const QuadCorners front = FrontCorners(size, ConvertTransform(transform));
        AppendPolygon(PoolOf(polygons, row), front);
        AppendPolygon(PoolOf(polygons, row), BackCorners(front));
    }
}
