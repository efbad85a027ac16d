#include "convert/RunEnding.h"

#include "support/base/Text.h"

#include <QRegularExpression>
#include <QStringList>

#include <cerrno>
#include <csignal>

namespace runending {

namespace {

using enum RunEnding::Kind;

const QStringList kNoSpace = {"No space left on device", "Disk quota exceeded"};

// Messages of the tool in a run that still exits with status 0.
const QStringList kUnwritten = {"Error writing trailer", "Error closing file"};
const QStringList kUnread = {"File ended prematurely", ": partial file", "corrupt input packet",
                             "Input/output error"};
const QStringList kUndecoded = {"Invalid UTF-8 in decoded subtitles text", "Unable to recode subtitle event"};

// Of the output while it is written; they also name faults of the movie.
const QStringList kUnwritable = {"av_interleaved_write_frame()", "Error submitting a packet to the muxer",
                                 "Error muxing a packet"};

// The system's reasons for which it is the volume that fails, not the movie.
const QStringList kVolumeReasons = {
    "Input/output error",  "File too large",       "Read-only file system",
    "Stale file handle",   "No such device",       "Remote I/O error",
    "Operation timed out", "Connection timed out", "Host is down",
    "Bad file descriptor", "Permission denied",    "Transport endpoint is not connected"};

QString anyOf(const QStringList& words) {
    QStringList escaped;
    for (const QString& word : words)
        escaped.append(QRegularExpression::escape(word));
    return "(?:" + escaped.join(u'|') + ')';
}

bool reportsVolume(const QString& said) {
    // A path may follow the words.
    static const QRegularExpression kFailedWrite("(?:" + anyOf(kUnwritable) + '|' + anyOf(kUnwritten) +
                                                 ".{0,4096}?): " + anyOf(kVolumeReasons));
    return kFailedWrite.match(said).hasMatch();
}

/// The progress is a file of our own: its volume says nothing about the movie.
QString withoutProgressLog(QString said) {
    static const QRegularExpression kProgressLog("Error closing progress log" + QString("[^:]*: ") +
                                                 anyOf(kNoSpace + kVolumeReasons));
    return said.remove(kProgressLog);
}

bool exceededFileSize(const ToolExit& exit) {
    return exit.reason == ToolExit::Reason::Signalled && exit.status == SIGXFSZ;
}

RunEnding::Kind kindOf(const Evidence& evidence) {
    if (evidence.exit.reason == ToolExit::Reason::NotStarted) return ToolMissing;
    const QString said = withoutProgressLog(evidence.said);
    if (text::containsAny(said, kNoSpace)) return NoSpace;
    if (exceededFileSize(evidence.exit) || reportsVolume(said)) return Incomplete;
    if (!evidence.exit.succeeded()) return ToolFailed;
    if (evidence.outputBytes == 0 || text::containsAny(said, kUnwritten)) return Incomplete;
    const bool isShort = !evidence.runtimeSeconds || evidence.convertedSeconds < *evidence.runtimeSeconds;
    if (isShort && text::containsAny(said, kUnread)) return SourceTruncated;
    if (text::containsAny(said, kUndecoded)) return SubtitlesLost;
    return Succeeded;
}

}  // namespace

RunEnding decide(const Evidence& evidence) {
    RunEnding ending;
    ending.kind = kindOf(evidence);
    ending.exit = evidence.exit;
    ending.convertedSeconds = evidence.convertedSeconds;
    if (ending.kind == SourceTruncated && evidence.keepsDamaged) {
        ending.kind = Succeeded;
        ending.isDamaged = true;
    }
    return ending;
}

RunEnding unwritten(int error) {
    return RunEnding::of(error == ENOSPC || error == EDQUOT ? NoSpace : Incomplete);
}

bool isDecisive(QStringView line) {
    return text::containsAny(line, kNoSpace) || reportsVolume(line.toString()) ||
           text::containsAny(line, kUnwritten) || text::containsAny(line, kUnread) ||
           text::containsAny(line, kUndecoded);
}

QLatin1StringView marker(RunEnding::Kind kind) {
    switch (kind) {
        case SourceGone:
            return QLatin1StringView("USER_REMOVED");
        case VolumeTooSmall:
            return QLatin1StringView("FREE_SPACE");
        case PrivateDataUnwritable:
            return QLatin1StringView("PRIVATE_DATA");
        case ToolMissing:
            return QLatin1StringView("TOOL_MISSING");
        case Incomplete:
            return QLatin1StringView("OUTPUT_INCOMPLETE");
        case SourceTruncated:
            return QLatin1StringView("SOURCE_TRUNCATED");
        case SubtitlesLost:
            return QLatin1StringView("SUBTITLES_LOST");
        case MuchLost:
            return QLatin1StringView("MUCH_LOST");
        case Succeeded:
        case ToolFailed:
        case NoSpace:
        case Stalled:
        case NameTaken:
        case Interrupted:
            break;
    }
    return {};
}

}  // namespace runending
