// The 64 operations of the provider, seen from a caller: values, wrong handles, texts and pictures.
#include "provider/ProviderTesting.h"

#include "api/SketchUpAPI.h"
#include "provider/model/ModelPicture.h"

namespace {

constexpr std::string_view Document = R"({
  "orvaneModel": 1,
  "materials": [
    { "name": "tiles", "picture": "tiles.tga", "width": 2, "height": 0.5, "color": [10, 20, 30], "opacity": 0.25 },
    { "name": "red", "color": [255, 0, 0] }
  ],
  "layers": [ { "name": "off", "visible": false } ],
  "definitions": [ { "name": "d", "faces": [ { "outer": [[0,0,0],[1,0,0],[0,1,0]] } ] } ],
  "entities": {
    "faces": [
      { "outer": [[0,0,5],[4,0,5],[4,4,5],[0,4,5]], "front": "tiles", "layer": "off", "hidden": true },
      { "outer": [[0,0,0],[0,1,0],[1,0,0]], "back": "red" }
    ],
    "groups": [ { "name": "g", "material": "red", "layer": "off", "transform": { "move": [1, 2, 3] } } ],
    "instances": [ { "definition": "d" }, { "definition": "d" } ],
    "images": [ { "picture": "tiles.tga", "pictureName": "x/tiles.png" } ]
  }
})";

std::vector<uint8_t> TilesPixels() {
    std::vector<uint8_t> pixels(size_t{3} * 2 * 3);
    for (size_t i = 0; i < pixels.size(); ++i) {
        pixels[i] = static_cast<uint8_t>(i * 13);
    }
    return pixels;
}

// Opens a document; returns null if that fails.
ModelHandle OpenText(std::string_view text) {
    WriteTestFile(u"tiles.tga", TgaFile(3, 2, TilesPixels()));
    const std::string path = Utf8FromUtf16(WriteTestText(u"model.json", text));
    ModelHandle model = {0};
    SUInitialize();
    const int32_t result = SUModelCreateFromFile(&model, path.c_str());
    EXPECT_EQ(result == 0, model.Value != 0);
    return model;
}

EntitiesHandle EntitiesOf(ModelHandle model) {
    EntitiesHandle entities = {0};
    EXPECT_EQ(SUModelGetEntities(model, &entities), 0);
    return entities;
}

void Close(ModelHandle model) {
    EXPECT_EQ(SUModelRelease(&model), 0);
    EXPECT_EQ(model.Value, 0U);
    SUTerminate();
}

// Reads a text like any caller. Empty if the operation fails.
template <class Handle> std::u16string ReadName(Handle owner, int32_t (*get)(Handle, StringHandle*)) {
    StringHandle string = {0};
    char16_t text[TextLimit] = {};
    uint64_t length = 0;
    EXPECT_EQ(SUStringCreate(&string), 0);
    if (get(owner, &string) == 0) {
        EXPECT_EQ(SUStringGetUTF16(string, TextLimit, text, &length), 0);
    }
    EXPECT_EQ(SUStringRelease(&string), 0);
    return text;
}

