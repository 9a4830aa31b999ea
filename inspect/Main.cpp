// scene-inspect FILE: tells whether a scene file is sound, and what it holds.
#include "inspect/SceneReader.h"
#include "inspect/SceneSummary.h"
#include "inspect/SummaryText.h"

#include "platform/Main.h"
#include "platform/Platform.h"

#include <cstdio>

namespace {

constexpr int Sound = 0;
constexpr int Broken = 1;
constexpr int WrongUse = 2;

void PrintError(const std::u16string& line) {
    const std::string text = Utf8FromUtf16(line + u"\n");
    std::fwrite(text.data(), 1, text.size(), stderr);
}

} // namespace

int Main(const std::vector<std::u16string>& arguments) {
    // No options yet, and what looks like one shall not silently be taken for a file.
    if (arguments.size() != 1 || arguments[0].starts_with(u"--")) {
        PrintError(u"Usage: scene-inspect FILE");
        return WrongUse;
    }
    StoredScene scene;
    if (const auto fault = ReadStoredSceneFile(arguments[0], scene)) {
        PrintError(arguments[0] + u": " + FaultText(*fault));
        return Broken;
    }
    PrintToStandardOutput(SummaryText(Summarize(scene)));
    return Sound;
}
