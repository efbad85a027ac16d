#include "convert/ConversionPlan.h"

#include "convert/AudioHandling.h"
#include "convert/StreamText.h"
#include "settings/Keys.h"
#include "support/base/Text.h"
#include "support/base/Texts.h"

#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <array>
#include <utility>

namespace {

using Kind = PlannedTrack::Kind;
using Action = PlannedTrack::Action;

constexpr int kHighestSampleRate = 48000;  // Hz; the highest rate that players support

/// Why subtitles of a codec are not carried; those that are, are listed by the probe.
LeftOutReason reasonOfSubtitles(const QString& codec) {
    using enum LeftOutReason;
    static constexpr std::array<std::pair<QLatin1StringView, LeftOutReason>, 5> kReasons = {
        {{QLatin1StringView("hdmv_pgs_subtitle"), PictureSubtitles},
         {QLatin1StringView("dvd_subtitle"), PictureSubtitles},
         {QLatin1StringView("dvb_subtitle"), PictureSubtitles},
         {QLatin1StringView("xsub"), PictureSubtitles},
         {QLatin1StringView("ass"), StyledSubtitles}}};
    for (const auto& [known, reason] : kReasons) {
        if (codec == known) return reason;
    }
    return OtherSubtitles;
}

QString words(LeftOutReason reason) {
    switch (reason) {
        case LeftOutReason::None:
            return {};
        case LeftOutReason::CoverPicture:
            return Texts::tr("cover pictures are not carried");
        case LeftOutReason::FurtherVideo:
            return Texts::tr("only one picture track is carried");
        case LeftOutReason::FurtherAudio:
            return Texts::tr("only one audio track is carried");
        case LeftOutReason::PictureSubtitles:
            return Texts::tr("picture subtitles do not fit into MP4");
        case LeftOutReason::StyledSubtitles:
            return Texts::tr("styled subtitles (ASS) would become text full of style codes");
        case LeftOutReason::OtherSubtitles:
            return Texts::tr("subtitles of this format are not converted");
        case LeftOutReason::SwitchedOff:
            return Texts::tr("switched off in Preferences");
        case LeftOutReason::NoSound:
            return Texts::tr("a movie without sound carries no subtitles");
        case LeftOutReason::Remedy:
            return Texts::tr("left out of this conversion");
        case LeftOutReason::Attachment:
            return Texts::tr("attachments are not carried");
        case LeftOutReason::Data:
            return Texts::tr("data is not carried");
    }
    return {};
}

/// The tool's codec of a subtitle file.
QString subtitleFileCodec(const QString& path) {
    static constexpr std::array<std::pair<QLatin1StringView, QLatin1StringView>, 5> kCodecs = {
        {{QLatin1StringView("srt"), QLatin1StringView("subrip")},
         {QLatin1StringView("ass"), QLatin1StringView("ass")},
         {QLatin1StringView("ssa"), QLatin1StringView("ass")},
         {QLatin1StringView("smi"), QLatin1StringView("sami")},
         {QLatin1StringView("sub"), QLatin1StringView("microdvd")}}};
    const QString suffix = QFileInfo(path).suffix().toLower();
    for (const auto& [extension, codec] : kCodecs) {
        if (suffix == extension) return codec;
    }
    return suffix;
}

bool isCarriedSurround(const AudioEntry& entry) {
    return entry.text.contains("[5.1]");
}

/// The entry of the second surround track: the main track itself if it is surround, else the first AC3, else
/// the first DTS track in its language.
const AudioEntry* surroundTrackBeside(const AudioEntry& main, const QList<AudioEntry>& entries) {
    if (isCarriedSurround(main) && (main.text.contains("(ac3)") || main.text.contains("(dts)"))) return &main;
    for (const char* codec : {"(ac3)", "(dts)"}) {
        for (const AudioEntry& candidate : entries) {
            if (isCarriedSurround(candidate) && candidate.language() == main.language() &&
                candidate.codecWord() == codec)
                return &candidate;
        }
    }
    return nullptr;
}

class Planner {
public:
    Planner(const MKVFileInfo& info, const ConversionSettings& chosen, const Remedies& remedies)
        : m_info(info),
          m_chosen(chosen),
          m_remedies(remedies),
          m_textSubtitles(info.subtitleTrackIDs.cbegin(), info.subtitleTrackIDs.cend()) {}

