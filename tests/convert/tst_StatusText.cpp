#include "convert/Progress.h"
#include "convert/SpaceCheck.h"
#include "convert/StatusText.h"
#include "convert/ToolOutput.h"
#include "fakes/Table.h"
#include "fakes/TestHome.h"

#include <QFile>

#include <limits>

class StatusTextTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void texts_data() {
        const QStringList none;
        const QStringList three = {"#1: eng (ac3) [5.1]", "#2: ger (dts)", "#3: fre (aac)"};
        const QString converting = "Status: Converting   ";
        addRows<JobState, QStringList, int, double, QString>(
            {{"queued", JobState::Queued, three, 0, 0, "Status: Queued"},
             {"paused", JobState::Paused, three, 0, 50, "Status: Paused"},
             {"failed", JobState::Failed, three, 0, 100,
              "Status: Failed   Click the arrow at the right to get more information."},
             {"finished", JobState::Finished, three, 0, 100, "Status: Finished [Conversion took: 1m 1s]"},
             {"no audio", JobState::Converting, none, 0, 50, converting + "ETA: 30s"},
             {"one track", JobState::Converting, three.first(1), 0, 75,
              converting + "Audio:  eng (ac3) [5.1]   ETA: 10s"},
             {"only the last discarded one", JobState::Converting, three, 0, 50,
              converting + "Audio:  eng (ac3) [5.1] (Discarded:  fre (aac))   ETA: 30s"},
             {"the last is chosen", JobState::Converting, three, 2, 50,
              converting + "Audio:  fre (aac) (Discarded:  ger (dts))   ETA: 30s"},
             {"at the start", JobState::Converting, none, 0, 0, converting + "ETA: 300m 0s"},
             {"hardly begun", JobState::Converting, none, 0, 0.001, converting + "ETA: 300m 0s"},
             {"done", JobState::Converting, none, 0, 100, converting + "ETA: 0s"},
             {"more than done", JobState::Converting, none, 0, 120, converting + "ETA: 0s"}});
    }
    void texts() {
        const auto [state, tracks, chosen, progress, text] =
            row<JobState, QStringList, int, double, QString>();
        StatusFacts facts;
        facts.state = state;
        for (const QString& track : tracks)
            facts.audioTracks.append({track, 48000});
        facts.audioTrackIndex = chosen;
        facts.progress = progress;
        facts.elapsedSeconds = 30;
        facts.conversionSeconds = 61.9;
        QCOMPARE(stateInfoString(facts), text);
    }

    void noTimeIsKnown() {
        StatusFacts facts;
        facts.state = JobState::Converting;
        facts.elapsedSeconds = std::numeric_limits<double>::quiet_NaN();
        QCOMPARE(stateInfoString(facts), "Status: Converting");
    }

    void progressFile() {
        const TestHome home;
        const QString path = home.path("p.log");
        ProgressFile progress(path);
        QVERIFY(!progress.readNew());  // The tool has not created it yet.
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        file.write("frame=1\nout_time_ms=1000000\nprogress=continue\nout_time_ms=2000000\n");
        QCOMPARE(progress.readNew().value(), 1.0);  // The first one of a chunk.
        QCOMPARE(progress.furthestSeconds(), 2.0);
        QVERIFY(!progress.readNew());
        file.write("out_time_ms=30");
        QVERIFY(!progress.readNew());
        file.write("00000\nout_time_ms=N/A\n");
        QCOMPARE(progress.readNew().value(), 3.0);
        progress.remove();
        QVERIFY(!QFile::exists(path));
    }

    void percentages() {
        QCOMPARE(progress::percent(5, 10).value(), 50.0);
        QCOMPARE(progress::percent(10.9, 10).value(), 100.0);
        QVERIFY(!progress::percent(5, std::nullopt));
        QVERIFY(!progress::percent(5, 0));
    }

    void outputWithoutStatistics_data() {
        addRows<QByteArrayList, QString>(
            {{"statistics", {"frame=1 bitrate=2\rreal\nframe=3 only\n"}, "realframe=3 only"},
             {"torn statistics", {"frame=1 fps", "=0 bitr", "ate=2kb/s\rafter"}, "after"},
             {"torn word", {"No space left", " on device\n"}, "No space left on device"},
             {"torn character", {"Gr\xc3", "\xbc\xc3\x9f\n"}, "Grüß"},
             {"not text",
              {"a\xff"
               "b\n"},
              "a\uFFFDb"},
             {"last line is statistics", {"x\nframe=9 bitrate=1"}, "x"}});
    }
    void outputWithoutStatistics() {
        const auto [pieces, text] = row<QByteArrayList, QString>();
        ToolOutput output;
        for (const QByteArray& piece : pieces)
            output.append(piece);
        output.finish();
        output.note("status: frame= bitrate=");  // Kept unchanged.
        QCOMPARE(output.text(), text + "status: frame= bitrate=");
    }

    void aFloodIsBounded() {
        ToolOutput output;
        output.append("first words\n");
        for (int i = 0; i < 2000; ++i) {
            output.append(QByteArray("warning, again and again\n").repeated(100));
            if (i == 1000) output.append("x.mkv: File ended prematurely\nx.mp4: No space left on device\n");
            output.append("x.mkv: corrupt input packet in stream 0\n");
        }
        output.append(QByteArray(1'000'000, 'x'));  // No line break at all.
        output.append("\nlast words");
        output.finish();
        const QString text = output.text();
        QVERIFY(text.size() < 1'000'000);
        QVERIFY(text.startsWith("first words") && text.endsWith("last words"));
        QVERIFY(output.contains(u"No space left on device") && output.contains(u"File ended prematurely"));
    }

    void space() {
        using enum spacecheck::Verdict;
        QCOMPARE(spacecheck::check(10, 10, 10), Enough);
        QCOMPARE(spacecheck::check(10, 9, 100), TooLittleSpace);
        QCOMPARE(spacecheck::check(10, 100, 9), NoLargeFiles);
        QCOMPARE(spacecheck::check(10, 9, 9), TooLittleSpace);
        QCOMPARE(spacecheck::check(10, std::nullopt, std::nullopt), Enough);
    }

    void whatTheInterfaceShows() {
        using enum JobState;
        for (const JobState state : {Queued, Converting, Paused, Finished, Failed}) {
            QCOMPARE(statusIsRunning(state), state == Converting);
            QCOMPARE(statusNotQueuedAndPaused(state), state != Queued && state != Paused);
            QCOMPARE(statusNotFinished(state), state != Finished && state != Failed);
        }
    }
};

QTEST_GUILESS_MAIN(StatusTextTest)
#include "tst_StatusText.moc"
