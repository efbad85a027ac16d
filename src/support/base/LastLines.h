#pragma once

#include <QString>

/// The newest log lines in static memory, so that a crash handler can write them without using the heap or
/// locks.
namespace lastlines {

/// Stores `message` as one line with the time and its level, cut to 1000 bytes. Keeps the newest ten lines.
/// Callable from any thread.
void add(int level, const QString& message);

/// Writes the lines to a file descriptor, the oldest first. Async-signal-safe: takes no lock and allocates
/// nothing; a line that is just being added may be missing.
void write(int file);

}  // namespace lastlines
