#include "convert/RunEnding.h"

#include "support/base/Text.h"

#include <QStringList>

namespace runending {

namespace {

using enum RunEnding::Kind;

constexpr const char* kNoSpace = "No space left on device";

// Messages of the tool in a run that still exits with status 0.
const QStringList kUnwritten = {"Error writing trailer of", "Error closing file"};
const QStringList kUnread = {"File ended prematurely", ": partial file", "corrupt input packet",
                             "Input/output error"};
const QStringList kUndecoded = {"Invalid UTF-8 in decoded subtitles text", "Unable to recode subtitle event"};

RunEnding::Kind kindOf(const Evidence& evidence) {
    if (evidence.exit.reason == ToolExit::Reason::NotStarted) return ToolMissing;
    if (evidence.said.contains(kNoSpace)) return NoSpace;
    if (!evidence.exit.succeeded()) return ToolFailed;
    if (evidence.outputBytes == 0 || text::containsAny(evidence.said, kUnwritten)) return Incomplete;
    const bool isShort = !evidence.runtimeSeconds || evidence.convertedSeconds < *evidence.runtimeSeconds;
    if (isShort && text::containsAny(evidence.said, kUnread)) return SourceTruncated;
    if (text::containsAny(evidence.said, kUndecoded)) return SubtitlesLost;
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

bool isDecisive(QStringView line) {
    return line.contains(QLatin1StringView(kNoSpace)) || text::containsAny(line, kUnwritten) ||
           text::containsAny(line, kUnread) || text::containsAny(line, kUndecoded);
}

QLatin1StringView marker(RunEnding::Kind kind) {
    switch (kind) {
        case SourceGone:
            return QLatin1StringView("USER_REMOVED");
        case VolumeTooSmall:
            return QLatin1StringView("FREE_SPACE");
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
        case Interrupted:
            break;
    }
    return {};
}

}  // namespace runending
