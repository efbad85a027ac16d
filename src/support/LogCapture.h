#pragma once

#include <QString>
#include <QUrl>

/// The optional copy of the log in a file. Not guarded against concurrent writers: lines may interleave.
namespace logcapture {

/// Opens `file`, first cut to its newest `maximumSize` bytes when it has more (0: never cut), and writes
/// messages whose level is at most `minimumLevel` from now on.
void enable(const QUrl& file, quint64 maximumSize, int minimumLevel);

/// Appends one line when capture is on for this level. A line that cannot be written is lost; one that is not
/// valid text is reported to the system log.
void write(int level, const QString& message);

}  // namespace logcapture
