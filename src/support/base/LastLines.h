#pragma once

#include <QString>

/// The log's newest lines in memory that is there from the beginning, so that a crash handler can still write
/// them when the heap and the locks are not to be relied upon.
namespace lastlines {

/// Keeps `message` as one line with the time and its level; of more than 1000 bytes the beginning, of more
/// than ten lines the newest. Callable from any thread.
void add(int level, const QString& message);

/// Writes the lines to an open file descriptor, the oldest first. For signal handlers: takes no lock and no
/// memory; a line that is being added at this moment may be missing.
void write(int file);

}  // namespace lastlines
