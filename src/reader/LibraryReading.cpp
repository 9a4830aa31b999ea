// Transformations, layers and paths at the boundary of the library.
#include "reader/LibraryReading.h"

#include "platform/Platform.h"
#include "run/Paths.h"

Matrix4 ConvertTransform(const double transform[TransformValues]) {
    // The source of each element: rows 1 and 2 exchanged, and columns 1 and 2 of the first three.
    constexpr int source[TransformValues] = {0, 2, 1, 3, 8, 10, 9, 7, 4, 6, 5, 11, 12, 14, 13, 15};
    Matrix4 matrix;
    for (int i = 0; i < TransformValues; ++i) {
        matrix.M[i] = static_cast<float>(transform[source[i]]);
    }
    return matrix;
}

bool IsExcludedByLayer(DrawingElementHandle element) {
    if (IsNull(element)) {
        return false;
    }
    uint8_t hidden = 0;
    if (SUDrawingElementGetHidden(element, &hidden) != 0 || hidden != 0) {
        return false;
    }
    LayerHandle layer = {};
    if (SUDrawingElementGetLayer(element, &layer) != 0) {
        return false;
    }
    uint8_t visible = 1;
    return SULayerGetVisibility(layer, &visible) == 0 && visible == 0;
}

std::optional<std::string> LibraryPath(const std::u16string& path) {
    std::string bytes = Utf8FromUtf16(path);
    if (bytes.size() >= PathLimit) {
        return std::nullopt;
    }
    return bytes;
}
