#include "convert/proof/ToolWords.h"

#include "support/base/Text.h"

#include <QStringList>

namespace toolwords {

namespace {

// The messages of the C library for ESTALE, ETIMEDOUT, ENOTCONN and EIO; reads of network disks fail with
// them.
const QStringList kReadErrors = {"Stale file handle",  "Connection timed out",      "Operation timed out",
                                 "Input/output error", "Transport endpoint is not", "Read error",
                                 "Host is down",       "No route to host",          "Remote I/O error"};

const QStringList kDamage = {
    "File ended prematurely",   ": partial file",          "corrupt input packet",
    "Packet corrupt",           "corrupt decoded frame",   "PES packet size mismatch",
    "Packet mismatch",          "timestamp discontinuity", "Invalid data found when processing",
    "Truncating packet of size"};

}  // namespace

bool reportReadErrors(const QString& toolOutput) {
    return text::containsAny(toolOutput, kReadErrors);
}

bool reportDecodingErrors(const QString& toolOutput, int stream) {
    // Newer tools do not name the stream.
    return toolOutput.contains(QStringLiteral("Error while decoding stream #0:%1:").arg(stream)) ||
           toolOutput.contains(QLatin1StringView("Error submitting packet to decoder"));
}

bool reportDamage(const QString& toolOutput) {
    return text::containsAny(toolOutput, kDamage);
}

}  // namespace toolwords