// A handle of every kind, to pass to wrong operations.
std::vector<uint64_t> AllHandles(ModelHandle model) {
    const EntitiesHandle entities = EntitiesOf(model);
    uint64_t returned = 0;
    FaceHandle face = {0};
    GroupHandle group = {0};
    ComponentInstanceHandle instance = {0};
    ImageHandle image = {0};
    MaterialHandle material = {0};
    EXPECT_EQ(SUEntitiesGetFaces(entities, 1, &face, &returned), 0);
    EXPECT_EQ(SUEntitiesGetGroups(entities, 1, &group, &returned), 0);
    EXPECT_EQ(SUEntitiesGetInstances(entities, 1, &instance, &returned), 0);
    EXPECT_EQ(SUEntitiesGetImages(entities, 1, &image, &returned), 0);
    EXPECT_EQ(SUModelGetAllMaterials(model, 1, &material, &returned), 0);
    ComponentDefinitionHandle definition = {0};
    TextureHandle texture = {0};
    LayerHandle layer = {0};
    TextureWriterHandle writer = {0};
    UVHelperHandle uvHelper = {0};
    MeshHelperHandle meshHelper = {0};
    StringHandle string = {0};
    ImageRepHandle imageRep = {0};
    EXPECT_EQ(SUComponentInstanceGetDefinition(instance, &definition), 0);
    EXPECT_EQ(SUMaterialGetTexture(material, &texture), 0);
    EXPECT_EQ(SUDrawingElementGetLayer(SUFaceToDrawingElement(face), &layer), 0);
    EXPECT_EQ(SUTextureWriterCreate(&writer), 0);
    EXPECT_EQ(SUFaceGetUVHelper(face, true, true, writer, &uvHelper), 0);
    EXPECT_EQ(SUMeshHelperCreateWithUVHelper(&meshHelper, face, uvHelper), 0);
    EXPECT_EQ(SUStringCreate(&string), 0);
    EXPECT_EQ(SUImageRepCreate(&imageRep), 0);
    const DrawingElementHandle elements[] = {
        SUFaceToDrawingElement(face), SUGroupToDrawingElement(group), SUImageToDrawingElement(image),
        SUComponentInstanceToDrawingElement(instance)};
    return {model.Value,       entities.Value,    face.Value,        group.Value,
            instance.Value,    image.Value,       material.Value,    definition.Value,
            texture.Value,     layer.Value,       writer.Value,      uvHelper.Value,
            meshHelper.Value,  string.Value,      imageRep.Value,    SUImageToEntity(image).Value,
            elements[0].Value, elements[1].Value, elements[2].Value, elements[3].Value};
}

// The number of operations that accept a handle.
int CountAccepting(uint64_t value, const std::string& picturePath) {
    uint64_t count = 0;
    uint64_t second = 0;
    double numbers[16] = {};
    double more[16] = {};
    uint8_t bytes[4] = {};
    int32_t whole = 0;
    uint64_t handle = 0;
    double points[8][3] = {};
    uint64_t indices[8] = {};
    char16_t text[8] = {};
    StringHandle string = {0};
    SUStringCreate(&string);
    const auto out = [&handle]<class Handle>(Handle) {
        static Handle result;
        result.Value = handle;
        return &result;
    };
    const FaceHandle face = {value};
    const GroupHandle group = {value};
    const ComponentInstanceHandle instance = {value};
    const ImageHandle image = {value};
    const MaterialHandle material = {value};
    const TextureHandle texture = {value};
    const MeshHelperHandle mesh = {value};
    const EntitiesHandle entities = {value};
    const DrawingElementHandle element = {value};
    ImageRepHandle rep = {0};
    SUImageRepCreate(&rep);
    const int32_t results[] = {
        SUModelGetEntities({value}, out(EntitiesHandle{})),
        SUModelGetNumAllMaterials({value}, &count),
        SUModelGetAllMaterials({value}, 1, out(MaterialHandle{}), &count),
        SUEntitiesGetNumFaces(entities, &count),
        SUEntitiesGetFaces(entities, 1, out(FaceHandle{}), &count),
        SUEntitiesGetNumGroups(entities, &count),
        SUEntitiesGetGroups(entities, 1, out(GroupHandle{}), &count),
        SUEntitiesGetNumInstances(entities, &count),
        SUEntitiesGetInstances(entities, 1, out(ComponentInstanceHandle{}), &count),
        SUEntitiesGetNumImages(entities, &count),
        SUEntitiesGetImages(entities, 1, out(ImageHandle{}), &count),
        SUFaceGetFrontMaterial(face, out(MaterialHandle{})),
        SUFaceGetBackMaterial(face, out(MaterialHandle{})),
        SUFaceGetPlane(face, numbers),
        SUFaceGetUVHelper(face, true, true, {0}, out(UVHelperHandle{})),
        SUMeshHelperCreateWithUVHelper(out(MeshHelperHandle{}), face, {value}),
        SUMeshHelperGetNumTriangles(mesh, &count),
        SUMeshHelperGetNumVertices(mesh, &count),
        SUMeshHelperGetVertices(mesh, 8, points, &count),
        SUMeshHelperGetNormals(mesh, 8, points, &count),
        SUMeshHelperGetFrontSTQCoords(mesh, 8, points, &count),
        SUMeshHelperGetBackSTQCoords(mesh, 8, points, &count),
        SUMeshHelperGetVertexIndices(mesh, 8, indices, &count),
        SUMaterialGetName(material, &string),
        SUMaterialGetColor(material, bytes),
        SUMaterialGetUseOpacity(material, bytes),
        SUMaterialGetOpacity(material, numbers),
        SUMaterialGetType(material, &whole),
        SUMaterialGetTexture(material, out(TextureHandle{})),
        SUTextureGetFileName(texture, &string),
        SUTextureGetDimensions(texture, &count, &second, numbers, more),
        SUTextureWriteToFile(texture, picturePath.c_str()),
        SUImageGetFileName(image, &string),
        SUImageGetTransform(image, numbers),
        SUImageGetImageRep(image, &rep),
        SUGroupGetName(group, &string),
        SUGroupGetTransform(group, numbers),
        SUGroupGetEntities(group, out(EntitiesHandle{})),
        SUComponentInstanceGetDefinition(instance, out(ComponentDefinitionHandle{})),
        SUComponentInstanceGetTransform(instance, numbers),
        SUComponentDefinitionGetEntities({value}, out(EntitiesHandle{})),
        SUDrawingElementGetHidden(element, bytes),
        SUDrawingElementGetLayer(element, out(LayerHandle{})),
        SUDrawingElementGetMaterial(element, out(MaterialHandle{})),
        SULayerGetVisibility({value}, bytes),
        SUStringGetUTF16({value}, 8, text, &count),
        SUTextureWriterLoadEntity({value}, {value}, &whole),
        SUTextureWriterWriteTexture({value}, 1, picturePath.c_str(), false),
    };
    const uint64_t returned[] = {SUFaceToDrawingElement(face).Value,
                                 SUGroupToDrawingElement(group).Value,
                                 SUComponentInstanceToDrawingElement(instance).Value,
                                 SUImageToDrawingElement(image).Value, SUImageToEntity(image).Value};
    SUStringRelease(&string);
    SUImageRepRelease(&rep);
    return static_cast<int>(std::ranges::count(results, 0) +
                            std::ranges::count_if(returned, [](uint64_t own) { return own != 0; }));
}

