// Moves vertices by morph targets, then by the weighted mean of the matrices of their joints (linear
// blending).
#include "provider/gltf/meshes/PosedVertices.h"

#include "provider/reading/NodeTree.h"

#include <algorithm>

// Vertices that are moved together. Bounds the memory for their matrices.
constexpr uint32_t BlockSize = 16384;

constexpr size_t InfluencesPerSet = 4; // joints in one element of JOINTS_n

namespace {

// The attributes of one set of influences.
struct Influences {
    GltfElements Joints;
    GltfElements Weights;
};

// Adds the differences of a target to values.
void AddTarget(const PrimitiveSource& source, const GltfPose& pose, size_t target, GltfSemantic semantic,
               IndexRange range, std::vector<Point3>& values, std::vector<std::string>& remarks) {
    const GltfAttribute* attribute = FindAttribute(source.Primitive.Targets[target], semantic);
    if (attribute == nullptr || values.empty()) {
        return;
    }
    GltfElements elements;
    std::vector<Point3> differences;
    std::string reason;
    if (FindElements(source.Document, attribute->Accessor, elements, reason)) {
        const char* fault = ReadPoints(elements, range, differences);
        reason = fault != nullptr ? fault : "";
    }
    if (!reason.empty()) {
        remarks.push_back(source.Place + "." + PlaceIn("targets", target) + ": " + reason +
                          "; the target is left out");
        return;
    }
    for (size_t i = 0; i < values.size(); ++i) {
        values[i] = values[i] + pose.Weights[target] * ToModelAxes(UpAxis::Y, differences[i]);
    }
}

bool FindInfluences(const PrimitiveSource& source, std::vector<Influences>& sets, std::string& error) {
    for (uint32_t set = 0;; ++set) {
        const auto& attributes = source.Primitive.Attributes;
        const GltfAttribute* joints = FindAttribute(attributes, GltfSemantic::Joints, set);
        const GltfAttribute* weights = FindAttribute(attributes, GltfSemantic::Weights, set);
        if (joints == nullptr || weights == nullptr) {
            return true;
        }
        Influences& found = sets.emplace_back();
        if (!FindAttributeElements(source, *joints, found.Joints, error) ||
            !FindAttributeElements(source, *weights, found.Weights, error)) {
            return false;
        }
        found.Joints.Base.Normalized = found.Joints.Values.Normalized = false;
    }
}

void AddWeighted(Transform& sum, double weight, const Transform& transform) {
    for (size_t i = 0; i < sum.size(); ++i) {
        sum[i] += weight * transform[i];
    }
}

// The sum of the matrices of the joints of each vertex of a range, times their weights. Returns false if
// a joint doesn't exist; it has no influence then.
bool BlendJoints(const std::vector<Influences>& sets, const std::vector<Transform>& joints,
                 IndexRange range, std::vector<Transform>& blended) {
    bool allExist = true;
    std::vector<double> numbers;
    std::vector<double> weights;
    std::vector<double> totals(range.Count);
    blended.assign(range.Count, Transform{});
    for (const Influences& set : sets) {
        ReadTuples(set.Joints, range, InfluencesPerSet, numbers);
        ReadTuples(set.Weights, range, InfluencesPerSet, weights);
        for (size_t i = 0; i < numbers.size(); ++i) {
            const size_t vertex = i / InfluencesPerSet;
            if (!(weights[i] > 0.0)) {
                continue;
            }
            if (!(numbers[i] >= 0.0 && numbers[i] < static_cast<double>(joints.size()))) {
                allExist = false;
                continue;
            }
            AddWeighted(blended[vertex], weights[i], joints[static_cast<size_t>(numbers[i])]);
            totals[vertex] += weights[i];
        }
    }
    for (size_t vertex = 0; vertex < blended.size(); ++vertex) {
        if (totals[vertex] > 0.0) {
            for (double& number : blended[vertex]) {
                number /= totals[vertex];
            }
        } else {
            blended[vertex] = joints[0];
        }
    }
    return allExist;
}

Point3 MovePoint(const Transform& t, Point3 p) {
    const double w = p.X * t[3] + p.Y * t[7] + p.Z * t[11] + t[15];
    return {(p.X * t[0] + p.Y * t[4] + p.Z * t[8] + t[12]) / w,
            (p.X * t[1] + p.Y * t[5] + p.Z * t[9] + t[13]) / w,
            (p.X * t[2] + p.Y * t[6] + p.Z * t[10] + t[14]) / w};
}

// Multiplies by the cofactors of the matrix, which keeps a normal perpendicular to its surface.
Point3 MoveNormal(const Transform& t, Point3 n) {
    const Point3 x = {t[0], t[1], t[2]};
    const Point3 y = {t[4], t[5], t[6]};
    const Point3 z = {t[8], t[9], t[10]};
    return n.X * Cross(y, z) + n.Y * Cross(z, x) + n.Z * Cross(x, y);
}

void MoveByJoints(const PrimitiveSource& source, const GltfPose& pose, IndexRange range,
                  std::vector<Point3>& positions, std::vector<Point3>& normals,
                  std::vector<std::string>& remarks) {
    std::vector<Influences> sets;
    std::string ignored;
    FindInfluences(source, sets, ignored); // CanHaveSkin has found them
    bool allExist = true;
    std::vector<Transform> blended;
    for (uint32_t start = 0; start < range.Count; start += BlockSize) {
        const uint32_t count = std::min(BlockSize, range.Count - start);
        allExist = BlendJoints(sets, *pose.Joints, {range.First + start, count}, blended) && allExist;
        for (uint32_t i = 0; i < count; ++i) {
            positions[start + i] = MovePoint(blended[i], positions[start + i]);
            if (!normals.empty()) {
                normals[start + i] = MoveNormal(blended[i], normals[start + i]);
            }
        }
    }
    if (!allExist) {
        remarks.push_back(source.Place + ".attributes: a joint does not exist; it has no influence");
    }
}

bool CanHaveSkin(PrimitiveSource& source, std::string& reason) {
    std::vector<Influences> sets;
    if (!FindCompressedMesh(source, reason) || !FindInfluences(source, sets, reason)) {
        return false;
    }
    GltfElements positions;
    if (!FindAttributeElements(source,
                               *FindAttribute(source.Primitive.Attributes, GltfSemantic::Position),
                               positions, reason)) {
        return false;
    }
    const size_t vertices = positions.Base.Count;
    const auto fits = [&](const GltfElements& elements) {
        std::vector<double> ignored;
        return elements.Base.Components == InfluencesPerSet && elements.Base.Count >= vertices &&
               ReadTuples(elements, {0, 0}, InfluencesPerSet, ignored) == nullptr;
    };
    reason = source.Place + ".attributes: the joints or their weights do not fit the vertices";
    return !sets.empty() && std::ranges::all_of(sets, [&](const Influences& set) {
        return fits(set.Joints) && fits(set.Weights);
    });
}

} // namespace

bool CanHaveSkin(GltfDocument& document, uint32_t mesh, std::string& reason) {
    const std::vector<GltfPrimitive>& primitives = document.Records.Meshes[mesh].Primitives;
    for (size_t i = 0; i < primitives.size(); ++i) {
        PrimitiveSource source = {document, primitives[i], PlaceOfPrimitive(mesh, i)};
        if (HasTriangles(primitives[i]) && !CanHaveSkin(source, reason)) {
            return false;
        }
    }
    return true;
}

void PoseVertices(const PrimitiveSource& source, const GltfPose& pose, IndexRange range,
                  std::vector<Point3>& positions, std::vector<Point3>& normals,
                  std::vector<std::string>& remarks) {
    const size_t targets = std::min(pose.Weights.size(), source.Primitive.Targets.size());
    for (size_t target = 0; target < targets; ++target) {
        if (pose.Weights[target] != 0.0) {
            AddTarget(source, pose, target, GltfSemantic::Position, range, positions, remarks);
            AddTarget(source, pose, target, GltfSemantic::Normal, range, normals, remarks);
        }
    }
    if (pose.Joints != nullptr) {
        MoveByJoints(source, pose, range, positions, normals, remarks);
    }
}
