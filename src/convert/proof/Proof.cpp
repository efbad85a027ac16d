#include "convert/proof/Proof.h"

#include "convert/plan/PlanText.h"
#include "convert/proof/LineComparison.h"
#include "convert/proof/Loss.h"
#include "convert/proof/ToolWords.h"
#include "support/base/Texts.h"

#include <algorithm>
#include <cmath>

namespace proof {

namespace {

constexpr double kPictureTolerance = 0.5;    // seconds
constexpr double kCopiedTolerance = 0.5;     // seconds
constexpr double kConvertedTolerance = 1.0;  // seconds; an encoder delays and pads
constexpr quint64 kFramesPerSkip = 100;      // frames for each that may be missing
constexpr double kRuntimeTolerance = 1.0;    // seconds; running times are rounded down

using Kind = PlannedTrack::Kind;
using Action = PlannedTrack::Action;

media::TrackKind mediaKind(Kind kind) {
    switch (kind) {
        case Kind::Video:
            return media::TrackKind::Video;
        case Kind::Audio:
            return media::TrackKind::Audio;
        case Kind::Subtitle:
            return media::TrackKind::Subtitle;
        case Kind::Attachment:
        case Kind::Data:
            break;
    }
    return media::TrackKind::Other;
}

QString nameOf(Kind kind) {
    switch (kind) {
        case Kind::Video:
            return Texts::tr("picture");
        case Kind::Audio:
            return Texts::tr("sound");
        case Kind::Subtitle:
            return Texts::tr("subtitle");
        case Kind::Attachment:
        case Kind::Data:
            break;
    }
    return Texts::tr("data");
}

bool cannotRead(const media::Reading& reading) {
    return reading.problem == media::Problem::CannotOpen || reading.problem == media::Problem::CannotRead;
}

QList<PlannedTrack> promisedTracks(const ConversionPlan& plan) {
    QList<PlannedTrack> promised;
    for (const PlannedTrack& track : plan.tracks)
        if (track.output) promised.append(track);
    std::sort(promised.begin(), promised.end(),
              [](const PlannedTrack& a, const PlannedTrack& b) { return *a.output < *b.output; });
    return promised;
}

class Comparison {
public:
    explicit Comparison(const Evidence& evidence) : m_evidence(evidence) {
        const ConversionPlan& plan = evidence.plan;
        m_receipt.chapterCount = plan.carriesChapters ? plan.chapterCount : 0;
        m_receipt.leftOut = plantext::leftOut(plan);
    }

    Result result() {
        if (!m_evidence.output.opened || cannotRead(m_evidence.output)) {
            m_receipt.notes.append(Texts::tr("The output cannot be read."));
            m_receipt.mayBeKept = false;
            return {judged(), m_signs};
        }
        const QList<PlannedTrack> promised = promisedTracks(m_evidence.plan);
        m_shift = shiftOfSource(promised);
        for (const PlannedTrack& track : promised)
            compareTrack(track);
        checkUnplannedTracks(promised.size());
        addDamageOfSource();
        addDamageOfOutput();
        addWordsOfTool();
        compareRunningTime();
        return {judged(), m_signs};
    }

private:
    const media::Track* outputTrack(const PlannedTrack& planned) const {
        const auto& tracks = m_evidence.output.tracks;
        const auto index = static_cast<std::size_t>(planned.output.value_or(0));
        if (index >= tracks.size() || tracks[index].kind != mediaKind(planned.kind)) return nullptr;
        return &tracks[index];
    }

    /// Null if there is no reader for the source, or if the reader sees other streams than the tool.
    const media::Track* sourceTrack(const PlannedTrack& planned) const {
        if (!planned.stream || !sourceIsRead()) return nullptr;
        for (const media::Track& track : m_evidence.source.tracks)
            if (track.index == *planned.stream && track.kind == mediaKind(planned.kind)) return &track;
        return nullptr;
    }

    /// Whether the frames of the source were counted.
    bool sourceIsRead() const {
        const media::Reading& source = m_evidence.source;
        return source.opened && source.container != media::Container::Unknown && !source.tracks.empty();
    }

