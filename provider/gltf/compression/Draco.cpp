// Decodes meshes by the draco library. Its decoders allocate memory for whatever counts the data state,
// so the counts are checked between their steps.
#include "provider/gltf/compression/Draco.h"

#include <draco/compression/entropy/symbol_decoding.h>
#include <draco/compression/mesh/mesh_edgebreaker_decoder.h>
#include <draco/compression/mesh/mesh_sequential_decoder.h>
#include <draco/core/varint_decoding.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

// The memory of a decoder, in parts of that for a triangle: each set of attributes with seams of its own
// takes one part, the rest four.
constexpr uint64_t PartsOfTriangle = 4;
// Bytes of attributes per allowed triangle. Meshes have half as many points as triangles, or more points
// and then far fewer triangles than allowed.
constexpr uint64_t AttributeBytes = 32;

namespace {

// The whole numbers of these versions have four bytes; later ones have as many as they need.
constexpr uint16_t LastFixedEdgebreaker = DRACO_BITSTREAM_VERSION(1, 255);
constexpr uint16_t LastFixedSequential = DRACO_BITSTREAM_VERSION(2, 1);
// Up to this version, the counts of an edgebreaker mesh begin with one more.
constexpr uint16_t LastWithNewVertices = DRACO_BITSTREAM_VERSION(2, 1);
// Up to this version, the older way of predicting texture coordinates has a count of four bytes.
constexpr uint16_t LastFixedOrientations = DRACO_BITSTREAM_VERSION(2, 1);

bool TakeNumber(draco::DecoderBuffer& ahead, bool isFixed, uint32_t& number) {
    return isFixed ? ahead.Decode(&number) : draco::DecodeVarint(&number, &ahead);
}

// Whether the counts at the beginning of the triangles are allowed. They are read ahead of the decoder.
bool AllowsCounts(const draco::MeshEdgebreakerDecoder&, draco::DecoderBuffer ahead, uint16_t version,
                  uint64_t mostTriangles) {
    const bool isFixed = version <= LastFixedEdgebreaker;
    uint32_t ignored = 0;
    uint32_t triangles = 0;
    uint8_t seams = 0; // sets of attributes with seams of their own
    return (version > LastWithNewVertices || TakeNumber(ahead, isFixed, ignored)) &&
           TakeNumber(ahead, isFixed, ignored) && TakeNumber(ahead, isFixed, triangles) &&
           ahead.Decode(&seams) &&
           uint64_t{triangles} * (PartsOfTriangle + seams) <= mostTriangles * PartsOfTriangle;
}

bool AllowsCounts(const draco::MeshSequentialDecoder&, draco::DecoderBuffer ahead, uint16_t version,
                  uint64_t mostTriangles) {
    uint32_t triangles = 0;
    return TakeNumber(ahead, version <= LastFixedSequential, triangles) && triangles <= mostTriangles;
}

// Whether the number of bits that help to predict texture coordinates is allowed: a bit per value. The
// library takes memory and time for any number. It follows the values, so these are decoded twice.
bool AllowsOrientations(draco::DecoderBuffer ahead, bool isFixed, size_t values) {
    constexpr uint32_t components = 2;
    std::vector<uint32_t> numbers(values * components);
    uint8_t isCompressed = 0;
    uint8_t size = 0; // bytes of a number
    if (!ahead.Decode(&isCompressed)) {
        return false;
    }
    if (isCompressed != 0) {
        if (!draco::DecodeSymbols(static_cast<uint32_t>(numbers.size()), components, &ahead,
                                  numbers.data())) {
            return false;
        }
    } else if (!ahead.Decode(&size) ||
               numbers.size() * size > static_cast<uint64_t>(ahead.remaining_size())) {
        return false;
    } else {
        ahead.Advance(static_cast<int64_t>(numbers.size() * size));
    }
    uint32_t orientations = 0;
    return TakeNumber(ahead, isFixed, orientations) && orientations <= values;
}

// Inheritance is the library's way of taking part in the course of a decoder.
template <class Decoder> class BoundedDecoder : public Decoder {
public:
    uint64_t MostTriangles = 0;

protected:
    bool DecodeConnectivity() override {
        Ahead = this->buffer();
        return AllowsCounts(*this, *Ahead, this->bitstream_version(), MostTriangles) &&
               Decoder::DecodeConnectivity();
    }

    // All attributes are known by now, but have no memory.
    bool DecodeAllAttributes() override {
        uint64_t size = 0; // bytes of a point
        const draco::PointCloud& points = *this->point_cloud();
        for (int32_t i = 0; i < points.num_attributes(); ++i) {
            const draco::PointAttribute& attribute = *points.attribute(i);
            // The library keeps an index per point, and numbers of four bytes before their final type.
            size += sizeof(uint32_t) +
                    uint64_t{attribute.num_components()} *
                        std::max<uint64_t>(sizeof(uint32_t), static_cast<uint64_t>(draco::DataTypeLength(
                                                                 attribute.data_type())));
        }
        return size * points.num_points() <= MostTriangles * AttributeBytes &&
               Decoder::DecodeAllAttributes() && !IsTooMuch;
    }

    // The library asks for this when it has read how an attribute is predicted, before its values.
    const draco::MeshAttributeIndicesEncodingData* GetAttributeEncodingData(int id) const override {
        const draco::MeshAttributeIndicesEncodingData* values = Decoder::GetAttributeEncodingData(id);
        const char method = Ahead->data_head()[-2]; // before the byte of the transformation
        const bool isOlder = method == draco::MESH_PREDICTION_TEX_COORDS_DEPRECATED;
        if (values == nullptr || !(isOlder || method == draco::MESH_PREDICTION_TEX_COORDS_PORTABLE)) {
            return values;
        }
        const bool isFixed = !isOlder || this->bitstream_version() <= LastFixedOrientations;
        if (this->point_cloud()->attribute(id)->num_components() != 2 ||
            !AllowsOrientations(*Ahead, isFixed,
                                values->encoded_attribute_value_index_to_corner_map.size())) {
            IsTooMuch = true;
            return nullptr; // which leads to another prediction
        }
        return values;
    }

private:
    const draco::DecoderBuffer* Ahead = nullptr;
    mutable bool IsTooMuch = false;
};

GltfType TypeOf(draco::DataType type) {
    switch (type) {
    case draco::DT_INT8:
        return GltfType::Int8;
    case draco::DT_UINT8:
        return GltfType::Uint8;
    case draco::DT_INT16:
        return GltfType::Int16;
    case draco::DT_UINT16:
        return GltfType::Uint16;
    case draco::DT_UINT32:
        return GltfType::Uint32;
    case draco::DT_FLOAT32:
        return GltfType::Float;
    default:
        return GltfType::None;
    }
}

bool TakeTriangles(const draco::Mesh& decoded, DracoMesh& mesh) {
    mesh.Points = decoded.num_points();
    mesh.Indices.reserve(size_t{decoded.num_faces()} * 3);
    for (draco::FaceIndex i(0); i < decoded.num_faces(); ++i) {
        for (const draco::PointIndex& point : decoded.face(i)) {
            mesh.Indices.push_back(point.value());
        }
    }
    return std::ranges::all_of(mesh.Indices, [&](uint32_t index) { return index < mesh.Points; });
}

bool TakeAttribute(const draco::PointAttribute& source, DracoMesh& mesh) {
    DracoAttribute& attribute = mesh.Attributes.emplace_back();
    attribute.Id = source.unique_id();
    attribute.Type = TypeOf(source.data_type());
    attribute.Components = source.num_components();
    const size_t size = static_cast<size_t>(source.byte_stride());
    attribute.Bytes.resize(mesh.Points * size);
    for (uint32_t point = 0; point < mesh.Points; ++point) {
        const draco::AttributeValueIndex value = source.mapped_index(draco::PointIndex(point));
        if (value.value() >= source.size()) {
            return false;
        }
        std::memcpy(attribute.Bytes.data() + point * size, source.GetAddress(value), size);
    }
    return true;
}

template <class Decoder>
bool Decode(std::span<const uint8_t> bytes, uint64_t mostTriangles, DracoMesh& mesh) {
    draco::DecoderBuffer buffer;
    buffer.Init(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    BoundedDecoder<Decoder> decoder;
    decoder.MostTriangles = mostTriangles;
    const draco::DecoderOptions options;
    draco::Mesh decoded;
    if (!decoder.Decode(options, &buffer, &decoded).ok() || !TakeTriangles(decoded, mesh)) {
        return false;
    }
    for (int32_t i = 0; i < decoded.num_attributes(); ++i) {
        const draco::PointAttribute& attribute = *decoded.attribute(i);
        if (TypeOf(attribute.data_type()) != GltfType::None && !TakeAttribute(attribute, mesh)) {
            return false;
        }
    }
    return true;
}

} // namespace

bool DecodeDraco(std::span<const uint8_t> bytes, uint64_t mostTriangles, DracoMesh& mesh,
                 std::string& reason) {
    reason = "is broken or has too many triangles for its size";
    try {
        draco::DecoderBuffer buffer;
        draco::DracoHeader header = {};
        buffer.Init(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        if (!draco::PointCloudDecoder::DecodeHeader(&buffer, &header).ok() ||
            header.encoder_type != draco::TRIANGULAR_MESH) {
            reason = "is not a Draco mesh";
            return false;
        }
        if (header.encoder_method == draco::MESH_EDGEBREAKER_ENCODING) {
            return Decode<draco::MeshEdgebreakerDecoder>(bytes, mostTriangles, mesh);
        }
        return header.encoder_method == draco::MESH_SEQUENTIAL_ENCODING &&
               Decode<draco::MeshSequentialDecoder>(bytes, mostTriangles, mesh);
    } catch (const std::length_error&) {
        return false; // of a container, for a count that is negative or too large
    }
}