// The smallest JPEG of 8 by 8 grey pixels: all coefficients are 0.
std::vector<uint8_t> JpegFile() {
    std::vector<uint8_t> bytes = {0xFF, 0xD8, 0xFF, 0xDB, 0, 67, 0};
    bytes.insert(bytes.end(), 64, 1);
    const auto addCode = [&](uint8_t table) {
        bytes.insert(bytes.end(), {0xFF, 0xC4, 0, 20, table, 1});
        bytes.insert(bytes.end(), 16, 0);
    };
    bytes.insert(bytes.end(), {0xFF, 0xC0, 0, 11, 8, 0, 8, 0, 8, 1, 1, 0x11, 0});
    addCode(0x00);
    addCode(0x10);
    bytes.insert(bytes.end(), {0xFF, 0xDA, 0, 8, 1, 1, 0, 0, 63, 0, 0x3F, 0xFF, 0xD9});
    return bytes;
}

// The pixels of TilesPixels as a BMP file: rows from the bottom, padded to four bytes.
std::vector<uint8_t> BmpFile() {
    std::vector<uint8_t> bytes(54, 0);
    bytes[0] = 'B';
    bytes[1] = 'M';
    bytes[2] = 54 + 24;
    bytes[10] = 54;
    bytes[14] = 40;
    bytes[18] = 3;
    bytes[22] = 2;
    bytes[26] = 1;
    bytes[28] = 24;
    const std::vector<uint8_t> pixels = TilesPixels();
    for (const std::ptrdiff_t row : {9, 0}) {
        bytes.insert(bytes.end(), pixels.begin() + row, pixels.begin() + row + 9);
        bytes.insert(bytes.end(), 3, 0);
    }
    return bytes;
}

std::vector<uint8_t> PngOf(const std::vector<uint8_t>& file) {
    ModelPicture picture;
    std::vector<uint8_t> png;
    EXPECT_EQ(LoadPicture(file, picture), nullptr);
    EXPECT_TRUE(EncodePng(picture, png));
    return png;
}

} // namespace

