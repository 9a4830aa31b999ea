// Finds the data of primitives, and separates their triangles.
#include "provider/gltf/meshes/PrimitiveData.h"

#include "provider/gltf/records/GltfExtensions.h"

#include <algorithm>
#include <numeric>

namespace {

// Whether an accessor has no data of its own.
bool LacksData(const GltfRecords& records, uint32_t accessor) {
    return accessor < records.Accessors.size() && records.Accessors[accessor].View == NoIndex &&
           records.Accessors[accessor].Sparse == NoIndex;
}

// An explanation for an accessor without data, if an extension that is not supported can have it.
std::string MissingData(const PrimitiveSource& source, uint32_t accessor) {
    const GltfRecords& records = source.Document.Records;
    uint32_t extension = source.Primitive.Extension;
    if (accessor < records.Accessors.size()) {
        const GltfAccessor& record = records.Accessors[accessor];
        const bool hasView = record.View < records.BufferViews.size();
        if (hasView || record.Sparse != NoIndex) {
            extension = hasView ? records.BufferViews[record.View].Extension : NoIndex;
        } else if (record.Extension != NoIndex) {
            extension = record.Extension;
        }
    }
    return extension == NoIndex ? std::string()
                                : "the data is only in the glTF extension \"" +
                                      records.Extensions[extension] + "\", which is not supported";
}

bool FindAccessorElements(const PrimitiveSource& source, const std::string& member, uint32_t accessor,
                          GltfElements& elements, std::string& error) {
    std::string reason;
    const bool isFound = FindElements(source.Document, accessor, elements, reason);
    if (isFound && HasData(elements)) {
        return true;
    }
    const std::string missing = MissingData(source, accessor);
    if (isFound && missing.empty()) {
        return true; // all are zero
    }
    return FailIn(source, member, missing.empty() ? reason : missing, error);
}

// Converts strips and fans to separate triangles, in indices.
void SeparateTriangles(GltfMode mode, std::vector<uint32_t>& indices) {
    if (mode == GltfMode::Triangles || indices.size() < 3) {
        indices.resize(indices.size() / 3 * 3);
        return;
    }
    std::vector<uint32_t> separate;
    separate.reserve((indices.size() - 2) * 3);
    for (size_t i = 2; i < indices.size(); ++i) {
        const bool isFan = mode == GltfMode::Fan;
        // Every second triangle of a strip turns the other way.
        const size_t odd = isFan ? 0 : i % 2;
        separate.push_back(isFan ? indices[0] : indices[i - 2 + odd]);
        separate.push_back(indices[i - 1 - odd]);
        separate.push_back(indices[i]);
    }
    indices.swap(separate);
}

// Reads the indices in the primitive's own order.
bool ReadOwnIndices(const PrimitiveSource& source, size_t vertices, std::vector<uint32_t>& indices,
                    std::string& error) {
    const uint32_t accessor = source.Primitive.Indices;
    if (accessor == NoIndex) {
        indices.resize(vertices);
        std::iota(indices.begin(), indices.end(), 0U);
        return true;
    }
    GltfElements elements;
    if (!FindAccessorElements(source, "indices", accessor, elements, error)) {
        return false;
    }
    const char* reason = HasData(elements) ? ReadIndices(elements, indices) : "the data is missing";
    return reason == nullptr || FailIn(source, "indices", reason, error);
}

} // namespace

std::string PlaceOfPrimitive(uint32_t mesh, size_t number) {
    return PlaceIn("meshes", mesh) + "." + PlaceIn("primitives", number);
}

bool FailIn(const PrimitiveSource& source, const std::string& member, const std::string& reason,
            std::string& error) {
    error = source.Place + "." + member + ": " + reason;
    return false;
}

