// The summary as JSON, for programs.
#pragma once

#include "inspect/report/SceneSummary.h"

#include <string>

// One JSON object in UTF-8, with a final LF. "sound" is true; docs/scene-inspect.md describes the other
// keys.
std::string SummaryJson(const SceneSummary& summary);

// The same for a file that is not sound: "sound" is false, "offset" and "reason" describe the fault.
std::string FaultJson(const SceneFault& fault);