TEST(ProviderBoundary, ReturnsTheContentOfTheDocument) {
    const ModelHandle model = OpenText(Document);
    ASSERT_NE(model.Value, 0U);
    const EntitiesHandle entities = EntitiesOf(model);
    uint64_t count = 0;
    uint64_t returned = 0;

    MaterialHandle materials[3] = {};
    EXPECT_EQ(SUModelGetNumAllMaterials(model, &count), 0);
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(SUModelGetAllMaterials(model, 3, materials, &returned), 0);
    EXPECT_EQ(returned, 2U);
    EXPECT_EQ(materials[2].Value, 0U);
    EXPECT_EQ(ReadName(materials[0], SUMaterialGetName), u"tiles");
    uint8_t color[4] = {};
    EXPECT_EQ(SUMaterialGetColor(materials[0], color), 0);
    EXPECT_EQ(color[0] << 16 | color[1] << 8 | color[2], 0x0A141E);
    double opacity = 0;
    uint8_t flag = 0;
    EXPECT_EQ(SUMaterialGetUseOpacity(materials[0], &flag), 0);
    EXPECT_EQ(SUMaterialGetOpacity(materials[0], &opacity), 0);
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(opacity, 0.25);
    TextureHandle texture = {0};
    EXPECT_NE(SUMaterialGetTexture(materials[1], &texture), 0);
    ASSERT_EQ(SUMaterialGetTexture(materials[0], &texture), 0);
    EXPECT_EQ(ReadName(texture, SUTextureGetFileName), u"tiles.tga");
    uint64_t width = 0;
    uint64_t height = 0;
    double scale[2] = {};
    EXPECT_EQ(SUTextureGetDimensions(texture, &width, &height, &scale[0], &scale[1]), 0);
    EXPECT_EQ(width, 3U);
    EXPECT_EQ(height, 2U);
    EXPECT_EQ(scale[0], 0.5);
    EXPECT_EQ(scale[1], 2.0);

    FaceHandle faces[2] = {};
    EXPECT_EQ(SUEntitiesGetFaces(entities, 2, faces, &returned), 0);
    MaterialHandle own = {7};
    EXPECT_EQ(SUFaceGetFrontMaterial(faces[0], &own), 0);
    EXPECT_EQ(own.Value, materials[0].Value);
    EXPECT_EQ(SUDrawingElementGetMaterial(SUFaceToDrawingElement(faces[0]), &own), 0);
    EXPECT_EQ(own.Value, materials[0].Value);
    EXPECT_EQ(SUFaceGetFrontMaterial(faces[1], &own), 0);
    EXPECT_EQ(own.Value, 0U);
    EXPECT_EQ(SUFaceGetBackMaterial(faces[1], &own), 0);
    EXPECT_EQ(own.Value, materials[1].Value);
    double plane[4] = {};
    EXPECT_EQ(SUFaceGetPlane(faces[0], plane), 0);
    EXPECT_EQ(plane[2], 1.0);
    EXPECT_EQ(plane[3], -5.0);
    EXPECT_EQ(SUFaceGetPlane(faces[1], plane), 0);
    EXPECT_EQ(plane[2], -1.0);

    UVHelperHandle uvHelpers[2] = {};
    MeshHelperHandle mesh = {0};
    EXPECT_EQ(SUFaceGetUVHelper(faces[0], true, true, {0}, &uvHelpers[0]), 0);
    EXPECT_EQ(SUFaceGetUVHelper(faces[1], true, true, {0}, &uvHelpers[1]), 0);
    EXPECT_NE(SUMeshHelperCreateWithUVHelper(&mesh, faces[0], uvHelpers[1]), 0);
    ASSERT_EQ(SUMeshHelperCreateWithUVHelper(&mesh, faces[0], uvHelpers[0]), 0);
    double points[5][3] = {{9, 9, 9}, {9, 9, 9}, {9, 9, 9}, {9, 9, 9}, {9, 9, 9}};
    uint64_t indices[6] = {};
    EXPECT_EQ(SUMeshHelperGetNumVertices(mesh, &count), 0);
    EXPECT_EQ(count, 4U);
    EXPECT_EQ(SUMeshHelperGetNumTriangles(mesh, &count), 0);
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(SUMeshHelperGetVertexIndices(mesh, 6, indices, &returned), 0);
    EXPECT_EQ(returned, 6U);
    EXPECT_EQ(SUMeshHelperGetFrontSTQCoords(mesh, 5, points, &returned), 0);
    EXPECT_EQ(returned, 4U);
    EXPECT_EQ(points[2][0], 2.0);
    EXPECT_EQ(points[2][1], 8.0);
    EXPECT_EQ(points[4][0], 9.0);
    EXPECT_EQ(SUMeshHelperGetNormals(mesh, 1, points, &returned), 0);
    EXPECT_EQ(returned, 1U);
    EXPECT_EQ(points[0][2], 1.0);
    EXPECT_EQ(points[1][2], 1.0); // the old q: only one vertex is requested
    EXPECT_EQ(points[1][0], 2.0);

    GroupHandle group = {0};
    double transform[16] = {};
    EXPECT_EQ(SUEntitiesGetGroups(entities, 1, &group, &returned), 0);
    EXPECT_EQ(ReadName(group, SUGroupGetName), u"g");
    EXPECT_EQ(SUGroupGetTransform(group, transform), 0);
    EXPECT_EQ(transform[13], 2.0);
    LayerHandle layer = {0};
    EXPECT_EQ(SUDrawingElementGetLayer(SUGroupToDrawingElement(group), &layer), 0);
    EXPECT_EQ(SULayerGetVisibility(layer, &flag), 0);
    EXPECT_EQ(flag, 0);
    EXPECT_EQ(SUDrawingElementGetHidden(SUFaceToDrawingElement(faces[0]), &flag), 0);
    EXPECT_EQ(flag, 1);

    ComponentInstanceHandle instances[2] = {};
    ComponentDefinitionHandle definitions[2] = {};
    EXPECT_EQ(SUEntitiesGetInstances(entities, 2, instances, &returned), 0);
    EXPECT_EQ(SUComponentInstanceGetDefinition(instances[0], &definitions[0]), 0);
    EXPECT_EQ(SUComponentInstanceGetDefinition(instances[1], &definitions[1]), 0);
    EXPECT_EQ(definitions[0].Value, definitions[1].Value);
    EntitiesHandle inside = {0};
    EXPECT_EQ(SUComponentDefinitionGetEntities(definitions[0], &inside), 0);
    EXPECT_EQ(SUEntitiesGetNumFaces(inside, &count), 0);
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(SUDrawingElementGetLayer(SUComponentInstanceToDrawingElement(instances[0]), &layer), 0);
    EXPECT_EQ(SULayerGetVisibility(layer, &flag), 0);
    EXPECT_EQ(flag, 1);

    ImageHandle image = {0};
    ImageRepHandle rep = {0};
    EXPECT_EQ(SUEntitiesGetImages(entities, 1, &image, &returned), 0);
    EXPECT_EQ(ReadName(image, SUImageGetFileName), u"x/tiles.png");
    EXPECT_EQ(SUImageRepCreate(&rep), 0);
    EXPECT_NE(SUImageRepGetPixelDimensions(rep, &width, &height), 0);
    EXPECT_EQ(SUImageGetImageRep(image, &rep), 0);
    EXPECT_EQ(SUImageRepGetPixelDimensions(rep, &width, &height), 0);
    EXPECT_EQ(width * 10 + height, 32U);
    EXPECT_EQ(SUImageRepRelease(&rep), 0);
    Close(model);
}

