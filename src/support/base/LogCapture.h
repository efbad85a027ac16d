#pragma once

#include <QString>

/// The optional copy of the log in a file. Not guarded against concurrent writers: lines may interleave.
namespace logcapture {

/// Cuts the file, if it has more bytes, to its newest `maximumSize` (0: never). False: the disk did not take
/// it.
bool shrink(const QString& path, quint64 maximumSize);
/// Writes messages whose level is at most `minimumLevel` into the file from now on. False, and no capture at
/// all, when it cannot be opened.
bool open(const QString& path, int minimumLevel);

/// Appends one line when capture is on for this level. A line that cannot be written is lost.
void write(int level, const QString& message);

}  // namespace logcapture
