// The state of a conversion, which every stage of a run takes as its first parameter.
#pragma once

#include "api/Handles.h"
#include "platform/ProgressLine.h"
#include "run/MaterialTable.h"
#include "run/OutputFile.h"
#include "scene/SceneNode.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// Values of ImportStatus, which are also the number in the log and the exit code.
constexpr int32_t StatusOk = 0;
constexpr int32_t StatusModelNotOpened = 10;
constexpr int32_t StatusSceneNotWritten = 11; // an exit code only, never stored in ImportStatus
constexpr int32_t StatusTextureNotWritten = 12;
constexpr int32_t StatusModelNotRead = 13; // or it has no triangles

// The most nested lists of entities, the model's own included. Walks of the tree recurse once per level:
// this many levels take less than 2 MB of the 8 MB of stack, and real models nest a few dozen at most.
constexpr size_t NestingLimit = 1024;

struct ModelImporter {
    OutputFile LogFile;                       // stays closed if the log can't be opened
    std::unique_ptr<::RootHolder> RootHolder; // null before the model is read
    ::MaterialTable MaterialTable;            // row 0 is the default material
    std::u16string SourceDirectory;           // of the model
    std::u16string OutputDirectory;           // of the scene file and the texture files
    std::u16string RelativeDirectory;         // prefix of the texture paths in the scene file
    std::u16string TexturePrefix;             // base name of the scene file and "_"
    int32_t TextureCounter = 0;               // the last texture number used
    TextureWriterHandle TextureWriter = {};   // null until created
    ModelHandle Model = {};                   // null until opened
    int32_t ImportStatus = StatusOk;          // the failure of the run; never reset
    std::vector<EntitiesHandle> OpenEntities; // the lists being walked, from the model's own down
    uint64_t ListsTooDeep = 0;          // skipped beyond NestingLimit, counted once per path to them
    uint64_t ListsInsideThemselves = 0; // skipped, counted likewise
    ProgressLine Progress;
    uint64_t FacesRead = 0; // for Progress

    // Initialises the library.
    ModelImporter();
    ModelImporter(const ModelImporter&) = delete;
    ModelImporter& operator=(const ModelImporter&) = delete;
    // Releases the model, terminates the library and closes the log, in this order.
    ~ModelImporter();

    // Opens the log and the model and reads the model. Returns the finished tree in scene coordinates,
    // owned by this object; or null, with ImportStatus set and a line in the log. A tree returned with
    // ImportStatus set is incomplete. Called once.
    ::RootHolder* Import(const std::u16string& sourcePath, const std::u16string& scenePath,
                         const std::u16string& outputDirectory, const std::u16string& relativeDirectory,
                         const std::u16string& logPath);

    // Fills MaterialTable and RootHolder from the open model. Reports failure in ImportStatus.
    void ReadModel();
};