TEST(ProviderBoundary, RejectsWrongHandles) {
    const ModelHandle model = OpenText(Document);
    ASSERT_NE(model.Value, 0U);
    const std::string picture = Utf8FromUtf16(ProviderTestDirectory() + u"out.png");
    const std::vector<uint64_t> handles = AllHandles(model);
    // In the order of AllHandles: the number of operations that accept the handle.
    const std::vector<int> accepting = {3, 8, 5, 4, 3, 5, 6, 1, 3, 1, 0, 0, 7, 1, 0, 0, 3, 3, 3, 3};
    ASSERT_EQ(handles.size(), accepting.size());
    for (size_t i = 0; i < handles.size(); ++i) {
        const bool isWriter = i == 10;
        EXPECT_EQ(CountAccepting(handles[i], picture), accepting[i] + (isWriter ? 1 : 0)) << i;
        // The handle with an index out of range, of another model, or with unused bits.
        for (const uint64_t change : {uint64_t{0x00001000}, uint64_t{1} << 33, uint64_t{8} << 52}) {
            EXPECT_EQ(CountAccepting(handles[i] ^ change, picture), 0) << i << " " << change;
        }
    }
    for (const uint64_t garbage : {uint64_t{0}, uint64_t{1}, ~uint64_t{0}, uint64_t{0xDEADBEEFCAFE}}) {
        EXPECT_EQ(CountAccepting(garbage, picture), 0);
    }
    EXPECT_NE(SUTextureWriterWriteTexture({handles[10]}, 0, picture.c_str(), false), 0);
    EXPECT_NE(SUTextureWriterWriteTexture({handles[10]}, 2, picture.c_str(), false), 0);
    Close(model);
    for (const uint64_t stale : handles) {
        EXPECT_EQ(CountAccepting(stale, picture), 0);
    }
}

