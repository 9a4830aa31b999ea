// The summary as JSON, for programs.
#pragma once

#include "inspect/report/SceneSummary.h"

#include <string>

// One JSON object in UTF-8, closed by LF. "sound" is true; the other keys are those of
// docs/scene-inspect.md.
std::string SummaryJson(const SceneSummary& summary);

// The same for a file that isn't sound: "sound" is false, "offset" and "reason" tell the fault.
std::string FaultJson(const SceneFault& fault);
