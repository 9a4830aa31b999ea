// Vertices in the pose of a file: morphed by the targets of their mesh, moved by the joints of a skin.
#pragma once

#include "provider/gltf/meshes/PrimitiveData.h"
#include "provider/model/Transform.h"

#include <memory>

struct GltfPose {
    std::vector<double> Weights; // of the morph targets; a target without one is not used
    // For each joint, from the space of the mesh to that of the scene, in the model's axes. Null: the
    // mesh has no skin.
    std::shared_ptr<const std::vector<Transform>> Joints;
};

// Whether all triangles of a mesh have joints and weights that can be read. Otherwise returns false,
// with place and reason.
bool CanHaveSkin(GltfDocument& document, uint32_t mesh, std::string& reason);

// Moves the positions and normals of a range of vertices, which are in the model's axes. There may be no
// normals; otherwise their lengths change. Targets that can't be read and joints that don't exist are
// left out, with a remark.
void PoseVertices(const PrimitiveSource& source, const GltfPose& pose, IndexRange range,
                  std::vector<Point3>& positions, std::vector<Point3>& normals,
                  std::vector<std::string>& remarks);
