// Reads instances: an accessor each for translations, rotations and scales.
#include "provider/gltf/nodes/GltfInstances.h"

#include "provider/gltf/data/GltfElements.h"
#include "provider/gltf/nodes/GltfPlacement.h"
#include "provider/gltf/records/GltfExtensions.h"
#include "provider/gltf/records/GltfFields.h"

#include <algorithm>
#include <cmath>

// Of all nodes together. Each takes hundreds of bytes of memory, and can take less than one of the file.
constexpr size_t MostInstances = size_t{1} << 22;

namespace {

struct InstanceReading {
    GltfDocument& Document;
    const JsonTape& Json;
};

// The numbers of all instances of a node; those without a number have the defaults of a node.
struct InstanceNumbers {
    uint32_t Count = 0;
    std::vector<double> Translations; // three per instance, or none at all
    std::vector<double> Rotations;    // four
    std::vector<double> Scales;       // three
};

// Reads one attribute of the instances of a node, if there is one. Returns false, with the reason, if it
// can't be read.
bool ReadInstanceAttribute(InstanceReading& reading, uint32_t attributes, const char* key,
                           size_t components, uint32_t& count, std::vector<double>& numbers,
                           std::string& reason) {
    const uint32_t accessor = IndexMember(reading.Json, attributes, key);
    if (accessor == NoIndex) {
        return true;
    }
    GltfElements elements;
    if (!FindElements(reading.Document, accessor, elements, reason)) {
        return false;
    }
    if (elements.Base.Count > MostInstances || (count != NoIndex && count != elements.Base.Count)) {
        reason = "there are too many instances, or another attribute has more or fewer";
        return false;
    }
    count = static_cast<uint32_t>(elements.Base.Count);
    const char* fault = ReadTuples(elements, {0, count}, components, numbers);
    reason = fault != nullptr ? fault : "";
    return fault == nullptr;
}

// Appends the placements of a node's instances to the tree. A placement with numbers that aren't finite
// has no instance.
void PlaceInstances(const InstanceNumbers& numbers, ImportedTree& tree) {
    for (size_t i = 0; i < numbers.Count; ++i) {
        Transform transform = IdentityTransform;
        if (!numbers.Rotations.empty()) {
            transform = RotationOf({numbers.Rotations[4 * i], numbers.Rotations[4 * i + 1],
                                    numbers.Rotations[4 * i + 2], numbers.Rotations[4 * i + 3]});
        }
        if (!numbers.Scales.empty()) {
            Scale(transform, std::span(numbers.Scales).subspan(3 * i, 3));
        }
        if (!numbers.Translations.empty()) {
            std::copy_n(numbers.Translations.begin() + static_cast<ptrdiff_t>(3 * i), 3,
                        transform.begin() + 12);
        }
        if (std::ranges::all_of(transform, [](double number) { return std::isfinite(number); })) {
            tree.Placements.push_back(ToModelAxes(UpAxis::Y, transform));
        }
    }
}

} // namespace

bool ReadInstances(GltfDocument& document, const JsonTape& json, uint32_t node, ImportedTree& tree,
                   std::vector<std::string>& remarks, std::string& error) {
    const uint32_t extension = ExtensionOf(json, node, InstancingExtension);
    const uint32_t attributes = ObjectMember(json, extension, "attributes");
    if (attributes == 0) {
        return true;
    }
    InstanceReading reading = {document, json};
    InstanceNumbers numbers;
    std::string reason;
    uint32_t count = NoIndex;
    if (!ReadInstanceAttribute(reading, attributes, "TRANSLATION", 3, count, numbers.Translations,
                               reason) ||
        !ReadInstanceAttribute(reading, attributes, "ROTATION", 4, count, numbers.Rotations, reason) ||
        !ReadInstanceAttribute(reading, attributes, "SCALE", 3, count, numbers.Scales, reason)) {
        // Finding the place in the document takes time with its size, and any number of nodes can fail.
        remarks.push_back(PlaceIn("nodes", tree.Nodes.size() - 2) + ".extensions." +
                          std::string(InstancingExtension) + ": " + reason +
                          "; the instances are left out");
        return true;
    }
    if (count == NoIndex) {
        return true; // only attributes of other programs
    }
    if (count > MostInstances - tree.Placements.size()) {
        return FailAt(json, extension,
                      "there are more than " + std::to_string(MostInstances) + " instances", error);
    }
    numbers.Count = count;
    ImportedNode& imported = tree.Nodes.back();
    imported.Instances.First = static_cast<uint32_t>(tree.Placements.size());
    PlaceInstances(numbers, tree);
    imported.Instances.Count = static_cast<uint32_t>(tree.Placements.size()) - imported.Instances.First;
    if (imported.Instances.Count == 0) {
        imported.Meshes.clear();
    }
    return true;
}
