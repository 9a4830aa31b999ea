// The line is rewritten with spaces and carriage returns alone, which every terminal and console knows.
#include "platform/ProgressLine.h"

#include "platform/Platform.h"

#include <cstdio>
#include <string>

namespace {

// Replaces the line on the terminal. Failures don't matter: it only informs.
void Rewrite(ProgressLine& line, const std::string& text) {
    const size_t rest = line.Columns > text.size() ? line.Columns - text.size() : 0;
    const std::string bytes = "\r" + text + std::string(rest, ' ') + "\r";
    std::fwrite(bytes.data(), 1, bytes.size(), stderr);
    std::fflush(stderr);
    line.Columns = static_cast<uint32_t>(text.size());
}

} // namespace

ProgressLine::~ProgressLine() {
    EraseProgress(*this);
}

void StartProgress(ProgressLine& line) {
    line.IsTerminal = ErrorOutputIsTerminal();
    line.Started = std::chrono::steady_clock::now();
    StartStage(line);
}

void StartStage(ProgressLine& line) {
    line.Next = line.Started + TimeBeforeProgress;
}

void ShowProgress(ProgressLine& line, std::string_view text) {
    if (!line.IsTerminal) {
        return;
    }
    const auto now = std::chrono::steady_clock::now();
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(now - line.Started).count();
    Rewrite(line, std::string(text) + ", " + std::to_string(seconds) + " s");
}

void EraseProgress(ProgressLine& line) {
    if (line.Columns != 0) {
        Rewrite(line, {});
    }
}
