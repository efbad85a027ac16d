#include "convert/plan/PlanText.h"

#include "convert/plan/StreamText.h"
#include "support/base/Texts.h"

#include <QHash>
#include <QMap>

#include <utility>

namespace plantext {

namespace {

using Kind = PlannedTrack::Kind;
using Action = PlannedTrack::Action;

constexpr qsizetype kLongestTitle = 60;  // characters
constexpr qsizetype kMostNames = 6;

QString separator() {
    return Texts::tr(", ", "between the parts of a list");
}

/// The title in one line of limited length.
QString shortTitle(const QString& title) {
    const QString line = title.left(4 * kLongestTitle).simplified();
    return line.size() <= kLongestTitle ? line : line.left(kLongestTitle - 1).trimmed() + u'…';
}

/// The words that are not empty.
QString joined(const QStringList& words, const QString& between = QStringLiteral(" ")) {
    QStringList result = words;
    result.removeAll(QString());
    return result.join(between);
}

/// The subtitle file, or an attachment of which the name is known.
bool hasOwnName(const PlannedTrack& track) {
    return !track.stream || (track.kind == Kind::Attachment && !track.title.isEmpty());
}

/// "AC3 5.1"
QString codecAndFormat(const PlannedTrack& track) {
    return joined({streamtext::codecName(track.codec), track.format});
}

/// The audio track that becomes the main one; null: none.
const PlannedTrack* mainAudio(const ConversionPlan& plan) {
    for (const PlannedTrack& track : plan.tracks) {
        if (track.audio && !track.audio->isSecond) return &track;
    }
    return nullptr;
}

/// A track by what sets it apart from the one that is carried: its title, its language.
QString shortName(const PlannedTrack& track, const QString& carriedLanguage) {
    const QString language = streamtext::languageName(track.language);
    const QString title = shortTitle(track.title);
    if (language.isEmpty() || language == carriedLanguage) return title.isEmpty() ? name(track) : title;
    return title.isEmpty() || title.contains(language, Qt::CaseInsensitive)
               ? language
               : Texts::tr("%1 (%2)").arg(language, title);
}

QString counted(LeftOutReason reason, int count) {
    switch (reason) {
        case LeftOutReason::PictureSubtitles:
            return Texts::tr("%n picture subtitle(s)", nullptr, count);
        case LeftOutReason::StyledSubtitles:
            return Texts::tr("%n styled subtitle(s)", nullptr, count);
        case LeftOutReason::OtherSubtitles:
        case LeftOutReason::SwitchedOff:
        case LeftOutReason::NoSound:
        case LeftOutReason::Remedy:
            return Texts::tr("%n subtitle(s)", nullptr, count);
        case LeftOutReason::CoverPicture:
            return Texts::tr("%n cover picture(s)", nullptr, count);
        case LeftOutReason::FurtherVideo:
            return Texts::tr("%n further picture track(s)", nullptr, count);
        case LeftOutReason::Attachment:
            return Texts::tr("%n attachment(s)", nullptr, count);
        case LeftOutReason::Data:
            return Texts::tr("%n data track(s)", nullptr, count);
        case LeftOutReason::FurtherAudio:
            return Texts::tr("%n more audio track(s)", nullptr, count);
        case LeftOutReason::None:
            break;
    }
    return {};
}

/// Reasons of which the words are the same count as one.
LeftOutReason group(LeftOutReason reason) {
    using enum LeftOutReason;
    return reason == SwitchedOff || reason == NoSound || reason == Remedy ? OtherSubtitles : reason;
}

QString outcomeInShort(const PlannedTrack& track) {
    if (track.action == Action::Copied) return Texts::tr("%1, copied").arg(name(track));
    const QString to = track.audio ? streamtext::target(track.audio->method) : track.to;
    return Texts::tr("%1 becomes %2").arg(name(track), to);
}

QString carriedSubtitle(const PlannedTrack& track) {
    const QString language = streamtext::languageName(track.language);
    return track.stream && !language.isEmpty() ? language : name(track);
}

}  // namespace

QString leftOut(const ConversionPlan& plan) {
    const PlannedTrack* main = mainAudio(plan);
    const QString carriedLanguage = main ? streamtext::languageName(main->language) : QString();
    QStringList words;
    int furtherAudio = 0;
    QMap<LeftOutReason, int> counts;
    for (const PlannedTrack& track : plan.tracks) {
        if (track.action != Action::LeftOut) continue;
        if (!track.stream) {
            words.prepend(name(track));
        } else if (track.leftOutReason == LeftOutReason::FurtherAudio && words.size() < kMostNames) {
            words.append(shortName(track, carriedLanguage));
        } else if (track.leftOutReason == LeftOutReason::FurtherAudio) {
            ++furtherAudio;
        } else {
            ++counts[group(track.leftOutReason)];
        }
    }
    if (furtherAudio > 0) words.append(counted(LeftOutReason::FurtherAudio, furtherAudio));
    using enum LeftOutReason;
    for (const LeftOutReason reason :
         {PictureSubtitles, StyledSubtitles, OtherSubtitles, FurtherVideo, CoverPicture, Attachment, Data}) {
        if (counts.contains(reason)) words.append(counted(reason, counts[reason]));
    }
    return words.join(separator());
}

QString sentence(const ConversionPlan& plan) {
    QStringList pictures;
    QStringList sounds;
    QStringList subtitles;
    for (const PlannedTrack* track : plan.outputs()) {
        if (track->kind == Kind::Video) pictures.append(outcomeInShort(*track));
        if (track->kind == Kind::Audio) sounds.append(outcomeInShort(*track));
        if (track->kind == Kind::Subtitle) subtitles.append(carriedSubtitle(*track));
    }
    const QString between = Texts::tr("; ", "between tracks of one kind");
    QStringList parts = {
        Texts::tr("Picture: %1").arg(pictures.join(between)),
        Texts::tr("Sound: %1").arg(sounds.isEmpty() ? Texts::tr("none") : sounds.join(between))};
    if (!subtitles.isEmpty()) parts += Texts::tr("Subtitles: %1").arg(subtitles.join(separator()));
    if (const QString out = leftOut(plan); !out.isEmpty()) parts += Texts::tr("Left out: %1").arg(out);
    return parts.join(Texts::tr(". ", "between sentences"));
}

QString summary(const ConversionPlan& plan) {
    QStringList parts;
    int subtitles = 0;
    bool hasSound = false;
    for (const PlannedTrack* track : plan.outputs()) {
        hasSound = hasSound || track->kind == Kind::Audio;
        if (track->kind == Kind::Subtitle) {
            ++subtitles;
        } else if (track->kind == Kind::Video) {
            parts += Texts::tr("%1 copied").arg(streamtext::codecName(track->codec));
        } else if (track->action == Action::Copied) {
            parts += Texts::tr("%1 copied").arg(codecAndFormat(*track));
        } else {
            parts +=
                Texts::tr("%1 to %2").arg(codecAndFormat(*track), streamtext::target(track->audio->method));
        }
    }
    if (!hasSound) parts += Texts::tr("no sound");
    if (subtitles > 0) parts += Texts::tr("%n subtitle(s)", nullptr, subtitles);
    return parts.join(separator());
}

QString contents(const ConversionPlan& plan) {
    QStringList parts;
    int subtitles = 0;
    for (const PlannedTrack* track : plan.outputs()) {
        if (track->kind == Kind::Subtitle) {
            ++subtitles;
        } else if (track->kind == Kind::Video) {
            parts += codecAndFormat(*track);
        } else if (track->action == Action::Copied) {
            parts += name(*track);
        } else {
            parts +=
                joined({streamtext::languageName(track->language), streamtext::target(track->audio->method)});
        }
    }
    if (subtitles > 0) parts += Texts::tr("%n subtitle(s)", nullptr, subtitles);
    return parts.join(separator());
}

QStringList lines(const ConversionPlan& plan) {
    QStringList result;
    for (const PlannedTrack& track : plan.tracks)
        result += line(track);
    if (plan.carriesChapters)
        result += Texts::tr("Chapters: %1, copied").arg(QString::number(plan.chapterCount));
    if (!plan.title.isEmpty()) result += Texts::tr("Title: %1, copied").arg(shortTitle(plan.title));
    return result;
}

QString line(const PlannedTrack& track) {
    QString words = name(track);
    if (const QString title = shortTitle(track.title); !hasOwnName(track) && !title.isEmpty())
        words = Texts::tr("%1 “%2”").arg(words, title);
    if (track.action == Action::Converted) {
        words = Texts::tr("%1 %2", "a track and what it becomes").arg(words, outcome(track));
    } else {
        words = joined({words, outcome(track)}, separator());
    }
    if (!track.reason.isEmpty()) words = Texts::tr("%1 (%2)").arg(words, track.reason);
    return Texts::tr("%1: %2").arg(kind(track), words);
}

QString kind(const PlannedTrack& track) {
    switch (track.kind) {
        case Kind::Video:
            return track.leftOutReason == LeftOutReason::CoverPicture ? Texts::tr("Cover")
                                                                      : Texts::tr("Picture");
        case Kind::Audio:
            return Texts::tr("Sound");
        case Kind::Subtitle:
            return Texts::tr("Subtitles");
        case Kind::Attachment:
            return Texts::tr("Attachment");
        case Kind::Data:
            return Texts::tr("Data");
    }
    return {};
}

QString name(const PlannedTrack& track) {
    if (hasOwnName(track)) return shortTitle(track.title);
    return joined({streamtext::languageName(track.kind == Kind::Video ? QString() : track.language),
                   codecAndFormat(track)});
}

QString outcome(const PlannedTrack& track) {
    const bool isSecond = track.audio && track.audio->isSecond;
    switch (track.action) {
        case Action::Copied:
            return isSecond ? Texts::tr("copied as a second track") : Texts::tr("copied");
        case Action::Converted:
            return isSecond ? Texts::tr("becomes %1 as a second track").arg(track.to)
                            : Texts::tr("becomes %1").arg(track.to);
        case Action::LeftOut:
            break;
    }
    return Texts::tr("left out");
}

namespace {

QString codecOf(const AudioEntry& entry, const MovieStream* stream) {
    if (stream) return joined({streamtext::codecName(stream->codec), streamtext::format(*stream)});
    return joined({streamtext::codecName(entry.codec()), entry.isSurround() ? "5.1" : ""});
}

/// `withCodec`: also for a track with a title.
QString labelOf(const MKVFileInfo& info, const AudioEntry& entry, bool withCodec) {
    const MovieStream* stream = info.contents.stream(entry.stream());
    const QString language = streamtext::languageName(stream ? stream->language : entry.language());
    QString title = stream ? shortTitle(stream->title) : QString();
    if (title.isEmpty() && stream && stream->isCommentary()) title = Texts::tr("commentary");
    const bool titleHasLanguage = !language.isEmpty() && title.contains(language, Qt::CaseInsensitive);
    QStringList words = {titleHasLanguage ? QString() : language, title};
    if (title.isEmpty() || withCodec) words += codecOf(entry, stream);
    return joined(words, separator());
}

}  // namespace

QStringList audioLabels(const MKVFileInfo& info) {
    const auto& entries = info.audioTrackInformation;
    QStringList labels;
    for (const AudioEntry& entry : entries)
        labels.append(labelOf(info, entry, false));
    const auto uses = [&] {
        QHash<QString, int> counts;
        for (const QString& label : std::as_const(labels))
            ++counts[label];
        return counts;
    };
    const auto byTitle = uses();
    for (qsizetype i = 0; i < labels.size(); ++i) {
        if (byTitle[labels[i]] > 1) labels[i] = labelOf(info, entries[i], true);
    }
    const auto byCodec = uses();
    for (qsizetype i = 0; i < labels.size(); ++i) {
        if (byCodec[labels[i]] > 1)
            labels[i] = Texts::tr("%1 (track %2)").arg(labels[i], QString::number(i + 1));
    }
    return labels;
}

QString audioLabel(const MKVFileInfo& info, qsizetype index) {
    return audioLabels(info).value(index);
}

}  // namespace plantext
