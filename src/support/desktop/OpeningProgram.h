#pragma once

#include <optional>

class QUrl;

/// Runs xdg-open, which opens addresses with the user's programs for them. Main thread only.
namespace openingprogram {

/// Starts it for the address and returns at once. Its output is discarded. Returns false if it is missing.
bool start(const QUrl& url);

/// Like start(), but waits at most two seconds, in the event loop, for its exit status. False: no program
/// opened the address. True: one did, or xdg-open still runs, which it may do for the whole life of the
/// program that it started. Null: xdg-open is missing.
std::optional<bool> startAndWait(const QUrl& url);

}  // namespace openingprogram
