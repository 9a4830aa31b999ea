// The check of opened models, and the folder with a picture.
#include "CheckModel.h"

#include "FuzzInput.h"
#include "provider/operations/ProviderState.h"

#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace {

// Larger pictures are not encoded: they take too much time. [Units: pixels]
constexpr uint64_t LargestWrittenPicture = 1 << 16;

void ExpectRange(IndexRange range, size_t size) {
    Expect(range.First <= size && range.Count <= size - range.First);
}

void ExpectIndex(uint32_t index, size_t size) {
    Expect(index < size);
}

void ExpectIndexOrNone(uint32_t index, size_t size) {
    Expect(index == NoIndex || index < size);
}

void CheckElement(const Model& model, const ModelElement& element) {
    ExpectIndex(element.Layer, model.Layers.size());
    ExpectIndexOrNone(element.Material, model.Materials.size());
}

void CheckSide(const Model& model, const ModelFace& face, const ModelSide& side) {
    ExpectIndexOrNone(side.Material, model.Materials.size());
    ExpectIndexOrNone(side.Mapping, model.Mappings.size());
    if (side.Coordinates != NoIndex) {
        Expect(face.IsSingle == (side.Surface != NoIndex));
        ExpectIndexOrNone(side.Surface, model.Surfaces.size());
        ExpectRange({side.Coordinates, face.Vertices.Count},
                    face.IsSingle ? model.SingleCoordinates.Count : model.Coordinates.Count);
    }
}

void CheckFace(const Model& model, const ModelFace& face) {
    CheckSide(model, face, face.Front);
    CheckSide(model, face, face.Back);
    ExpectIndex(face.Layer, model.Layers.size());
    ExpectRange(face.Vertices, face.IsSingle ? model.SinglePositions.Count : model.Positions.Count);
    ExpectRange(face.Indices, model.Indices.Count);
    Expect(face.Indices.Count % 3 == 0);
    for (uint32_t i = 0; i < face.Indices.Count; ++i) {
        ExpectIndex(model.Indices[face.Indices.First + i], face.Vertices.Count);
    }
    if (face.Normals != NoIndex) {
        ExpectRange({face.Normals, face.Vertices.Count},
                    face.IsSingle ? model.SingleNormals.Count : model.Normals.Count);
    }
}

// The depth of nested lists, including this one. 0 in depths: not known yet.
uint32_t DepthOf(const Model& model, uint32_t list, std::vector<uint32_t>& depths, uint32_t above) {
    Expect(above <= DeepestNesting);
    if (depths[list] == 0) {
        uint32_t below = 0;
        const ModelEntities& entities = model.Entities[list];
        for (uint32_t i = 0; i < entities.Groups.Count; ++i) {
            const ModelGroup& group = model.Groups[entities.Groups.First + i];
            below = std::max(below, DepthOf(model, group.Entities, depths, above + 1));
        }
        for (uint32_t i = 0; i < entities.Instances.Count; ++i) {
            const ModelInstance& instance = model.Instances[entities.Instances.First + i];
            const uint32_t content = model.Definitions[instance.Definition].Entities;
            below = std::max(below, DepthOf(model, content, depths, above + 1));
        }
        depths[list] = below + 1;
    }
    Expect(above + depths[list] <= DeepestNesting + 1);
    return depths[list];
}

void CheckReferences(const Model& model) {
    for (const ModelMaterial& material : model.Materials) {
        ExpectIndexOrNone(material.Picture, model.Pictures.size());
    }
    for (const ModelEntities& entities : model.Entities) {
        ExpectRange(entities.Faces, model.Faces.size());
        ExpectRange(entities.Groups, model.Groups.size());
        ExpectRange(entities.Instances, model.Instances.size());
        ExpectRange(entities.Images, model.Images.size());
    }
    for (const ModelFace& face : model.Faces) {
        CheckFace(model, face);
    }
    for (const ModelGroup& group : model.Groups) {
        CheckElement(model, group.Element);
        ExpectIndex(group.Entities, model.Entities.size());
    }
    for (const ModelInstance& instance : model.Instances) {
        CheckElement(model, instance.Element);
        ExpectIndex(instance.Definition, model.Definitions.size());
    }
    for (const ModelImage& image : model.Images) {
        CheckElement(model, image.Element);
        ExpectIndex(image.Picture, model.Pictures.size());
    }
    for (const ModelDefinition& definition : model.Definitions) {
        ExpectIndex(definition.Entities, model.Entities.size());
    }
    std::vector<uint32_t> depths(model.Entities.size());
    DepthOf(model, 0, depths, 0);
}

void ReadFace(uint32_t index) {
    const MeshHelperHandle helper = {ModelHandleValue(HandleKind::MeshHelper, index)};
    uint64_t count = 0;
    Expect(SUMeshHelperGetNumVertices(helper, &count) == Success);
    std::vector<double> triples(3 * count);
    auto* array = reinterpret_cast<double(*)[3]>(triples.data());
    for (const auto read : {SUMeshHelperGetVertices, SUMeshHelperGetNormals,
                            SUMeshHelperGetFrontSTQCoords, SUMeshHelperGetBackSTQCoords}) {
        uint64_t returned = 0;
        Expect(read(helper, count, array, &returned) == Success && returned == count);
    }
}

} // namespace

void CheckModel(Model model) {
    CheckReferences(model);
    State().Open = std::make_unique<Model>(std::move(model));
    const Model& open = *State().Open;
    for (uint32_t i = 0; i < open.Faces.size(); ++i) {
        ReadFace(i);
    }
    for (const ModelPicture& picture : open.Pictures) {
        std::vector<uint8_t> png;
        std::string reason;
        Expect(uint64_t{picture.Width} * picture.Height > LargestWrittenPicture ||
               EncodePng(picture, png, reason));
    }
    State().Open = nullptr;
}

const std::u16string& PictureFolder() {
    static const std::u16string Folder = [] {
        const std::filesystem::path path =
            std::filesystem::temp_directory_path() / ("orvane-fuzz-" + std::to_string(getpid()));
        std::filesystem::create_directories(path);
        const uint8_t texels[16] = {255, 0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255, 9, 9, 9, 0};
        ModelPicture picture;
        std::vector<uint8_t> png;
        std::string reason;
        Expect(MakePicture(2, 2, texels, picture, reason) && EncodePng(picture, png, reason));
        std::ofstream file(path / "p.png", std::ios::binary);
        file.write(reinterpret_cast<const char*>(png.data()), static_cast<std::streamsize>(png.size()));
        return path.u16string() + u"/";
    }();
    static const struct FolderRemoval {
        ~FolderRemoval() {
            std::error_code ignored;
            std::filesystem::remove_all(Folder, ignored);
        }
    } Removal;
    return Folder;
}
