#pragma once

#include <QString>

/// The optional copy of the log in a file. Callable from any thread, but without a lock: lines of several
/// threads may interleave.
namespace logcapture {

/// Cuts the file to its newest `maximumSize` bytes; 0: never. Returns false if writing failed.
bool shrink(const QString& path, quint64 maximumSize);
/// Starts capturing messages whose level is at most `minimumLevel`. Returns false, and captures nothing, if
/// the file cannot be opened.
bool open(const QString& path, int minimumLevel);

/// Appends one line if capture is on for this level. Write errors are ignored.
void write(int level, const QString& message);

}  // namespace logcapture
