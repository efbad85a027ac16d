#pragma once

#include "watch/completion/FileLook.h"

#include <chrono>

/// Decides when a file counts as complete. Pure functions, callable from any thread.
namespace completion {

/// The last event of a file in the watched folder. Unknown: none, because the file existed before the watch
/// or events were lost. SeenWhole: it was closed after writing, or moved here.
enum class Known { Created, Modified, SeenWhole, Unknown };

struct Times {
    std::chrono::milliseconds still{1000};       ///< If it is known that nobody writes.
    std::chrono::milliseconds longStill{10000};  ///< If that is not known.
    /// Intervals between checks of a file that is being written, from the first to the longest.
    std::chrono::milliseconds firstInterval{1000};
    std::chrono::milliseconds longestInterval{10000};
};

struct Rule {
    /// Stillness: complete after it was unchanged for `still`. Closing: a process has it open for writing,
    /// check again. Event: wait for the next event.
    enum class WaitsFor { Stillness, Closing, Event };
    WaitsFor waitsFor = WaitsFor::Closing;
    std::chrono::milliseconds still{0};
    bool declaredSizeCounts = false;
};

/// The rule for a check that found a file.
Rule ruleFor(const FileLook& look, Known known, const Times& times);

/// How long the file has been unchanged according to its own times; `now` is since 1970. 0 if they cannot be
/// compared with our clock.
std::chrono::nanoseconds stoodStillFor(const FileLook& look, Known known, std::chrono::nanoseconds now);

}  // namespace completion
