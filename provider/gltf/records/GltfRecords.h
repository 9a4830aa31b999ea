// The records of a glTF document: plain values that refer to each other by index. An index that the
// document omits is NoIndex. Nothing is checked against other records or against bytes.
#pragma once

#include "provider/model/Model.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// How EXT_meshopt_compression names the codings of its streams. Unknown: one that later versions add.
enum class MeshoptMode : uint8_t { Unknown, Attributes, Triangles, Indices };
enum class MeshoptFilter : uint8_t { Unknown, None, Octahedral, Quaternion, Exponential };

// A compressed stream of elements of a buffer view.
struct GltfMeshopt {
    uint32_t Buffer = NoIndex;
    uint64_t Offset = 0; // bytes
    uint64_t Length = 0; // bytes
    uint64_t Count = 0;
    uint64_t Stride = 0; // bytes of an element
    MeshoptMode Mode = MeshoptMode::Unknown;
    MeshoptFilter Filter = MeshoptFilter::None;
};

struct GltfBufferView {
    uint32_t Buffer = NoIndex;
    uint32_t Stride = 0;        // bytes; 0: elements follow each other
    uint64_t Offset = 0;        // bytes
    uint64_t Length = 0;        // bytes
    uint32_t Meshopt = NoIndex; // in GltfRecords::Meshopt
    uint32_t Extension = NoIndex;
};

// The types of components, by glTF's numbers. Others do not occur in valid files.
enum class GltfType : uint16_t {
    None = 0,
    Int8 = 5120,
    Uint8 = 5121,
    Int16 = 5122,
    Uint16 = 5123,
    Uint32 = 5125,
    Float = 5126,
};

// Replaces some elements of an accessor.
struct GltfSparse {
    uint64_t Count = 0;
    uint32_t PlaceView = NoIndex; // of the numbers of the elements, of PlaceType
    uint32_t ValueView = NoIndex;
    uint64_t PlaceOffset = 0; // bytes
    uint64_t ValueOffset = 0; // bytes
    GltfType PlaceType = GltfType::None;
};

struct GltfAccessor {
    uint32_t View = NoIndex;   // without one, all components are 0
    uint32_t Sparse = NoIndex; // in GltfRecords::Sparse
    uint64_t Offset = 0;       // bytes
    uint64_t Count = 0;
    uint32_t Extension = NoIndex;
    GltfType Type = GltfType::None; // None: a type that glTF does not have
    uint8_t Components = 0;         // 1 to 16
    bool Normalized = false;
};

enum class GltfSemantic : uint8_t { Other, Position, Normal, Coordinates, Joints, Weights };

struct GltfAttribute {
    GltfSemantic Semantic = GltfSemantic::Other;
    uint32_t Set = 0; // n of TEXCOORD_n, JOINTS_n and WEIGHTS_n
    uint32_t Accessor = NoIndex;
    uint32_t DracoId = NoIndex; // of the attribute in the primitive's compressed mesh
};

enum class GltfMode : uint8_t { Other, Triangles, Strip, Fan };

struct GltfPrimitive {
    std::vector<GltfAttribute> Attributes;
    std::vector<std::vector<GltfAttribute>> Targets; // of morphing: differences from the attributes
    uint32_t Indices = NoIndex;
    uint32_t Material = NoIndex;
    uint32_t DracoView = NoIndex; // the buffer view of the compressed mesh
    uint32_t Extension = NoIndex;
    GltfMode Mode = GltfMode::Other;
};

struct GltfMesh {
    std::u16string Name;
    std::vector<GltfPrimitive> Primitives;
    std::vector<double> Weights; // of the targets; a target without one is not used
};

struct GltfSkin {
    std::vector<uint32_t> Joints; // nodes
    uint32_t InverseBindMatrices = NoIndex;
};

struct GltfTexture {
    uint32_t Image = NoIndex;
    uint32_t Extension = NoIndex; // has the only image, of a kind that can't be read
};

struct GltfRecords {
    std::vector<GltfBufferView> BufferViews;
    std::vector<GltfMeshopt> Meshopt;
    std::vector<GltfSparse> Sparse;
    std::vector<GltfAccessor> Accessors;
    std::vector<GltfMesh> Meshes;
    std::vector<GltfSkin> Skins;
    std::vector<GltfTexture> Textures;

    // Names of extensions that are not supported. A record's Extension is one that may hold the data
    // that the record lacks.
    std::vector<std::string> Extensions;
};

// The attribute with this meaning; null if there is none.
inline const GltfAttribute* FindAttribute(const std::vector<GltfAttribute>& attributes,
                                          GltfSemantic semantic, uint32_t set = 0) {
    for (const GltfAttribute& attribute : attributes) {
        if (attribute.Semantic == semantic && attribute.Set == set) {
            return &attribute;
        }
    }
    return nullptr;
}

inline bool HasTriangles(const GltfPrimitive& primitive) {
    return primitive.Mode != GltfMode::Other &&
           FindAttribute(primitive.Attributes, GltfSemantic::Position) != nullptr;
}

// The place of a record, such as "meshes[3]".
inline std::string PlaceIn(std::string_view array, size_t index) {
    return std::string(array) + "[" + std::to_string(index) + "]";
}
