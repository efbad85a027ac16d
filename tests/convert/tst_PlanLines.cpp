#include "convert/plan/PlanLines.h"
#include "fakes/Table.h"

using Kind = PlannedTrack::Kind;
using Action = PlannedTrack::Action;

namespace {

/// A track of which only the named parts are known; without a number it is the subtitle file.
PlannedTrack track(std::optional<int> stream, Kind kind, const QString& codec, const QString& language,
                   const QString& title, std::optional<int> output, Action action) {
    PlannedTrack result;
    result.stream = stream;
    result.kind = kind;
    result.codec = codec;
    result.language = language;
    result.title = title;
    result.output = output;
    result.action = action;
    if (action == Action::Converted) result.to = kind == Kind::Subtitle ? "MP4 text" : "AAC stereo";
    if (kind == Kind::Audio && output) result.audio = PlannedAudio();
    if (action == Action::LeftOut) result.leftOutReason = LeftOutReason::FurtherAudio;
    return result;
}

PlannedTrack sound(int stream, int output, Action action, const QString& title = {}) {
    PlannedTrack result = track(stream, Kind::Audio, "ac3", "eng", title, output, action);
    result.audio->isSecond = output > 1;
    return result;
}

PlannedTrack subtitle(std::optional<int> stream, const QString& language, int output) {
    return track(stream, Kind::Subtitle, "subrip", language, stream ? "" : "x.srt", output,
                 Action::Converted);
}

QString described(const PlanLine& line) {
    return QStringList{line.kind, line.name, line.outcome, line.isUnchanged ? "unchanged" : ""}.join(u'|');
}

}  // namespace

class PlanLinesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void lines_data() {
        const PlannedTrack picture = track(0, Kind::Video, "h264", {}, {}, 0, Action::Copied);
        const QString copied = "Picture|H.264|copied|unchanged";
        const QString nothing = "Left out||nothing|unchanged";
        addRows<QList<PlannedTrack>, QStringList>(
            {{"nothing else", {picture}, {copied, "Sound||none|", "Subtitles||none|", "", nothing}},
             {"twice from one stream",
              {picture, sound(1, 1, Action::Converted), sound(1, 2, Action::Copied)},
              {copied, "Sound|English AC3|becomes AAC stereo; copied as a second track|", "Subtitles||none|",
               "", nothing}},
             {"from two streams, with a title of several lines",
              {picture, sound(1, 1, Action::Copied, "As\nheard"), sound(2, 2, Action::Copied)},
              {copied, "Sound|English AC3 “As heard”|copied; English AC3 copied as a second track|unchanged",
               "Subtitles||none|", "", nothing}},
             {"many subtitles and a file",
              {picture, sound(1, 1, Action::Copied), subtitle(3, "ger", 5), subtitle(4, "eng", 4),
               subtitle(5, "ger", 3), subtitle({}, {}, 2)},
              {copied, "Sound|English AC3|copied|unchanged",
               "Subtitles|German (2), English|carried|unchanged", "x.srt", nothing}},
             {"left out",
              {picture, track(2, Kind::Audio, "dts", "ger", {}, {}, Action::LeftOut)},
              {copied, "Sound||none|", "Subtitles||none|", "", "Left out|German||"}}});
    }
    void lines() {
        const auto [tracks, expected] = row<QList<PlannedTrack>, QStringList>();
        ConversionPlan plan;
        plan.tracks = tracks;
        const PlanLines lines = planLines(plan);
        QCOMPARE(QStringList({described(lines.picture), described(lines.sound), described(lines.subtitles),
                              lines.subtitleFile, described(lines.leftOut)}),
                 expected);
    }
};

QTEST_GUILESS_MAIN(PlanLinesTest)
#include "tst_PlanLines.moc"
