// A model in memory: plain records in flat arrays that refer to each other by index. Readers of files
// fill it; the 64 operations read it. It contains no files, handles or constants of the operations.
//
// Coordinates are model coordinates: Z up, right-handed, in model units.
#pragma once

#include "platform/LargeArray.h"
#include "provider/model/ModelPicture.h"
#include "provider/model/Transform.h"
#include "provider/model/Vector.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

// An index that refers to nothing.
constexpr uint32_t NoIndex = 0xFFFFFFFF;

// The largest depth of nested groups and instances, because callers walk a model by recursion.
constexpr uint32_t DeepestNesting = 512;

struct IndexRange {
    uint32_t First = 0;
    uint32_t Count = 0;
};

enum class MaterialType : uint8_t {
    Plain,     // the colour alone
    Textured,  // the picture as it is
    Colorized, // the picture tinted with the colour
};

struct ModelMaterial {
    std::u16string Name;
    std::array<uint8_t, 4> Color = {255, 255, 255, 255};
    bool UseOpacity = false;
    double Opacity = 1.0; // 0 is transparent, 1 opaque
    MaterialType Type = MaterialType::Plain;
    uint32_t Picture = NoIndex;
    std::u16string PictureName;
    double Width = 1.0; // size of one repeat of the picture, in model units, above 0
    double Height = 1.0;
};

struct ModelLayer {
    std::u16string Name;
    bool Visible = true;
};

// The properties that groups, instances and images share with faces.
struct ModelElement {
    uint32_t Layer = 0; // 0 is the unnamed visible layer
    uint32_t Material = NoIndex;
    bool Hidden = false;
};

// Texture coordinates of a point p: s = Dot(S, p) + S0, t = Dot(T, p) + T0.
struct ModelMapping {
    Point3 S;
    double S0 = 0.0;
    Point3 T;
    double T0 = 0.0;
};

// Texture coordinates of u and v as a file has them: s = U[0] u + U[1] v + U[2], and t is 1 less the
// same of V. A coordinate that is not finite counts as 0, 0.
struct ModelSurface {
    std::array<double, 3> U = {1.0, 0.0, 0.0};
    std::array<double, 3> V = {0.0, 1.0, 0.0};
};

// The u and v of a vertex.
struct SingleCoordinates {
    float U = 0.0F;
    float V = 0.0F;
};

// Texture coordinates come from Coordinates if set, otherwise from Mapping if set, otherwise from the
// default mapping. They are final if the material has a picture, otherwise in model units.
struct ModelSide {
    uint32_t Material = NoIndex;
    uint32_t Coordinates = NoIndex; // the first in Model::Coordinates, one per vertex of the face
    uint32_t Mapping = NoIndex;     // in Model::Mappings
    uint32_t Surface = NoIndex;     // in Model::Surfaces, for Coordinates of a single face
};

// A face and its triangulation. Triangles are counter-clockwise about Normal or have no area. The
// numbers of a single face are in the arrays of Model whose names begin with Single: those that a file
// has as floats, and that nothing but rounding changes later.
struct ModelFace {
    Point3 Normal;         // unit normal of the front
    double Distance = 0.0; // the plane is Dot(Normal, p) + Distance = 0
    ModelSide Front;
    ModelSide Back;
    IndexRange Vertices;        // in Model::Positions
    IndexRange Indices;         // in Model::Indices: three per triangle, counted from Vertices.First
    uint32_t Normals = NoIndex; // the first in Model::Normals; unset for a face with one normal
    uint32_t Layer = 0;
    bool Hidden = false;
    bool IsSingle = false;
};

struct ModelGroup {
    std::u16string Name;
    Transform Placement = IdentityTransform;
    ModelElement Element;
    uint32_t Entities = 0;
};

struct ModelInstance {
    Transform Placement = IdentityTransform;
    ModelElement Element;
    uint32_t Definition = 0;
};

// Placement maps the plane of one unit per pixel into the list that contains the image.
struct ModelImage {
    Transform Placement = IdentityTransform;
    ModelElement Element;
    uint32_t Picture = 0;
    std::u16string PictureName;
};

struct ModelDefinition {
    std::u16string Name;
    uint32_t Entities = 0;
};

// One list of elements: the contents of the model, a group or a definition.
struct ModelEntities {
    IndexRange Faces;
    IndexRange Groups;
    IndexRange Instances;
    IndexRange Images;
};

struct Model {
    std::vector<ModelPicture> Pictures;
    std::vector<ModelMaterial> Materials;
    std::vector<ModelLayer> Layers = {ModelLayer{}};
    std::vector<ModelDefinition> Definitions;
    std::vector<ModelEntities> Entities = {ModelEntities{}}; // the first is the model's own
    std::vector<ModelFace> Faces;
    std::vector<ModelGroup> Groups;
    std::vector<ModelInstance> Instances;
    std::vector<ModelImage> Images;

    // Shared by all faces, each of which owns a range.
    LargeArray<Point3> Positions;
    LargeArray<Point3> Normals;
    LargeArray<Point3> Coordinates; // s, t, q
    LargeArray<SinglePoint> SinglePositions;
    LargeArray<SinglePoint> SingleNormals;
    LargeArray<::SingleCoordinates> SingleCoordinates;
    LargeArray<uint32_t> Indices;
    std::vector<ModelMapping> Mappings;
    std::vector<ModelSurface> Surfaces;

    // Parts that were omitted from a file that is otherwise usable: lines of text in UTF-8.
    std::vector<std::string> Remarks;
};

// The position and the normal of a vertex of a face.
inline Point3 PositionOf(const Model& model, const ModelFace& face, size_t vertex) {
    const size_t index = face.Vertices.First + vertex;
    return face.IsSingle ? ToDouble(model.SinglePositions[index]) : model.Positions[index];
}

inline Point3 NormalOf(const Model& model, const ModelFace& face, size_t vertex) {
    if (face.Normals == NoIndex) {
        return face.Normal;
    }
    const size_t index = face.Normals + vertex;
    return face.IsSingle ? ToDouble(model.SingleNormals[index]) : model.Normals[index];
}
