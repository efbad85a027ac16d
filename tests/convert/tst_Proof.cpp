#include "convert/proof/Loss.h"
#include "convert/proof/Proof.h"
#include "convert/proof/ReceiptText.h"
#include "fakes/Table.h"

#include <QTest>

#include <functional>

using Kind = PlannedTrack::Kind;
using Action = PlannedTrack::Action;

namespace {

/// A movie of 100 s with 2,500 pictures, converted sound and three subtitle lines, which arrived whole.
struct Scene {
    Scene() {
        evidence.plan.tracks = {
            planned(0, Kind::Video, Action::Copied, 0), planned(1, Kind::Audio, Action::Converted, 1),
            planned(2, Kind::Audio, Action::LeftOut, {}), planned(3, Kind::Subtitle, Action::Converted, 2)};
        media::Reading& in = evidence.source;
        in.container = media::Container::Matroska;
        in.opened = true;
        in.duration = 105;
        in.tracks = {track(0, media::TrackKind::Video, 2500, 5), track(1, media::TrackKind::Audio, 3125, 5),
                     track(2, media::TrackKind::Audio, 3125, 5), track(3, media::TrackKind::Subtitle, 3, 5)};
        in.tracks[3].lines = {{15, 2, true}, {25, 2, false}, {35, 2, true}, {95, 2, true}};
        media::Reading& out = evidence.output;
        out.container = media::Container::Mp4;
        out.opened = true;
        out.duration = 100;
        out.tracks = {track(0, media::TrackKind::Video, 2500, 0), track(1, media::TrackKind::Audio, 4688, 0),
                      track(2, media::TrackKind::Subtitle, 6, 0)};
        out.tracks[2].lines = {{10, 2, true}, {30, 2, true}, {90, 2, true}};
        evidence.runtimeSeconds = 105;
    }

    static PlannedTrack planned(int stream, Kind kind, Action action, std::optional<int> output) {
        PlannedTrack track;
        track.stream = stream;
        track.kind = kind;
        track.action = action;
        track.output = output;
        return track;
    }

    static media::Track track(int index, media::TrackKind kind, quint64 frames, double start) {
        media::Track track;
        track.index = index;
        track.kind = kind;
        track.frames = frames;
        track.start = start;
        track.end = start + 100;
        track.isText = kind == media::TrackKind::Subtitle;
        return track;
    }

    media::Track& source(std::size_t i) { return evidence.source.tracks[i]; }
    media::Track& output(std::size_t i) { return evidence.output.tracks[i]; }

    /// Without a reader for the source, as for TS.
    void hideSource() { evidence.source = {}; }

    proof::Evidence evidence;
};

using Change = std::function<void(Scene&)>;

}  // namespace

Q_DECLARE_METATYPE(Change)
Q_DECLARE_METATYPE(ProofVerdict)

class ProofTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void verdicts_data() {
        using enum ProofVerdict;
        using media::Fault;
        addRows<Change, ProofVerdict, bool>({
            {"nothing is missing", [](Scene&) {}, Whole, true},
            {"leading pictures are left out",
             [](Scene& s) { s.source(0).leadingFrames = 2, s.output(0).frames = 2498; }, Whole, true},
            {"one picture is missing", [](Scene& s) { s.output(0).frames = 2499; }, Damaged, true},
            {"one in a hundred", [](Scene& s) { s.output(0).frames = 2475; }, Damaged, true},
            {"more than one in a hundred", [](Scene& s) { s.output(0).frames = 2474; }, Damaged, false},
            {"no picture", [](Scene& s) { s.output(0).frames = 0; }, Damaged, false},
            {"more pictures than counted", [](Scene& s) { s.output(0).frames = 2501; }, Unknown, true},
            {"the output cannot be opened", [](Scene& s) { s.evidence.output = {}; }, Damaged, false},
            {"a track is missing", [](Scene& s) { s.evidence.output.tracks.resize(2); }, Damaged, false},
            {"a track is of another kind", [](Scene& s) { s.output(1).kind = media::TrackKind::Other; },
             Damaged, false},
            {"a track too many",
             [](Scene& s) {
                 s.evidence.output.tracks.push_back(Scene::track(3, media::TrackKind::Audio, 1, 0));
             },
             Damaged, true},
            {"chapters are a track, too",
             [](Scene& s) {
                 s.evidence.output.tracks.push_back(Scene::track(3, media::TrackKind::Other, 1, 0));
                 s.output(3).isChapters = true;
             },
             Whole, true},
            {"the sound is empty", [](Scene& s) { s.output(1).frames = 0; }, Damaged, false},
            {"the sound ends early, a little", [](Scene& s) { s.output(1).end = 99.5; }, Whole, true},
            {"the sound ends early", [](Scene& s) { s.output(1).end = 50; }, Damaged, false},
            {"the source's sound ends early, too",
             [](Scene& s) { s.source(1).end = 55, s.output(1).end = 50; }, Whole, true},
            {"a hole",
             [](Scene& s) {
                 s.output(0).holes = {{20, 20.8}};
             },
             Damaged, true},
            {"a long hole",
             [](Scene& s) {
                 s.output(0).holes = {{20, 22}};
             },
             Damaged, false},
            {"the source has the hole",
             [](Scene& s) {
                 s.output(0).holes = {{20, 60}}, s.source(0).holes = {{25, 65}};
             },
             Whole, true},
            {"the source is damaged",
             [](Scene& s) {
                 s.evidence.source.damage = {{20, 20.5, 9, Fault::Zeros}};
             },
             Damaged, true},
            {"the source is much damaged",
             [](Scene& s) {
                 s.evidence.source.damage = {{20, 25, 9, Fault::TruncatedFile}};
             },
             Damaged, false},
            {"pictures do not play",
             [](Scene& s) {
                 s.evidence.output.damage = {{20, 20.04, 9, Fault::BadNalLength}};
             },
             Damaged, true},
            {"samples outside of the file",
             [](Scene& s) {
                 s.evidence.output.damage = {{99, 99, 9, Fault::SampleOutsideFile}};
             },
             Damaged, false},
            {"a line is missing", [](Scene& s) { s.output(2).lines.pop_back(); }, Damaged, true},
            {"a line is late", [](Scene& s) { s.output(2).lines[1].start = 30.06; }, Damaged, true},
            {"a line is late, unnoticeably", [](Scene& s) { s.output(2).lines[1].start = 30.04; }, Whole,
             true},
            {"no line arrived", [](Scene& s) { s.output(2).lines.clear(); }, Damaged, false},
            {"reads failed", [](Scene& s) { s.evidence.toolOutput = "a.mkv: Stale file handle"; }, Damaged,
             true},
            {"parts of the output cannot be read",
             [](Scene& s) { s.evidence.output.problem = media::Problem::CannotRead; }, Damaged, false},
            {"the source cannot be opened again",
             [](Scene& s) {
                 s.hideSource(), s.evidence.runtimeSeconds = 100,
                                 s.evidence.source.problem = media::Problem::CannotOpen;
             },
             Damaged, true},
            {"other words do not matter for a source that is read",
             [](Scene& s) { s.evidence.toolOutput = "corrupt input packet in stream 0"; }, Whole, true},
            {"sound cannot be decoded",
             [](Scene& s) { s.evidence.toolOutput = "Error while decoding stream #0:1: Invalid data"; },
             Damaged, true},
            {"no reader for the source", [](Scene& s) { s.hideSource(), s.evidence.runtimeSeconds = 101; },
             Whole, true},
            {"AVI with all pictures of its index",
             [](Scene& s) {
                 s.hideSource(), s.evidence.runtimeSeconds = 100;
                 s.evidence.aviPictures = {{0, 2510, 2500, 10}};
             },
             Whole, true},
            {"AVI without some",
             [](Scene& s) {
                 s.hideSource(), s.evidence.runtimeSeconds = 100;
                 s.evidence.aviPictures = {{0, 2510, 2501, 9}};
             },
             Damaged, true},
            {"MPG with a step in its constant frame rate",
             [](Scene& s) {
                 s.hideSource(), s.evidence.runtimeSeconds = 100;
                 s.evidence.sourceIsProgramStream = true;
                 s.output(0).skippedFrames = 2;
             },
             Damaged, true},
            {"MPG with many steps",
             [](Scene& s) {
                 s.hideSource(), s.evidence.runtimeSeconds = 100;
                 s.evidence.sourceIsProgramStream = true;
                 s.output(0).skippedFrames = 100;
             },
             Whole, true},
            {"other movies may have steps",
             [](Scene& s) {
                 s.hideSource(), s.evidence.runtimeSeconds = 101;
                 s.output(0).skippedFrames = 2;
             },
             Whole, true},
            {"no reader, too short", [](Scene& s) { s.hideSource(); }, Damaged, false},
            {"no reader, no running time",
             [](Scene& s) { s.hideSource(), s.evidence.runtimeSeconds.reset(); }, Unknown, true},
            {"no reader, given up",
             [](Scene& s) {
                 s.hideSource();
                 s.evidence.runtimeSeconds = 100;
                 s.evidence.sourcePath = "/a.ts";
                 s.evidence.toolOutput = "speed=1x\r/a.ts: Numerical result out of range";
             },
             Damaged, true},
            {"no reader, corrupt",
             [](Scene& s) {
                 s.hideSource();
                 s.evidence.runtimeSeconds = 100;
                 s.evidence.toolOutput = "corrupt input packet in stream 0";
             },
             Damaged, true},
        });
    }
    void verdicts() {
        const auto [change, verdict, mayBeKept] = row<Change, ProofVerdict, bool>();
        Scene scene;
        change(scene);
        const Receipt receipt = proof::compare(scene.evidence).receipt;
        QCOMPARE(receipt.verdict, verdict);
        QCOMPARE(receipt.mayBeKept, mayBeKept);
        QCOMPARE(receipt.damage.isEmpty() && receipt.notes.isEmpty(), verdict == ProofVerdict::Whole);
    }

    /// What is lost twice counts once, and a long movie may lose no more than 30 s.
    void sumsUp_data() {
        using Spans = QList<QPair<double, double>>;
        addRows<Spans, double, bool>({{"overlapping", {{10, 16}, {12, 20}}, 1000, true},
                                      {"one after the other", {{10, 16}, {30, 38}}, 1000, false},
                                      {"30 s of two hours", {{10, 40}}, 7200, true},
                                      {"31 s of two hours", {{10, 41}}, 7200, false}});
    }
    void sumsUp() {
        const auto [spans, seconds, isSmall] = row<QList<QPair<double, double>>, double, bool>();
        proof::Loss loss;
        for (const auto& [from, to] : spans)
            loss.addSpan(Kind::Video, from, to);
        QCOMPARE(loss.isSmall(seconds), isSmall);
    }

    /// Lines of the file beside the movie are not shifted by the movie's first timestamp.
    void linesOfAFile() {
        Scene scene;
        scene.evidence.plan.tracks[3].stream.reset();
        scene.evidence.subtitleFile = std::vector<media::Line>{{10, 2, true}, {30, 2, true}, {90, 2, true}};
        QCOMPARE(proof::compare(scene.evidence).receipt.verdict, ProofVerdict::Whole);
        scene.evidence.subtitleFile->front().start = 15;
        const proof::Result late = proof::compare(scene.evidence);
        QCOMPARE(late.receipt.verdict, ProofVerdict::Damaged);
        QVERIFY(late.signs.linesDisplaced && !late.signs.embeddedLinesMissing);
    }

    void words() {
        Scene scene;
        QCOMPARE(receipttext::summary(proof::compare(scene.evidence).receipt),
                 "whole: 2,500 of 2,500 pictures");
        scene.output(0).holes = {{746, 746.6}};
        QCOMPARE(receipttext::summary(proof::compare(scene.evidence).receipt),
                 "Damaged at 0:12:31: there are no pictures");
        scene.output(2).lines.pop_back();
        scene.evidence.plan.carriesChapters = true;
        scene.evidence.plan.chapterCount = 12;
        PlannedTrack german;
        german.stream = 9;
        german.kind = PlannedTrack::Kind::Audio;
        german.language = "ger";
        german.leftOutReason = LeftOutReason::FurtherAudio;
        scene.evidence.plan.tracks.append(german);
        const Receipt receipt = proof::compare(scene.evidence).receipt;
        QCOMPARE(receipttext::details(receipt).size(), 7);
        QCOMPARE(receipttext::details(receipt).mid(2, 3),
                 QStringList({"2 of 3 subtitle lines", "12 chapter(s)", "left out: German"}));
        QVERIFY(receipttext::sentence(receipt).startsWith("Damaged: 2,500 of 2,500 pictures, copied; "));
    }
};

QTEST_GUILESS_MAIN(ProofTest)
#include "tst_Proof.moc"
