// The summary in words, for people.
#pragma once

#include "inspect/report/SceneSummary.h"

#include <string>

// Several lines, each closed by LF. Names from the file come in quotes, their control characters as
// escapes.
std::u16string SummaryText(const SceneSummary& summary);
