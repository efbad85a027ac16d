#include "convert/plan/PlanLines.h"

#include "convert/plan/PlanText.h"
#include "convert/plan/StreamText.h"
#include "support/base/Texts.h"

#include <QMap>

namespace {

using Kind = PlannedTrack::Kind;
using Action = PlannedTrack::Action;

constexpr qsizetype kLongestTitle = 200;  // characters; more is cut off where it is shown

/// A title may contain line breaks.
QString inOneLine(const QString& title) {
    return title.left(kLongestTitle).simplified();
}

PlanLine none(const QString& kind) {
    return {.kind = kind, .name = {}, .outcome = Texts::tr("none"), .isUnchanged = false};
}

/// A line for the carried tracks of a kind: the name of the first one, and what becomes of all of them.
PlanLine lineOf(const QString& kind, const QList<const PlannedTrack*>& tracks) {
    if (tracks.isEmpty()) return none(kind);
    const PlannedTrack& first = *tracks.first();
    QStringList outcomes;
    bool isUnchanged = true;
    for (const PlannedTrack* track : tracks) {
        const QString outcome = plantext::outcome(*track);
        outcomes += track->stream == first.stream
                        ? outcome
                        : Texts::tr("%1 %2", "a track and what it becomes").arg(trackName(*track), outcome);
        isUnchanged = isUnchanged && track->action == Action::Copied;
    }
    const QString between = Texts::tr("; ", "between tracks of one kind");
    return {.kind = kind,
            .name = trackName(first),
            .outcome = outcomes.join(between),
            .isUnchanged = isUnchanged};
}

/// The languages of the movie's own subtitles, each once, with how often.
QString ownSubtitles(const QList<const PlannedTrack*>& tracks) {
    QStringList names;
    QMap<QString, int> counts;
    for (const PlannedTrack* track : tracks) {
        if (!track->stream) continue;
        const QString language = streamtext::languageName(track->language);
        const QString name = language.isEmpty() ? trackName(*track) : language;
        if (counts[name]++ == 0) names.append(name);
    }
    for (QString& name : names) {
        if (counts[name] > 1) name = Texts::tr("%1 (%2)").arg(name, QString::number(counts[name]));
    }
    return names.join(Texts::tr(", ", "between the parts of a list"));
}

}  // namespace

QString trackName(const PlannedTrack& track) {
    const QString name = plantext::name(track);
    const QString title = inOneLine(track.title);
    if (!track.stream || title.isEmpty() || title == name) return name;
    return name.isEmpty() ? title : Texts::tr("%1 “%2”").arg(name, title);
}

PlanLines planLines(const ConversionPlan& plan) {
    const auto ofKind = [outputs = plan.outputs()](Kind kind) {
        QList<const PlannedTrack*> tracks = outputs;
        tracks.removeIf([kind](const PlannedTrack* track) { return track->kind != kind; });
        return tracks;
    };
    PlanLines lines;
    lines.picture = lineOf(Texts::tr("Picture"), ofKind(Kind::Video));
    lines.sound = lineOf(Texts::tr("Sound"), ofKind(Kind::Audio));
    const auto subtitles = ofKind(Kind::Subtitle);
    lines.subtitles = none(Texts::tr("Subtitles"));
    if (!subtitles.isEmpty()) {
        lines.subtitles.name = ownSubtitles(subtitles);
        lines.subtitles.outcome = Texts::tr("carried");
        lines.subtitles.isUnchanged = true;
    }
    for (const PlannedTrack* track : subtitles) {
        if (!track->stream) lines.subtitleFile = plantext::name(*track);
    }
    lines.leftOut = {
        .kind = Texts::tr("Left out"), .name = plantext::leftOut(plan), .outcome = {}, .isUnchanged = false};
    if (lines.leftOut.name.isEmpty()) {
        lines.leftOut.outcome = Texts::tr("nothing");
        lines.leftOut.isUnchanged = true;
    }
    return lines;
}

QList<LeftOutTrack> leftOutTracks(const ConversionPlan& plan) {
    QList<LeftOutTrack> result;
    for (const PlannedTrack& track : plan.tracks) {
        if (track.action != Action::LeftOut) continue;
        const QString name = trackName(track);
        const QString kind = plantext::kind(track);
        result.append({name.isEmpty() ? kind : Texts::tr("%1: %2").arg(kind, name), track.reason});
    }
    return result;
}