TEST(ProviderBoundary, RejectsNullOutputs) {
    const ModelHandle model = OpenText(Document);
    ASSERT_NE(model.Value, 0U);
    const std::vector<uint64_t> handles = AllHandles(model);
    const EntitiesHandle entities = {handles[1]};
    const FaceHandle face = {handles[2]};
    const MeshHelperHandle mesh = {handles[12]};
    uint64_t count = 0;
    FaceHandle list[2] = {};
    EXPECT_NE(SUModelCreateFromFile(nullptr, "x"), 0);
    EXPECT_NE(SUModelGetEntities(model, nullptr), 0);
    EXPECT_NE(SUEntitiesGetNumFaces(entities, nullptr), 0);
    EXPECT_NE(SUEntitiesGetFaces(entities, 2, nullptr, &count), 0);
    EXPECT_NE(SUEntitiesGetFaces(entities, 2, list, nullptr), 0);
    EXPECT_NE(SUFaceGetPlane(face, nullptr), 0);
    EXPECT_NE(SUFaceGetFrontMaterial(face, nullptr), 0);
    EXPECT_NE(SUMeshHelperGetVertices(mesh, 1, nullptr, &count), 0);
    EXPECT_NE(SUMeshHelperGetVertexIndices(mesh, 1, nullptr, &count), 0);
    EXPECT_NE(SUMaterialGetName({handles[6]}, nullptr), 0);
    EXPECT_NE(SUTextureWriteToFile({handles[8]}, nullptr), 0);
    EXPECT_NE(SUTextureGetDimensions({handles[8]}, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_NE(SUModelRelease(nullptr), 0);
    EXPECT_NE(SUStringCreate(nullptr), 0);
    EXPECT_NE(SUStringRelease(nullptr), 0);
    EXPECT_NE(SUImageRepRelease(nullptr), 0);
    EXPECT_NE(SUUVHelperRelease(nullptr), 0);
    Close(model);
}

TEST(ProviderBoundary, CutsTextsAtTheLimit) {
    const ModelHandle model =
        OpenText(R"({"orvaneModel": 1, "materials": [{"name": "ab\ud83d\ude00c"}]})");
    ASSERT_NE(model.Value, 0U);
    MaterialHandle material = {0};
    uint64_t returned = 0;
    EXPECT_EQ(SUModelGetAllMaterials(model, 1, &material, &returned), 0);
    StringHandle string = {0};
    EXPECT_EQ(SUStringCreate(&string), 0);
    EXPECT_EQ(SUMaterialGetName(material, &string), 0);
    const std::u16string_view whole = u"ab\U0001F600c";
    for (const auto& [limit, units] : std::vector<std::pair<uint64_t, size_t>>{
             {1, 0}, {2, 1}, {3, 2}, {4, 2}, {5, 4}, {6, 5}, {260, 5}}) {
        std::vector<char16_t> text(limit, u'x'); // exact size, so that a sanitizer finds overruns
        uint64_t length = 99;
        EXPECT_EQ(SUStringGetUTF16(string, limit, text.data(), &length), 0);
        EXPECT_EQ(length, units);
        EXPECT_EQ(std::u16string_view(text.data()), whole.substr(0, units));
    }
    char16_t none = u'x';
    uint64_t length = 0;
    EXPECT_NE(SUStringGetUTF16(string, 0, &none, &length), 0);
    // A released slot is used again; the old handle stays invalid.
    const StringHandle old = string;
    EXPECT_EQ(SUStringRelease(&string), 0);
    EXPECT_EQ(SUStringCreate(&string), 0);
    EXPECT_NE(string.Value, old.Value);
    EXPECT_NE(SUMaterialGetName(material, const_cast<StringHandle*>(&old)), 0);
    Close(model);
}

TEST(ProviderBoundary, OpensReleasesAndOpensAgain) {
    const ModelHandle first = OpenText(Document);
    ASSERT_NE(first.Value, 0U);
    testing::internal::CaptureStderr();
    EXPECT_EQ(OpenText(Document).Value, 0U); // one at a time
    EXPECT_NE(testing::internal::GetCapturedStderr().find("another model is still open"),
              std::string::npos);
    ModelHandle released = first;
    EXPECT_EQ(SUModelRelease(&released), 0);
    EXPECT_NE(SUModelRelease(&released), 0);

    testing::internal::CaptureStderr();
    EXPECT_EQ(OpenText("{\"orvaneModel\": 1,\n \"layers\": 3}").Value, 0U);
    const std::string path = Utf8FromUtf16(ProviderTestDirectory()) + "model.json";
    EXPECT_EQ(testing::internal::GetCapturedStderr(), path + ": layers: this must be an array\n");

    const ModelHandle second = OpenText(Document);
    ASSERT_NE(second.Value, 0U);
    EXPECT_NE(second.Value, first.Value);
    EntitiesHandle entities = {0};
    EXPECT_NE(SUModelGetEntities(first, &entities), 0);
    EXPECT_EQ(SUModelGetEntities(second, &entities), 0);
    Close(second);
}

TEST(ProviderBoundary, WritesPicturesOfAllKindsAsPng) {
    const std::vector<uint8_t> png = PngOf(TgaFile(3, 2, TilesPixels()));
    EXPECT_EQ(PngOf(BmpFile()), png);
    EXPECT_EQ(PngOf(png), png);
    // A PNG file with bytes after its end or a wrong checksum is decoded and encoded again.
    std::vector<uint8_t> unsound = png;
    unsound.push_back(0);
    EXPECT_EQ(PngOf(unsound), png);
    unsound = png;
    unsound[29] ^= 1;
    EXPECT_EQ(PngOf(unsound), png);

    ModelPicture picture;
    EXPECT_EQ(LoadPicture(PngOf(JpegFile()), picture), nullptr);
    EXPECT_TRUE(picture.SoundPng);
    EXPECT_EQ(picture.Width * 10 + picture.Height, 88U);
    // A table with more codes than the decoder's array.
    std::vector<uint8_t> crowded = JpegFile();
    const size_t tables = 2 + 69 + 13;
    const std::vector<uint8_t> codes(256, 1);
    crowded[tables + 2] = 1; // 256 bytes longer, 257 codes
    crowded[tables + 6] = 255;
    crowded[tables + 7] = 1;
    crowded.insert(crowded.begin() + static_cast<std::ptrdiff_t>(tables) + 22, codes.begin(),
                   codes.end());
    EXPECT_NE(LoadPicture(crowded, picture), nullptr);

    const ModelHandle model = OpenText(Document);
    ASSERT_NE(model.Value, 0U);
    const std::vector<uint64_t> handles = AllHandles(model);
    std::string path = Utf8FromUtf16(ProviderTestDirectory()) + "ä texture.png";
    std::ranges::replace(path, '/', '\\');
    EXPECT_EQ(SUTextureWriteToFile({handles[8]}, path.c_str()), 0);
    std::vector<uint8_t> written;
    EXPECT_TRUE(ReadWholeFile(Utf16FromUtf8(path), written));
    EXPECT_EQ(written, png);
    int32_t id = 0;
    EXPECT_EQ(SUTextureWriterLoadEntity({handles[10]}, {handles[15]}, &id), 0);
    path += "2";
    EXPECT_EQ(SUTextureWriterWriteTexture({handles[10]}, id, path.c_str(), false), 0);
    EXPECT_TRUE(ReadWholeFile(Utf16FromUtf8(path), written));
    EXPECT_EQ(written, png);
    EXPECT_NE(SUTextureWriteToFile({handles[8]}, (path + "\\nowhere\\a.png").c_str()), 0);
    Close(model);
}