std::string NameOf(const GltfAttribute& attribute) {
    switch (attribute.Semantic) {
    case GltfSemantic::Position:
        return "attributes.POSITION";
    case GltfSemantic::Normal:
        return "attributes.NORMAL";
    case GltfSemantic::Joints:
        return "attributes.JOINTS_" + std::to_string(attribute.Set);
    case GltfSemantic::Weights:
        return "attributes.WEIGHTS_" + std::to_string(attribute.Set);
    default:
        return "attributes.TEXCOORD_" + std::to_string(attribute.Set);
    }
}

bool FindCompressedMesh(PrimitiveSource& source, std::string& error) {
    const GltfPrimitive& primitive = source.Primitive;
    const GltfRecords& records = source.Document.Records;
    if (primitive.DracoView == NoIndex ||
        !(LacksData(records, FindAttribute(primitive.Attributes, GltfSemantic::Position)->Accessor) ||
          LacksData(records, primitive.Indices))) {
        return true;
    }
    std::string reason;
    source.Draco = FindDracoMesh(source.Document, primitive.DracoView, reason);
    return source.Draco != nullptr ||
           FailIn(source, "extensions." + std::string(DracoExtension), reason, error);
}

bool FindAttributeElements(const PrimitiveSource& source, const GltfAttribute& attribute,
                           GltfElements& elements, std::string& error) {
    if (source.Draco == nullptr || attribute.DracoId == NoIndex) {
        return FindAccessorElements(source, NameOf(attribute), attribute.Accessor, elements, error);
    }
    const auto& attributes = source.Draco->Attributes;
    const auto found = std::ranges::find(attributes, attribute.DracoId, &DracoAttribute::Id);
    if (found == attributes.end()) {
        return FailIn(source, NameOf(attribute), "the compressed mesh does not have this attribute",
                      error);
    }
    const std::vector<GltfAccessor>& accessors = source.Document.Records.Accessors;
    elements = {};
    elements.Base.Bytes = found->Bytes.data();
    elements.Base.Count = source.Draco->Points;
    elements.Base.Stride = found->Bytes.size() / std::max<size_t>(elements.Base.Count, 1);
    elements.Base.Components = found->Components;
    elements.Base.Type = found->Type;
    elements.Base.Normalized =
        attribute.Accessor < accessors.size() && accessors[attribute.Accessor].Normalized;
    return true;
}

bool ReadAttribute(const PrimitiveSource& source, GltfSemantic semantic, uint32_t set, IndexRange range,
                   std::vector<Point3>& points, std::string& error) {
    const GltfAttribute* attribute = FindAttribute(source.Primitive.Attributes, semantic, set);
    if (attribute == nullptr) {
        return true;
    }
    GltfElements elements;
    if (!FindAttributeElements(source, *attribute, elements, error)) {
        return false;
    }
    const char* reason = ReadPoints(elements, range, points);
    return reason == nullptr || FailIn(source, NameOf(*attribute), reason, error);
}

bool ReadTriangles(const PrimitiveSource& source, std::vector<uint32_t>& indices, IndexRange& range,
                   std::string& error) {
    const GltfAttribute& positions = *FindAttribute(source.Primitive.Attributes, GltfSemantic::Position);
    GltfElements elements;
    if (!FindAttributeElements(source, positions, elements, error)) {
        return false;
    }
    const size_t vertices = elements.Base.Count;
    if (vertices >= NoIndex) {
        return FailIn(source, NameOf(positions), "there are too many vertices", error);
    }
    if (source.Draco != nullptr) {
        indices = source.Draco->Indices;
    } else if (!ReadOwnIndices(source, vertices, indices, error)) {
        return false;
    } else {
        SeparateTriangles(source.Primitive.Mode, indices);
    }
    if (indices.empty()) {
        return true;
    }
    const auto [least, most] = std::ranges::minmax(indices);
    if (most >= vertices) {
        return FailIn(source, "indices", "an index is not below the number of vertices", error);
    }
    range = {least, most - least + 1};
    if (least > 0) {
        for (uint32_t& index : indices) {
            index -= range.First;
        }
    }
    return true;
}
