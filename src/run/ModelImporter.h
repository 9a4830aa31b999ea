// The one object that holds the state of a conversion: every stage of a run takes it first.
#pragma once

#include "api/Handles.h"
#include "run/MaterialTable.h"
#include "run/OutputFile.h"
#include "scene/SceneNode.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// Values of ImportStatus. The value is at once the number in the log and the exit code.
constexpr int32_t StatusOk = 0;
constexpr int32_t StatusModelNotOpened = 10;
constexpr int32_t StatusSceneNotWritten = 11; // an exit code only, never stored in ImportStatus
constexpr int32_t StatusTextureNotWritten = 12;
constexpr int32_t StatusModelNotRead = 13; // or it holds no triangle

// The most lists of entities one inside the other, the model's own included. Whatever follows a tree
// down calls itself once per level: this many levels take less than 2 MB of the 8 MB of stack, and
// people nest a few dozen at the most.
constexpr size_t NestingLimit = 1024;

struct ModelImporter {
    OutputFile LogFile;                       // stays closed if the log can't be opened
    std::unique_ptr<::RootHolder> RootHolder; // null before the model is read
    ::MaterialTable MaterialTable;            // row 0 is the default material
    std::u16string SourceDirectory;           // of the model
    std::u16string OutputDirectory;           // of the scene file: where pictures go
    std::u16string RelativeDirectory;         // put in front of the texture paths in the scene file
    std::u16string TexturePrefix;             // base name of the scene file and "_"
    int32_t TextureCounter = 0;               // the last texture number handed out
    TextureWriterHandle TextureWriter = {};   // null until created
    ModelHandle Model = {};                   // null until opened
    int32_t ImportStatus = StatusOk;          // the run's one failure mark; never set back
    std::vector<EntitiesHandle> OpenEntities; // the lists being walked, from the model's own down
    uint64_t ListsTooDeep = 0;                // left out beyond NestingLimit, once for each way to them
    uint64_t ListsInsideThemselves = 0;       // left out, likewise

    // Brings the library up.
    ModelImporter();
    ModelImporter(const ModelImporter&) = delete;
    ModelImporter& operator=(const ModelImporter&) = delete;
    // Releases the model, shuts the library down and closes the log, in this order.
    ~ModelImporter();

    // Opens the log and the model and reads it. Gives the holder of the finished tree, in scene
    // coordinates, which this object keeps; or null, after a line in the log and with ImportStatus set.
    // A tree can also come with an ImportStatus: it is then incomplete. Called once.
    ::RootHolder* Import(const std::u16string& sourcePath, const std::u16string& scenePath,
                         const std::u16string& outputDirectory, const std::u16string& relativeDirectory,
                         const std::u16string& logPath);

    // Fills MaterialTable and RootHolder from the open model. Its outcome is in ImportStatus.
    void ReadModel();
};