    /// The tool shifts all times of a movie so that it begins at zero: output time = source time + shift.
    double shiftOfSource(const QList<PlannedTrack>& promised) const {
        for (const PlannedTrack& planned : promised) {
            const media::Track* source = sourceTrack(planned);
            const media::Track* output = outputTrack(planned);
            if (planned.action != Action::Copied || !source || !output) continue;
            // A stream copy begins with the first key picture.
            if (source->leadingFrames == 0 && source->start && output->start)
                return *output->start - *source->start;
        }
        std::optional<double> first;
        for (const media::Track& track : m_evidence.source.tracks) {
            const bool counts =
                track.kind == media::TrackKind::Video || track.kind == media::TrackKind::Audio;
            if (counts && track.start) first = std::min(first.value_or(*track.start), *track.start);
        }
        return -first.value_or(0);
    }

    void damage(double from, double to, const QString& what) {
        m_receipt.damage.append({std::max(from, 0.0), std::max({from, to, 0.0}), what});
    }

    void compareTrack(const PlannedTrack& planned) {
        ReceiptTrack compared{planned, {}, {}, {}, {}};
        const media::Track* output = outputTrack(planned);
        const media::Track* source = sourceTrack(planned);
        if (planned.kind == Kind::Subtitle) {
            compareLines(compared, source, output);
        } else if (output) {
            compareSamples(compared, source, *output);
        }
        if (!output) {
            damage(0, length(),
                   Texts::tr("The %1 track that was planned is missing.").arg(nameOf(planned.kind)));
            m_receipt.mayBeKept = false;
        }
        m_receipt.tracks.append(compared);
    }

    void compareSamples(ReceiptTrack& compared, const media::Track* source, const media::Track& output) {
        const PlannedTrack& planned = compared.plan;
        compared.count = output.frames;
        compared.seconds = output.end;
        if (output.frames == 0 && (!source || source->frames > 0)) {
            damage(0, length(), Texts::tr("The %1 track is empty.").arg(nameOf(planned.kind)));
            m_receipt.mayBeKept = false;
            return;
        }
        if (planned.action == Action::Converted) compareDecoding(planned);
        if (!source) {
            if (planned.kind == Kind::Video) comparePictures(compared, output);
            if (sourceIsRead()) cannotKnow(Texts::tr("The streams of the source cannot be assigned."));
            return;
        }
        const quint64 mayGo = source->leadingFrames + source->hiddenFrames;
        const quint64 expected = source->frames - std::min(mayGo, source->frames);
        compared.sourceCount = expected;
        compared.sourceSeconds = source->end;
        if (planned.kind == Kind::Video) compareHoles(*source, output);
        compareEnds(planned, *source, output);
        if (planned.action != Action::Copied) return;
        if (output.frames > source->frames && m_evidence.source.damageTotal == 0)
            cannotKnow(Texts::tr("The output holds more than was counted in the source."));
        compareCounts(planned, expected, source->end.value_or(0), output);
    }

