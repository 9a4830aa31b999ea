// The numbers of one primitive: from its accessors, or from its compressed mesh if these have no data.
#pragma once

#include "provider/gltf/data/GltfElements.h"

struct PrimitiveSource {
    GltfDocument& Document;
    const GltfPrimitive& Primitive;
    std::string Place;                // for messages
    const DracoMesh* Draco = nullptr; // if the accessors have no data
};

std::string PlaceOfPrimitive(uint32_t mesh, size_t number);

// Sets error to the place of a member of the primitive, such as "indices", and a reason. Always returns
// false.
bool FailIn(const PrimitiveSource& source, const std::string& member, const std::string& reason,
            std::string& error);

// Such as "attributes.TEXCOORD_0".
std::string NameOf(const GltfAttribute& attribute);

// Decodes the compressed mesh of the primitive, if it needs it. All operations below return false, with
// place and reason in error, if something can't be read.
bool FindCompressedMesh(PrimitiveSource& source, std::string& error);

bool FindAttributeElements(const PrimitiveSource& source, const GltfAttribute& attribute,
                           GltfElements& elements, std::string& error);

// Reads the points of an attribute in a range of vertices. Without the attribute there are none.
bool ReadAttribute(const PrimitiveSource& source, GltfSemantic semantic, uint32_t set, IndexRange range,
                   std::vector<Point3>& points, std::string& error);

// Reads the triangles of a primitive and the range of vertices that they use. Indices count from the
// first of the range.
bool ReadTriangles(const PrimitiveSource& source, std::vector<uint32_t>& indices, IndexRange& range,
                   std::string& error);