    ConversionPlan plan(const AudioEntry* audio) {
        carryStreams(audio);
        leaveOut(audio != nullptr);
        // The subtitle file has no number and comes last; a stream that is carried twice, in the order of the
        // output.
        std::stable_sort(m_plan.tracks.begin(), m_plan.tracks.end(),
                         [](const PlannedTrack& a, const PlannedTrack& b) {
                             return a.stream && (!b.stream || *a.stream < *b.stream);
                         });
        setOptions();
        return std::move(m_plan);
    }

private:
    /// In the order of the output's streams.
    void carryStreams(const AudioEntry* audio) {
        carry(stream(m_info.videoTrackID, Kind::Video), Action::Copied);
        if (!audio) return;
        carryAudio(*audio, mainAudio(*audio));
        if (const auto* second = secondTrack(*audio)) carryAudio(*second, secondAudio(*second));
        if (m_info.subtitleFileURL && !m_remedies.withoutSubtitleFile)
            carry(subtitleFile(), Action::Converted, streamtext::subtitleTarget());
        if (embeddedSubtitles() != LeftOutReason::None) return;
        // Each stream comes in front of the one before it.
        for (auto id = m_info.subtitleTrackIDs.crbegin(); id != m_info.subtitleTrackIDs.crend(); ++id)
            carry(stream(*id, Kind::Subtitle), Action::Converted, streamtext::subtitleTarget());
    }

    void leaveOut(bool hasSound) {
        for (const MovieStream& each : m_info.contents.streams) {
            if (!m_carried.contains(each.index))
                leaveOut(stream(each.index, each.kind), reason(each, hasSound));
        }
        // What only the record has.
        for (const AudioEntry& entry : m_info.audioTrackInformation)
            leaveOutUnlisted(audioTrack(entry), LeftOutReason::FurtherAudio);
        for (const int id : m_info.subtitleTrackIDs)
            leaveOutUnlisted(stream(id, Kind::Subtitle), reasonOfTextSubtitles(hasSound));
        if (m_info.subtitleFileURL && (m_remedies.withoutSubtitleFile || !hasSound))
            leaveOut(subtitleFile(), hasSound ? LeftOutReason::Remedy : LeftOutReason::NoSound);
    }

    LeftOutReason reason(const MovieStream& each, bool hasSound) const {
        switch (each.kind) {
            case Kind::Video:
                return each.isCover ? LeftOutReason::CoverPicture : LeftOutReason::FurtherVideo;
            case Kind::Audio:
                return LeftOutReason::FurtherAudio;
            case Kind::Subtitle:
                return m_textSubtitles.contains(each.index) ? reasonOfTextSubtitles(hasSound)
                                                            : reasonOfSubtitles(each.codec);
            case Kind::Attachment:
                return LeftOutReason::Attachment;
            case Kind::Data:
                return LeftOutReason::Data;
        }
        return LeftOutReason::Data;
    }

    LeftOutReason reasonOfTextSubtitles(bool hasSound) const {
        return hasSound ? embeddedSubtitles() : LeftOutReason::NoSound;
    }

    /// Why the movie's own text subtitles are left out.
    LeftOutReason embeddedSubtitles() const {
        if (m_chosen.value(settings::DisableBuiltinSubtitles)) return LeftOutReason::SwitchedOff;
        return m_remedies.withoutEmbeddedSubtitles ? LeftOutReason::Remedy : LeftOutReason::None;
    }

    PlannedAudio mainAudio(const AudioEntry& entry) const {
        PlannedAudio audio;
        audio.method = calculateConversionMethod(entry.codec(), entry.isSurround(), m_chosen);
        if (audio.method == ConversionMethod::Copy) return audio;
        audio.rate = rateWord(audio.method, m_chosen);
        if (entry.sampleRate > kHighestSampleRate) audio.sampleRate = kHighestSampleRate;
        const float percent = m_chosen.value(settings::AudioVolume);
        if (percent < 99 || percent > 101) audio.volume = percent / 100;
        return audio;
    }

    const AudioEntry* secondTrack(const AudioEntry& main) const {
        if (m_chosen.value(settings::ConversionPreset) != ConversionStyle::Compatible ||
            !m_chosen.value(settings::IncludeSurroundTrack))
            return nullptr;
        return surroundTrackBeside(main, m_info.audioTrackInformation);
    }

    PlannedAudio secondAudio(const AudioEntry& entry) const {
        PlannedAudio audio;
        audio.isSecond = true;
        if (entry.codecWord() == u"(dts)" && m_chosen.value(settings::IncludeSurroundTrackTranscoded)) {
            audio.method = ConversionMethod::Ac3Surround;
            audio.rate = rateWord(audio.method, m_chosen);
        }
        return audio;
    }