    void compareCounts(const PlannedTrack& planned, quint64 expected, double seconds,
                       const media::Track& output) {
        if (output.frames >= expected) return;
        m_loss.addFrames(planned.kind, expected - output.frames, expected, seconds);
        const auto missing = static_cast<int>(std::min<quint64>(expected - output.frames, 1'000'000'000));
        const QString what = planned.kind == Kind::Video
                                 ? Texts::tr("%n picture(s) are missing", nullptr, missing)
                                 : Texts::tr("%n packet(s) of sound are missing", nullptr, missing);
        damage(0, seconds, what);
    }

    /// AVI counts its pictures in the index; in the header, too, but with those that are shown twice.
    void comparePictures(ReceiptTrack& compared, const media::Track& output) {
        for (const media::AviPictures& pictures : m_evidence.aviPictures) {
            if (pictures.stream != compared.plan.stream) continue;
            const quint64 expected = pictures.indexed > 0 ? pictures.indexed : pictures.declared;
            compared.sourceCount = expected;
            compareCounts(compared.plan, expected, length(), output);
        }
    }

    void compareDecoding(const PlannedTrack& planned) {
        if (planned.stream && toolwords::reportDecodingErrors(m_evidence.toolOutput, *planned.stream))
            damage(0, length(), Texts::tr("parts of the sound cannot be decoded"));
    }

    void compareHoles(const media::Track& source, const media::Track& output) {
        for (const media::Hole& hole : output.holes) {
            const bool isInSource =
                std::any_of(source.holes.cbegin(), source.holes.cend(), [&](const media::Hole& other) {
                    return other.from + m_shift <= hole.from + kPictureTolerance &&
                           other.to + m_shift >= hole.to - kPictureTolerance;
                });
            if (!isInSource) addHole(hole);
        }
    }

    void addHole(const media::Hole& hole) {
        m_loss.addSpan(Kind::Video, hole.from, hole.to);
        damage(hole.from - m_shift, hole.to - m_shift, Texts::tr("there are no pictures"));
    }

    void compareEnds(const PlannedTrack& planned, const media::Track& source, const media::Track& output) {
        if (!source.end || !output.end) return;
        const double tolerance = planned.action == Action::Copied ? kCopiedTolerance : kConvertedTolerance;
        const double end = *output.end - m_shift;
        if (end >= *source.end - tolerance) return;
        m_loss.addSpan(planned.kind, end, *source.end);
        damage(end, *source.end, Texts::tr("the %1 ends too early").arg(nameOf(planned.kind)));
    }

    void compareLines(ReceiptTrack& compared, const media::Track* source, const media::Track* output) {
        const bool isFile = !compared.plan.stream;
        const std::vector<media::Line>* expected = nullptr;
        if (isFile && m_evidence.subtitleFile) expected = &*m_evidence.subtitleFile;
        if (!isFile && source && source->isText && source->linesLeftOut == 0) expected = &source->lines;
        if (output) {
            compared.count = countOfVisible(output->lines);
            compared.seconds = output->end;
        }
        if (!expected) {
            if (isFile || sourceIsRead()) cannotKnow(Texts::tr("The subtitle lines cannot be counted."));
            return;
        }
        compared.sourceCount = countOfVisible(*expected);
        if (source) compared.sourceSeconds = source->end;
        if (!output) return;
        const LineComparison lines = compareLineTimes(*expected, output->lines, isFile ? 0 : m_shift);
        addLostLines(compared, lines);
    }

    void addLostLines(const ReceiptTrack& compared, const LineComparison& lines) {
        if (lines.missing.empty() && lines.displaced.empty()) return;
        if (compared.count.value_or(0) == 0) m_receipt.mayBeKept = false;
        const auto add = [&](const std::vector<double>& starts, const QString& what) {
            if (!starts.empty()) damage(starts.front(), starts.back(), what);
        };
        m_signs.embeddedLinesMissing |= compared.plan.stream && !lines.missing.empty();
        m_signs.linesDisplaced |= !lines.displaced.empty();
        add(lines.missing,
            Texts::tr("%n subtitle line(s) are missing", nullptr, static_cast<int>(lines.missing.size())));
        add(lines.displaced, Texts::tr("%n subtitle line(s) are shown at another time", nullptr,
                                       static_cast<int>(lines.displaced.size())));
    }

    void checkUnplannedTracks(qsizetype planned) {
        const auto& tracks = m_evidence.output.tracks;
        for (std::size_t i = static_cast<std::size_t>(planned); i < tracks.size(); ++i) {
            if (!tracks[i].isChapters && tracks[i].codec != "tmcd")
                damage(0, length(), Texts::tr("a track that was not planned"));
        }
    }

    void addDamageOfSource() {
        if (cannotRead(m_evidence.source))
            damage(0, length(), Texts::tr("the source cannot be read to its end"));
        for (const media::Damage& part : m_evidence.source.damage) {
            m_loss.addSpan(Kind::Video, part.from, part.to);
            damage(part.from, part.to, Texts::tr("the source is damaged"));
        }
    }

    void addDamageOfOutput() {
        for (const media::Damage& part : m_evidence.output.damage) {
            m_loss.addSpan(Kind::Video, part.from, part.to);
            damage(part.from - m_shift, part.to - m_shift, Texts::tr("parts do not play"));
            if (part.fault == media::Fault::SampleOutsideFile || part.fault == media::Fault::TruncatedFile)
                m_receipt.mayBeKept = false;
        }
    }

    void addWordsOfTool() {
        if (m_evidence.sourceIsCut) {
            damage(length(), length(), Texts::tr("the source ends in the middle of the movie"));
        }
        if (toolwords::reportReadErrors(m_evidence.toolOutput)) {
            damage(0, m_evidence.runtimeSeconds.value_or(0), Texts::tr("reading the movie failed"));
        } else if (!sourceIsRead() && toolwords::reportDamage(m_evidence.toolOutput, m_evidence.sourcePath)) {
            damage(0, m_evidence.runtimeSeconds.value_or(0), Texts::tr("the source is damaged"));
        }
    }

    /// Without a reader of the source, only its running time shows how much there was.
    void compareRunningTime() {
        if (sourceIsRead()) return;
        double end = 0;
        for (const ReceiptTrack& track : m_receipt.tracks) {
            if (track.plan.kind == Kind::Video || track.plan.kind == Kind::Audio)
                end = std::max(end, track.seconds.value_or(0));
        }
        if (!m_evidence.runtimeSeconds) {
            cannotKnow(Texts::tr("The movie does not say how long it is."));
        } else if (end < *m_evidence.runtimeSeconds - kRuntimeTolerance) {
            m_loss.addSpan(Kind::Video, end, *m_evidence.runtimeSeconds);
            damage(end, *m_evidence.runtimeSeconds, Texts::tr("the end of the movie is missing"));
        }
        for (const ReceiptTrack& track : m_receipt.tracks) {
            const media::Track* output = outputTrack(track.plan);
            if (track.plan.kind != Kind::Video || !output) continue;
            for (const media::Hole& hole : output->holes)
                if (isInSoundToo(hole)) addHole(hole);
            compareSteps(track.plan, *output);
        }
    }

    /// Where there are many, the frame rate is not constant after all.
    void compareSteps(const PlannedTrack& planned, const media::Track& output) {
        if (!m_evidence.sourceIsProgramStream || planned.action != Action::Copied) return;
        if (output.skippedFrames > output.frames / kFramesPerSkip) return;
        compareCounts(planned, output.frames + output.skippedFrames, length(), output);
    }

    /// Seconds.
    double length() const {
        return std::max(m_evidence.output.duration.value_or(0),
                        static_cast<double>(m_evidence.runtimeSeconds.value_or(0)));
    }

    /// A still picture is no hole, but there the sound goes on.
    bool isInSoundToo(const media::Hole& hole) const {
        bool hasSound = false;
        for (const media::Track& track : m_evidence.output.tracks) {
            if (track.kind != media::TrackKind::Audio) continue;
            hasSound = true;
            const bool overlaps = std::any_of(
                track.holes.cbegin(), track.holes.cend(),
                [&](const media::Hole& other) { return other.from < hole.to && other.to > hole.from; });
            if (overlaps) return true;
        }
        return !hasSound;
    }

    void cannotKnow(const QString& why) {
        m_isUnknown = true;
        if (!m_receipt.notes.contains(why)) m_receipt.notes.append(why);
    }

    Receipt judged() {
        const double seconds = std::max(length(), static_cast<double>(m_evidence.runtimeSeconds.value_or(0)));
        if (!m_loss.isSmall(seconds)) m_receipt.mayBeKept = false;
        const bool isDamaged = !m_receipt.damage.isEmpty() || !m_receipt.mayBeKept;
        m_receipt.verdict = isDamaged     ? ProofVerdict::Damaged
                            : m_isUnknown ? ProofVerdict::Unknown
                                          : ProofVerdict::Whole;
        return m_receipt;
    }

    const Evidence& m_evidence;
    Receipt m_receipt;
    Signs m_signs;
    Loss m_loss;
    double m_shift = 0;
    bool m_isUnknown = false;
};

}  // namespace

Result compare(const Evidence& evidence) {
    return Comparison(evidence).result();
}

}  // namespace proof
