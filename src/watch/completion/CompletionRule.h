#pragma once

#include "watch/completion/FileLook.h"

#include <chrono>

/// When a file counts as complete: whom or what it still waits for.
namespace completion {

/// What the events of the watched folder told last of a name. Unknown: nothing, as of a file that was there
/// before the watch, or after events were lost. SeenWhole: it was closed after writing, or moved in.
enum class Known { Created, Modified, SeenWhole, Unknown };

struct Times {
    std::chrono::milliseconds still{1000};       ///< Where it is known that nobody writes.
    std::chrono::milliseconds longStill{10000};  ///< Where it cannot be known.
    /// Between two looks at a file that is being written: growing from the first to the longest.
    std::chrono::milliseconds firstInterval{1000};
    std::chrono::milliseconds longestInterval{10000};
};

struct Rule {
    /// Stillness: complete when it stood still for `still`. Closing: somebody writes, look again. Event:
    /// only an event can tell.
    enum class WaitsFor { Stillness, Closing, Event };
    WaitsFor waitsFor = WaitsFor::Closing;
    std::chrono::milliseconds still{0};
    bool declaredSizeCounts = false;
};

/// The rule for a look that found a file.
Rule ruleFor(const FileLook& look, Known known, const Times& times);

/// For how long the file stood still by its own times, `now` being since 1970; 0 where they cannot be
/// compared with our clock.
std::chrono::nanoseconds stoodStillFor(const FileLook& look, Known known, std::chrono::nanoseconds now);

}  // namespace completion
