// Feeds bytes to the scene file reader, with and without a known size, and valid scenes to the reports
// of scene-inspect.
#include "FuzzInput.h"
#include "inspect/report/SceneDiff.h"
#include "inspect/report/SceneJson.h"
#include "inspect/report/SceneSummary.h"
#include "inspect/report/SceneTree.h"
#include "inspect/report/SummaryText.h"
#include "inspect/stored/SceneReader.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::span<const uint8_t> bytes(data, size);
    StoredScene scene;
    const auto fault = ReadStoredScene(bytes, scene);

    SceneReading pipe = ReadingOfBytes(bytes);
    pipe.Size.reset();
    SceneSummary summary;
    const auto pipeFault = SummarizeParts(pipe, summary);
    Expect(fault.has_value() == pipeFault.has_value());
    if (fault) {
        Expect(fault->Offset <= size && pipeFault->Offset <= size && !FaultText(*fault).empty());
        return 0;
    }
    Expect(SummaryText(Summarize(scene)) == SummaryText(summary));
    Expect(!SummaryJson(summary).empty());
    SceneReading reading = ReadingOfBytes(bytes);
    std::u16string tree;
    Expect(!TreeText(reading, tree) && !tree.empty());
    Expect(CompareScenes(scene, scene).Count == 0);
    return 0;
}
