// scene-inspect: checks, summarizes, compares, converts and draws scene files.
#include "inspect/Options.h"
#include "inspect/drawing/ScenePicture.h"
#include "inspect/gltf/GltfExport.h"
#include "inspect/page/PageExport.h"
#include "inspect/report/SceneDiff.h"
#include "inspect/report/SceneJson.h"
#include "inspect/report/SceneSummary.h"
#include "inspect/report/SceneTree.h"
#include "inspect/report/SummaryText.h"
#include "inspect/stored/SceneReader.h"
#include "inspect/stored/Wording.h"

#include "picture/PngWriter.h"
#include "platform/Bytes.h"
#include "platform/Files.h"
#include "platform/Platform.h"
#include "platform/ProgressLine.h"
#include "platform/entry/Main.h"

#include <cerrno>
#include <cstdio>
#include <new>

namespace {

// Exit codes.
constexpr int Sound = 0;
constexpr int NotSound = 1;
constexpr int WrongUse = 2;
constexpr int Different = 3;
constexpr int NotWritten = 4;

void PrintError(const std::u16string& line) {
    const std::string text = Utf8FromUtf16(line + u"\n");
    std::fwrite(text.data(), 1, text.size(), stderr);
}

// Returns the outcome, or NotWritten if the text can't be written in full. A reader that closes
// standard output early, as head does, needs no message.
int Print(const std::u16string& text, int outcome) {
    const int reason = PrintToStandardOutput(text);
    if (reason != 0 && reason != EPIPE) {
        PrintError(u"scene-inspect: standard output can't be written" + InBrackets(reason));
    }
    return reason == 0 ? outcome : NotWritten;
}

int ReportFault(const std::u16string& file, const SceneFault& fault, Report kind) {
    PrintError(file + u": " + FaultText(fault));
    if (kind == Report::Json) {
        return Print(Utf16FromUtf8(FaultJson(fault)), NotSound);
    }
    return NotSound;
}

std::u16string SummaryWords(const SceneSummary& summary, Report kind) {
    return kind == Report::Json ? Utf16FromUtf8(SummaryJson(summary)) : SummaryText(summary);
}

// Reads the file part by part, without the scene in memory.
int ReportPartByPart(const Options& options, ProgressLine& progress) {
    SceneReading reading = ReadingOfFile(options.File);
    reading.Progress = &progress;
    std::u16string text;
    if (options.Kind == Report::Tree) {
        TreeText(reading, text);
    } else {
        SceneSummary summary;
        SummarizeParts(reading, summary);
        text = SummaryWords(summary, options.Kind);
    }
    EraseProgress(progress);
    if (reading.Fault) {
        return ReportFault(options.File, *reading.Fault, options.Kind);
    }
    return Print(text, Sound);
}

int ReportDifferences(const Options& options, const StoredScene& scene) {
    StoredScene other;
    if (const auto fault = ReadStoredSceneFile(options.Other, other)) {
        return ReportFault(options.Other, *fault, options.Kind);
    }
    const SceneDifferences differences = CompareScenes(scene, other);
    if (differences.Count == 0) {
        return Print(u"no differences\n", Sound);
    }
    return Print(Counted(differences.Count, u"difference", u"differences") + u"\nfirst: " +
                     differences.First + u"\n",
                 Different);
}

int ReportScene(const Options& options, const StoredScene& scene) {
    if (options.Kind == Report::Differences) {
        return ReportDifferences(options, scene);
    }
    return Print(options.Kind == Report::Tree ? TreeText(scene)
                                              : SummaryWords(Summarize(scene), options.Kind),
                 Sound);
}

// False if the file can't be written in full; the same for the three below.
bool WriteOutput(const std::u16string& path, std::string_view bytes) {
    const int reason = WriteWholeFile(path, BytesOfText(bytes));
    if (reason != 0) {
        PrintError(path + u": the file can't be written" + InBrackets(reason));
    }
    return reason == 0;
}

void WarnOfTriangles(const Options& options, uint64_t count, const std::u16string& output) {
    if (count != 0) {
        PrintError(options.File + u": " + Counted(count, u"triangle", u"triangles") +
                   u" with non-finite numbers omitted from " + output);
    }
}

bool WriteGltf(const Options& options, const StoredScene& scene, TextureShelf& textures) {
    const GltfFile gltf = ExportGltf(scene, textures);
    WarnOfTriangles(options, gltf.TrianglesLeftOut, options.GltfFile);
    if (gltf.Bytes.empty()) {
        PrintError(options.GltfFile + u": the scene exceeds the limit of binary glTF, 4 GiB");
        return false;
    }
    return WriteOutput(options.GltfFile, gltf.Bytes);
}

bool WritePage(const Options& options, const StoredScene& scene, TextureShelf& textures) {
    const PageFile page = ExportPage(scene, textures, LastComponent(options.File));
    if (page.Bytes.empty()) {
        PrintError(options.PageFile + u": " + page.Reason);
        return false;
    }
    WarnOfTriangles(options, page.TrianglesLeftOut, options.PageFile);
    return WriteOutput(options.PageFile, page.Bytes);
}

bool WriteDrawing(const Options& options, const StoredScene& scene, TextureShelf& textures) {
    const ScenePicture picture = DrawScene(scene, textures, options.Width, options.Height);
    std::string reason;
    const std::vector<uint8_t> png =
        EncodePng(picture.Pixels, picture.Width, picture.Height, PictureChannels, reason);
    if (png.empty()) {
        PrintError(options.PictureFile + u": the picture " + Utf16FromUtf8(reason));
        return false;
    }
    return WriteOutput(options.PictureFile, {reinterpret_cast<const char*>(png.data()), png.size()});
}

std::u16string TextureDirectory(const Options& options) {
    if (options.TextureDirectory.empty()) {
        return DirectoryPart(options.File);
    }
    return LastComponent(options.TextureDirectory).empty() ? options.TextureDirectory
                                                           : options.TextureDirectory + u"/";
}

// Announces what can take long without a sign of life.
void Announce(ProgressLine& progress, const char* what, uint64_t triangles) {
    constexpr uint64_t leastAnnounced = 500000;
    if (triangles >= leastAnnounced) {
        ShowProgress(progress, std::string(what) + std::to_string(triangles) + " triangles");
    }
}

// Writes the binary glTF file, the picture and the page, if requested.
int WriteOutputs(const Options& options, const StoredScene& scene, ProgressLine& progress) {
    const SceneSummary summary = Summarize(scene);
    if (const uint64_t count = summary.NodesWithMatrix; count != 0) {
        PrintError(options.File + u": " + Counted(count, u"matrix", u"matrices") +
                   u" other than the identity not applied");
    }
    TextureShelf textures;
    textures.Directory = TextureDirectory(options);
    bool written = true;
    if (!options.GltfFile.empty()) {
        Announce(progress, "Exporting: ", summary.Triangles);
        written = WriteGltf(options, scene, textures);
    }
    if (!options.PictureFile.empty()) {
        Announce(progress, "Drawing: ", summary.Triangles);
        written = WriteDrawing(options, scene, textures) && written;
    }
    if (!options.PageFile.empty()) {
        Announce(progress, "Making the page: ", summary.Triangles);
        written = WritePage(options, scene, textures) && written;
    }
    EraseProgress(progress);
    for (const std::u16string& warning : textures.Warnings) {
        PrintError(options.File + u": " + warning);
    }
    return written ? Sound : NotWritten;
}

// Opens the file once, because a pipe delivers its bytes only once.
int Run(const Options& options) {
    ProgressLine progress;
    StartProgress(progress);
    const bool wantsOutput =
        !options.GltfFile.empty() || !options.PictureFile.empty() || !options.PageFile.empty();
    if (options.Kind != Report::Differences && !wantsOutput) {
        return ReportPartByPart(options, progress);
    }
    StoredScene scene;
    const auto fault = ReadStoredSceneFile(options.File, scene, &progress);
    EraseProgress(progress);
    if (fault) {
        return ReportFault(options.File, *fault, options.Kind);
    }
    const int reported = ReportScene(options, scene);
    if (reported == NotSound || !wantsOutput) {
        return reported;
    }
    const int written = WriteOutputs(options, scene, progress);
    return written == Sound ? reported : written;
}

} // namespace

int Main() {
    Options options;
    const std::u16string wrong = ParseOptions(CommandLine(), options);
    if (!wrong.empty()) {
        PrintError(u"scene-inspect: " + wrong);
        PrintError(UsageText());
        return WrongUse;
    }
    if (options.WantsHelp) {
        return Print(UsageText(), Sound);
    }
    if (options.WantsVersion) {
        return Print(VersionText(), Sound);
    }
    try {
        return Run(options);
    } catch (const std::bad_alloc&) {
        PrintError(options.File + u": not enough memory");
        return NotWritten;
    }
}
