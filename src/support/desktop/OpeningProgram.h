#pragma once

#include <optional>

class QUrl;

/// The program that opens addresses with the user's programs for them, xdg-open. Main thread only.
namespace openingprogram {

/// Has it open the address, and returns at once. Its chatter does not come between the application's own
/// lines. False: it is missing.
bool start(const QUrl& url);

/// The same, and waits, two seconds at the most, in the event loop, for what it says of it. False: no program
/// took the address. True: one took it, or it still runs, as it does for the whole life of a program that is
/// not started yet. Nothing: it is missing.
std::optional<bool> startAndSee(const QUrl& url);

}  // namespace openingprogram
