// Reads a scene file and checks every byte of it. docs/scene-file.md describes the format.
//
// Time and memory are proportional to the bytes present, regardless of counts. Files can have any size.
// Lack of memory says nothing about the file; it is reported as std::bad_alloc.
#pragma once

#include "inspect/stored/StoredScene.h"

#include "platform/ProgressLine.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

// The first fault: its byte offset, counted from 0, and a description.
struct SceneFault {
    uint64_t Offset = 0;
    std::u16string Reason;
};

// "at byte 352: mesh record: magic is 00000000, not 42424242"
std::u16string FaultText(const SceneFault& fault);

// Returns nothing and fills scene if the bytes are a sound scene file from first to last. Otherwise
// returns the fault and leaves scene without nodes.
std::optional<SceneFault> ReadStoredScene(std::span<const uint8_t> bytes, StoredScene& scene);

// The same for a file. A file that can't be opened or read is a fault too, at the byte up to which it
// was read. Shows the share that is read, if there is a line for it.
std::optional<SceneFault> ReadStoredSceneFile(const std::u16string& path, StoredScene& scene,
                                              ProgressLine* progress = nullptr);

// A scene that is read part by part, for callers that don't need all of it in memory at once. The file
// is known to be sound only after End.
struct SceneReading {
    // The result of the last step; the next step overwrites it. Parent, Children and Meshes of Node
    // stay empty.
    StoredNode Node;
    uint32_t MeshCount = 0;  // Of Node.
    uint32_t ChildCount = 0; // Of Node.
    uint64_t Depth = 0;      // Of Node: 1 for the root.
    StoredMesh Mesh;         // Its owner is Node.
    std::optional<SceneFault> Fault;
    ProgressLine* Progress = nullptr; // Shows the share that is read; null for none.

    // The rest is internal to the reader.
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> File = {nullptr, nullptr};
    std::span<const uint8_t> Bytes; // Instead of File.
    std::optional<uint64_t> Size;   // Unknown for pipes and similar files.
    uint64_t Position = 0;
    uint64_t OwedNodes = 1;                   // Node blocks still to come, as far as known.
    uint32_t OwedMeshes = 0;                  // Of Node.
    std::vector<uint32_t> OwedChildren = {1}; // On each level of the path; the root on the first.
};

enum class ScenePart { Node, Mesh, End, Fault };

// The bytes must outlive the reading.
SceneReading ReadingOfBytes(std::span<const uint8_t> bytes);
SceneReading ReadingOfFile(const std::u16string& path);

// Reads the next part: each node is followed by its meshes and then by its children. After End or Fault
// it returns the same again.
ScenePart ReadPart(SceneReading& reading);
