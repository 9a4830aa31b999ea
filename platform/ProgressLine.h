// A line on standard error that says what a long run is doing, and for how long it has been running. It
// is rewritten in place and erased before other output. Nothing is shown unless standard error is a
// terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <string_view>

// Costs nothing but a few comparisons where there is no terminal.
struct ProgressLine {
    bool IsTerminal = false; // false until StartProgress
    uint32_t Columns = 0;    // on the terminal now
    uint64_t Work = 0;       // since the clock was last read
    std::chrono::steady_clock::time_point Started;
    std::chrono::steady_clock::time_point Next; // when the line may be rewritten

    ProgressLine() = default;
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    // Erases the line.
    ~ProgressLine();
};

constexpr std::chrono::milliseconds TimeBeforeProgress{1000};
constexpr std::chrono::milliseconds TimeBetweenProgress{200};

// Starts the clock: the line is due when TimeBeforeProgress has passed, and then at intervals.
void StartProgress(ProgressLine& line);

// Makes the line due at once if that time has passed, for the first text of a new stage of the run.
void StartStage(ProgressLine& line);

// Whether the line should be shown now. The clock is read only after enough work, in steps of the
// caller's choice: a thousand of them should take much less than a second.
inline bool IsProgressDue(ProgressLine& line, uint64_t steps) {
    constexpr uint64_t stepsPerReading = 1024;
    if (!line.IsTerminal || (line.Work += steps) < stepsPerReading) {
        return false;
    }
    line.Work = 0;
    const auto now = std::chrono::steady_clock::now();
    if (now < line.Next) {
        return false;
    }
    line.Next = now + TimeBetweenProgress;
    return true;
}

// Shows a text in ASCII, at most 50 characters, followed by the seconds since StartProgress. The cursor
// stays at the beginning of the line, so that other output replaces it.
void ShowProgress(ProgressLine& line, std::string_view text);

void EraseProgress(ProgressLine& line);