    void carryAudio(const AudioEntry& entry, const PlannedAudio& audio) {
        PlannedTrack track = audioTrack(entry);
        track.audio = audio;
        const bool isCopied = audio.method == ConversionMethod::Copy;
        carry(std::move(track), isCopied ? Action::Copied : Action::Converted, streamtext::target(audio));
    }

    void carry(PlannedTrack track, Action action, const QString& to = {}) {
        track.action = action;
        track.to = to;
        track.output = m_outputs++;
        if (track.stream) m_carried.insert(*track.stream);
        m_plan.tracks.append(std::move(track));
    }

    void leaveOut(PlannedTrack track, LeftOutReason reason) {
        track.leftOutReason = reason;
        track.reason = words(reason);
        m_plan.tracks.append(std::move(track));
    }

    void leaveOutUnlisted(PlannedTrack track, LeftOutReason reason) {
        if (!m_carried.contains(*track.stream) && !m_info.contents.stream(*track.stream))
            leaveOut(std::move(track), reason);
    }

    PlannedTrack stream(int index, Kind kind) const {
        PlannedTrack track;
        track.stream = index;
        track.kind = kind;
        const MovieStream* known = m_info.contents.stream(index);
        if (known && known->kind == kind) {
            track.codec = known->codec;
            track.language = known->language;
            track.title = kind == Kind::Attachment ? known->fileName : known->title;
            track.format = streamtext::format(*known);
        } else if (kind == Kind::Video) {
            track.codec = m_info.videoTrackCodec;
        }
        return track;
    }

    PlannedTrack audioTrack(const AudioEntry& entry) const {
        PlannedTrack track = stream(entry.stream(), Kind::Audio);
        if (!track.codec.isEmpty()) return track;
        track.codec = entry.codec();
        track.language = entry.language();
        if (entry.isSurround()) track.format = "5.1";
        return track;
    }

    PlannedTrack subtitleFile() const {
        const QString path = m_info.subtitleFileURL->toLocalFile();
        PlannedTrack track;
        track.kind = Kind::Subtitle;
        track.codec = subtitleFileCodec(path);
        track.title = QFileInfo(path).fileName();
        return track;
    }

    void setOptions() {
        m_plan.chapterCount = m_info.contents.chapterCount;
        m_plan.carriesChapters = m_plan.chapterCount > 0;
        m_plan.title = m_info.contents.title;
        m_plan.subtitleEncoding =
            m_remedies.subtitleEncoding.value_or(m_chosen.word(settings::ExternalSubtitleEncoding));
        // The tool detects UTF-16 and converts it to UTF-8 before it applies this option.
        if (m_plan.subtitleEncoding == u"UTF-16") m_plan.subtitleEncoding = "UTF-8";
        m_plan.fixesSubtitleDurations =
            m_chosen.value(settings::FixSubtitleDuration) && !m_remedies.keepsSubtitleDurations;
        m_plan.tagsHevc = m_info.videoTrackCodec == u"hevc";
        m_plan.isStreamable = m_chosen.value(settings::ProduceStreamableFiles);
        m_plan.fineSubtitleTimes = m_remedies.fineSubtitleTimes;
        m_plan.namesFormat = m_remedies.namesFormat;
        m_plan.longMuxingQueue = m_remedies.longMuxingQueue;
    }

    const MKVFileInfo& m_info;
    const ConversionSettings& m_chosen;
    const Remedies& m_remedies;
    ConversionPlan m_plan;
    int m_outputs = 0;
    QSet<int> m_carried;
    const QSet<int> m_textSubtitles;
};

}  // namespace

QList<const PlannedTrack*> ConversionPlan::outputs() const {
    QList<const PlannedTrack*> result;
    for (const PlannedTrack& track : tracks) {
        if (track.output) result.append(&track);
    }
    std::sort(result.begin(), result.end(),
              [](const PlannedTrack* a, const PlannedTrack* b) { return *a->output < *b->output; });
    return result;
}

const AudioEntry* chosenAudio(const MKVFileInfo& info, qsizetype audioTrackIndex) {
    const auto& entries = info.audioTrackInformation;
    return audioTrackIndex >= 0 && audioTrackIndex < entries.size() ? &entries[audioTrackIndex] : nullptr;
}

ConversionPlan makePlan(const MKVFileInfo& info, qsizetype audioTrackIndex, const ConversionSettings& chosen,
                        const Remedies& remedies) {
    return Planner(info, chosen, remedies).plan(chosenAudio(info, audioTrackIndex));
}
