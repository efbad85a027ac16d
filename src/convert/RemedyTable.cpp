#include "convert/RemedyTable.h"

#include "support/base/Text.h"
#include "support/base/Texts.h"

namespace remedies {

namespace {

struct Row {
    const char* name;
    bool (*fits)(const Seen& seen);
    bool Remedies::*remedy;
    const char* note;
};

// Each row is a loss that the usual arguments cause with some versions of the tool.
const Row kRows[] = {
    // One of two lines that start together is never written; nor is the last one of a track, by tools without
    // our patch.
    {"durations", [](const Seen& seen) { return seen.ending.signs.embeddedLinesMissing; },
     &Remedies::keepsSubtitleDurations,
     QT_TRANSLATE_NOOP(
         "Ravelin",
         "Converted a second time with the durations of the subtitles left as they are, because lines were lost.")},
    // Ticks of a microsecond in 31 bits: a pause of more than 2,147 s overflows.
    {"subtitle times", [](const Seen& seen) { return seen.ending.signs.linesDisplaced; },
     &Remedies::fineSubtitleTimes,
     QT_TRANSLATE_NOOP(
         "Ravelin",
         "Converted a second time with another unit for the times of the subtitles, because lines were displaced.")},
    // The extension makes the tool choose a container that takes fewer codecs.
    {"format",
     [](const Seen& seen) {
         return seen.ending.kind == RunEnding::Kind::ToolFailed &&
                seen.destination.endsWith(QLatin1StringView(".m4v"), Qt::CaseInsensitive) &&
                seen.toolOutput.contains(QLatin1StringView("codec not currently supported in container"));
     },
     &Remedies::namesFormat,
     QT_TRANSLATE_NOOP("Ravelin",
                       "Converted a second time as plain MP4, because the codecs do not fit into M4V.")},
    {"queue",
     [](const Seen& seen) {
         return seen.ending.kind == RunEnding::Kind::ToolFailed &&
                seen.toolOutput.contains(QLatin1StringView("Too many packets buffered for output stream"));
     },
     &Remedies::longMuxingQueue,
     QT_TRANSLATE_NOOP("Ravelin",
                       "Converted a second time with a longer queue, because a track starts late.")},
};

}  // namespace

std::optional<Next> next(const Remedies& applied, const Seen& seen) {
    Next next{applied, {}, {}};
    for (const Row& row : kRows) {
        if (applied.*row.remedy || !row.fits(seen)) continue;
        next.remedies.*row.remedy = true;
        next.notes.append(text::localized(row.note));
        next.name += (next.name.isEmpty() ? "" : ", ") + QString(row.name);
    }
    return next.notes.isEmpty() ? std::nullopt : std::optional(next);
}

}  // namespace remedies
