#include "convert/proof/ToolWords.h"

#include "support/base/Text.h"

#include <QStringList>

namespace toolwords {

namespace {

// The messages of the C library with which reads of damaged, removed and network disks fail.
const QStringList kReadErrors = {"Stale file handle",
                                 "Connection timed out",
                                 "Operation timed out",
                                 "Input/output error",
                                 "Transport endpoint is",
                                 "Read error",
                                 "Host is down",
                                 "No route to host",
                                 "Remote I/O error",
                                 "Bad message",
                                 "Structure needs cleaning",
                                 "Software caused connection abort",
                                 "Connection reset",
                                 "Network is",
                                 "Link has been severed",
                                 ": No such device",
                                 ": No medium found",
                                 ": Permission denied",
                                 ": Cannot allocate",
                                 "Required key not"};

const QStringList kDamage = {"File ended prematurely",
                             ": partial file",
                             "corrupt input packet",
                             "Packet corrupt",
                             "corrupt decoded frame",
                             "PES packet size mismatch",
                             "Packet mismatch",
                             "timestamp discontinuity",
                             "Invalid data found when processing",
                             "Truncating packet of size",
                             "Error during demuxing",
                             "CRC mismatch"};

}  // namespace

bool reportReadErrors(const QString& toolOutput) {
    return text::containsAny(toolOutput, kReadErrors);
}

bool reportDecodingErrors(const QString& toolOutput, int stream) {
    // Newer tools do not name the stream.
    return toolOutput.contains(QStringLiteral("Error while decoding stream #0:%1:").arg(stream)) ||
           toolOutput.contains(QLatin1StringView("Error submitting packet to decoder"));
}

/// What ends the reading of the source is reported with its path.
bool reportDamage(const QString& toolOutput, const QString& source) {
    return text::containsAny(toolOutput, kDamage) || toolOutput.contains(source + QLatin1StringView(": "));
}

}  // namespace toolwords
