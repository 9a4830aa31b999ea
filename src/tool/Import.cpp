// The import: opens the log and the model, reads the model, and closes both.
#include "api/SketchUpAPI.h"
#include "output/Recentre.h"
#include "platform/Platform.h"
#include "platform/ProgressLine.h"
#include "reader/EntityWalk.h"
#include "reader/LibraryReading.h"
#include "reader/Materials.h"
#include "run/Log.h"
#include "run/Messages.h"
#include "run/ModelImporter.h"
#include "run/Paths.h"

// The first bytes of the log: UTF-16, little-endian.
static constexpr uint8_t ByteOrderMark[] = {0xFF, 0xFE};

// Opening is one call of the library, so it can only be announced.
static void AnnounceOpening(ProgressLine& progress, const std::u16string& path) {
    constexpr uint64_t megabyte = 1000000;
    constexpr uint64_t leastAnnounced = 20 * megabyte;
    const uint64_t size = progress.IsTerminal ? SizeOfFile(path) : 0;
    if (size > leastAnnounced) {
        ShowProgress(progress, "Opening: " + std::to_string(size / megabyte) + " MB");
    }
}

ModelImporter::ModelImporter() {
    SUInitialize();
}

ModelImporter::~ModelImporter() {
    SUModelRelease(&Model);
    SUTerminate();
    LogFile.Close();
}

RootHolder* ModelImporter::Import(const std::u16string& sourcePath, const std::u16string& scenePath,
                                  const std::u16string& outputDirectory,
                                  const std::u16string& relativeDirectory,
                                  const std::u16string& logPath) {
    StartProgress(Progress);
    // A log at the path of the scene file would truncate an earlier scene, and be overwritten.
    if (!NameOneFile(logPath, scenePath)) {
        LogFile.Open(logPath);
    }
    LogFile.Write(ByteOrderMark, sizeof ByteOrderMark);
    SourceDirectory = DirectoryOf(sourcePath.c_str());
    OutputDirectory = DirectoryOf(outputDirectory.c_str());
    RelativeDirectory = relativeDirectory;
    Log(*this, MessageImporting, {sourcePath, scenePath});
    TexturePrefix = std::u16string(SplitPath(scenePath).BaseName) + u"_";

    AnnounceOpening(Progress, sourcePath);
    const std::optional<std::string> libraryPath = LibraryPath(sourcePath);
    if (!libraryPath || SUModelCreateFromFile(&Model, libraryPath->c_str()) != 0) {
        Model = {}; // a handle left by the failed call is not released
        Log(*this, MessageErrorOpening, {sourcePath});
        ImportStatus = StatusModelNotOpened;
        return nullptr;
    }
    if (SUTextureWriterCreate(&TextureWriter) != 0) {
        Log(*this, MessageErrorTextureWriter, {});
        ImportStatus = StatusModelNotRead;
        return nullptr;
    }
    ReadModel();
    if (RootHolder->Root != nullptr && CountTriangles(*RootHolder->Root) != 0) {
        return RootHolder.get();
    }
    Log(*this, MessageErrorReading, {});
    ImportStatus = StatusModelNotRead;
    return nullptr;
}

void ModelImporter::ReadModel() {
    if (ImportStatus != StatusOk) {
        return;
    }
    RootHolder = std::make_unique<::RootHolder>();
    ImportMaterials(*this);
    EntitiesHandle entities = {};
    if (SUModelGetEntities(Model, &entities) != 0) {
        ImportStatus = StatusModelNotRead;
        return;
    }
    // The tree is kept and flattened even if a failed texture has stopped the walk.
    RootHolder->Root = ImportEntities(*this, entities, {}, DefaultMaterialIndex);
    Recentre(*RootHolder->Root);
}
