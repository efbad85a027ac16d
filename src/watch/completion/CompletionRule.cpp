#include "watch/completion/CompletionRule.h"

#include <algorithm>

namespace completion {

using namespace std::chrono_literals;
using writercheck::Sight;
using writercheck::Writers;
using WaitsFor = Rule::WaitsFor;

Rule ruleFor(const FileLook& look, Known known, const Times& times) {
    // Events of a symbolic link do not include writes to its target.
    const bool eventsCoverWrites = look.sight == Sight::All && !look.isSymbolicLink;
    if (look.writers == Writers::Some && look.sight != Sight::None) return {WaitsFor::Closing};
    // A placeholder for a download. Filling it causes an event.
    if (look.shape.size == 0) return {eventsCoverWrites ? WaitsFor::Event : WaitsFor::Closing};

    const Rule nobodyWrites = {WaitsFor::Stillness, times.still};
    const Rule notKnown = {WaitsFor::Stillness, times.longStill, true};
    if (look.sight != Sight::All) return notKnown;
    if (look.writers == Writers::None) return nobodyWrites;
    if (!eventsCoverWrites || known == Known::Unknown) return notKnown;
    if (known == Known::SeenWhole) return nobodyWrites;
    // A hard link is created without opening it, so no close event follows.
    if (known == Known::Created && look.hasOtherNames) return notKnown;
    return {WaitsFor::Event};  // It was opened for writing; a close event follows, however late.
}

std::chrono::nanoseconds stoodStillFor(const FileLook& look, Known known, std::chrono::nanoseconds now) {
    if (look.sight != Sight::All) return 0ns;
    // Programs can set the modification time back, but not the change time. A file that was seen whole needs
    // no such caution, and a move updates the change time.
    const auto last =
        known == Known::SeenWhole ? look.shape.modified : std::max(look.shape.modified, look.changed);
    const auto rounding = last % 1s == 0ns ? 2s : 0s;  // Some file systems round times to one or two seconds.
    return std::max<std::chrono::nanoseconds>(0ns, now - last - rounding);
}

}  // namespace completion
