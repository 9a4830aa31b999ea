// The summary as text.
#pragma once

#include "inspect/report/SceneSummary.h"

#include <string>

// Several lines, each with a final LF. Names from the file are in quotes, with control characters
// escaped.
std::u16string SummaryText(const SceneSummary& summary);
