// The program: arguments, directories, the import, the scene file, the exit code.
#include "platform/entry/Main.h"
#include "output/SceneFile.h"
#include "platform/Platform.h"
#include "run/Log.h"
#include "run/Messages.h"
#include "run/ModelImporter.h"
#include "run/Paths.h"

#include <cstdio>
#include <new>
#include <stdexcept>

static constexpr int ExitWrongArguments = 1;
// Differs from all exit codes of a conversion.
static constexpr int ExitOutOfMemory = 20;

// Writes the whole scene file. An earlier file is truncated only here, after the model has been read.
static bool WriteSceneFile(const std::u16string& path, const SceneNode& root,
                           const MaterialTable& materials, ProgressLine& progress) {
    OutputFile file;
    file.Open(path);
    return file.Stream != nullptr && WriteScene(file, root, materials, progress);
}

// Reports lists that the scene lacks, on standard error because the lines of the log are fixed.
static void ReportListsLeftOut(const ModelImporter& importer) {
    if (importer.ListsTooDeep != 0) {
        std::fprintf(stderr, MessageListsTooDeep, NestingLimit, importer.ListsTooDeep);
    }
    if (importer.ListsInsideThemselves != 0) {
        std::fprintf(stderr, MessageListsInsideThemselves, importer.ListsInsideThemselves);
    }
}

static int Run(const std::vector<std::u16string>& arguments) {
    const std::u16string& sourcePath = arguments[0];
    const std::u16string& scenePath = arguments[1];
    std::u16string relativeDirectory = arguments[2];
    const std::u16string& logPath = arguments[3];

    const std::u16string sceneDirectory = DirectoryOf(scenePath.c_str());
    if (!relativeDirectory.empty() && relativeDirectory.back() != u'\\') {
        relativeDirectory.push_back(u'\\');
    }
    MakeDirectories(sceneDirectory.c_str());
    MakeDirectories(DirectoryOf(logPath.c_str()).c_str());

    ModelImporter importer;
    const RootHolder* holder =
        importer.Import(sourcePath, scenePath, sceneDirectory, relativeDirectory, logPath);
    EraseProgress(importer.Progress);
    ReportListsLeftOut(importer);
    if (holder == nullptr || importer.ImportStatus != StatusOk) {
        Log(importer, MessageErrorImporting, {sourcePath, importer.ImportStatus});
        return importer.ImportStatus;
    }
    if (!WriteSceneFile(scenePath, *holder->Root, importer.MaterialTable, importer.Progress)) {
        Log(importer, MessageErrorWriting, {scenePath});
        return StatusSceneNotWritten;
    }
    Log(importer, MessageSuccess, {sourcePath, scenePath});
    return StatusOk;
}

int Main() {
    // Thrown by the standard library if memory runs out or a size exceeds its limits.
    try {
        const std::vector<std::u16string> arguments = CommandLine();
        if (arguments.size() == 4) {
            return Run(arguments);
        }
        PrintToStandardOutput(MessageUsage);
        return ExitWrongArguments;
    } catch (const std::bad_alloc&) {
        std::fputs(MessageOutOfMemory, stderr);
    } catch (const std::length_error&) {
        std::fputs(MessageOutOfMemory, stderr);
    }
    return ExitOutOfMemory;
}
