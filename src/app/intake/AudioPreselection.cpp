#include "app/intake/AudioPreselection.h"

#include "settings/Settings.h"
#include "support/base/Texts.h"
#include "support/reports/ProblemReport.h"

#include <limits>

namespace audiopreselection {

namespace {

QList<qsizetype> candidatesIn(const QList<AudioEntry>& tracks, const QStringList& languages) {
    constexpr qsizetype kUnlisted = std::numeric_limits<qsizetype>::max();
    QList<qsizetype> candidates;
    qsizetype best = kUnlisted;
    for (qsizetype track = 0; track < tracks.size(); ++track) {
        const qsizetype found = languages.indexOf(tracks[track].language());
        const qsizetype position = found < 0 ? kUnlisted : found;
        if (position < best) {
            best = position;
            candidates.clear();
        }
        if (position == best) candidates.append(track);
    }
    return candidates;
}

}  // namespace

QStringList languages(const QStringList& preferredLanguages) {
    const QString chosen = settings::DefaultAudio.word();
    return chosen.isEmpty() ? preferredLanguages : QStringList(chosen);
}

std::optional<qsizetype> bestTrack(const MKVFileInfo& info, const QStringList& languages) {
    const auto& tracks = info.audioTrackInformation;
    const QList<qsizetype> candidates = candidatesIn(tracks, languages);
    if (candidates.isEmpty()) return std::nullopt;
    for (const char* codec : {"aac", "ac3"}) {
        for (const qsizetype track : candidates) {
            if (tracks[track].codecWord().size() <= 2) {
                alert_feedback_nonfatal(
                    Texts::tr(
                        "Warning: this file contains some unusual audio-stream information. You can continue but please send us the detail-report."),
                    info.description());
            } else if (tracks[track].codec() == codec) {
                return track;
            }
        }
    }
    return candidates.first();
}

}  // namespace audiopreselection
