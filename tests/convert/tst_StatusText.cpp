#include "convert/Progress.h"
#include "convert/SpaceCheck.h"
#include "convert/StatusText.h"
#include "convert/ToolOutput.h"
#include "fakes/TestHome.h"

#include <QFile>
#include <QTest>

#include <limits>

class StatusTextTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void texts_data() {
        QTest::addColumn<int>("state");
        QTest::addColumn<QStringList>("tracks");
        QTest::addColumn<int>("chosen");
        QTest::addColumn<double>("progress");
        QTest::addColumn<QString>("text");
        const QStringList three = {"#1: eng (ac3) [5.1]", "#2: ger (dts)", "#3: fre (aac)"};
        QTest::newRow("queued") << 0 << three << 0 << 0.0 << "Status: Queued";
        QTest::newRow("paused") << 2 << three << 0 << 50.0 << "Status: Paused";
        QTest::newRow("failed") << 4 << three << 0 << 100.0
                                << "Status: Failed   Click the arrow at the right to get more information.";
        QTest::newRow("finished") << 3 << three << 0 << 100.0 << "Status: Finished [Conversion took: 1m 1s]";
        QTest::newRow("no audio") << 1 << QStringList{} << 0 << 50.0 << "Status: Converting   ETA: 30s";
        QTest::newRow("one track") << 1 << three.first(1) << 0 << 75.0
                                   << "Status: Converting   Audio:  eng (ac3) [5.1]   ETA: 10s";
        QTest::newRow("only the last discarded one")
            << 1 << three << 0 << 50.0
            << "Status: Converting   Audio:  eng (ac3) [5.1] (Discarded:  fre (aac))   ETA: 30s";
        QTest::newRow("the last is chosen")
            << 1 << three << 2 << 50.0
            << "Status: Converting   Audio:  fre (aac) (Discarded:  ger (dts))   ETA: 30s";
        QTest::newRow("at the start")
            << 1 << QStringList{} << 0 << 0.0 << "Status: Converting   ETA: 300m 0s";
        QTest::newRow("done") << 1 << QStringList{} << 0 << 100.0 << "Status: Converting   ETA: 0s";
    }
    void texts() {
        QFETCH(int, state);
        QFETCH(QStringList, tracks);
        QFETCH(int, chosen);
        QFETCH(double, progress);
        StatusFacts facts;
        facts.state = static_cast<JobState>(state);
        for (const QString& track : tracks)
            facts.audioTracks.append({track, 48000});
        facts.audioTrackIndex = chosen;
        facts.progress = progress;
        facts.elapsedSeconds = 30;
        facts.conversionSeconds = 61.9;
        QTEST(stateInfoString(facts), "text");
    }

    void remaining() {
        QCOMPARE(remainingSeconds(0, 0), 18000);
        QCOMPARE(remainingSeconds(120, 60), 0);
        QCOMPARE(remainingSeconds(0.001, 60), 18000);
        StatusFacts facts;
        facts.state = JobState::Converting;
        facts.elapsedSeconds = std::numeric_limits<double>::quiet_NaN();
        QCOMPARE(stateInfoString(facts), "Status: Converting");
    }

    void progressFile() {
        const TestHome home;
        const QString path = home.path("p.log");
        ProgressFile progress(path);
        QVERIFY(!progress.readNew());  // The tool has not made it yet.
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        const auto write = [&](const char* text) {
            file.write(text);
            file.flush();
        };
        write("frame=1\nout_time_ms=1000000\nprogress=continue\nout_time_ms=2000000\n");
        QCOMPARE(progress.readNew().value(), 1.0);  // The earliest of a chunk.
        QCOMPARE(progress.furthestSeconds(), 2.0);
        QVERIFY(!progress.readNew());
        write("out_time_ms=30");
        QVERIFY(!progress.readNew());
        write("00000\nout_time_ms=N/A\n");
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
        QTest::addColumn<QByteArrayList>("pieces");
        QTest::addColumn<QString>("text");
        QTest::newRow("statistics") << QByteArrayList{"frame=1 bitrate=2\rreal\nframe=3 only\n"}
                                    << "realframe=3 only";
        QTest::newRow("torn statistics")
            << QByteArrayList{"frame=1 fps", "=0 bitr", "ate=2kb/s\rafter"} << "after";
        QTest::newRow("torn word") << QByteArrayList{"No space left", " on device\n"}
                                   << "No space left on device";
        QTest::newRow("torn character") << QByteArrayList{"Gr\xc3", "\xbc\xc3\x9f\n"} << "Grüß";
        QTest::newRow("not text") << QByteArrayList{"a\xff" "b\n"} << "a\uFFFDb";
        QTest::newRow("last line is statistics") << QByteArrayList{"x\nframe=9 bitrate=1"} << "x";
    }
    void outputWithoutStatistics() {
        QFETCH(QByteArrayList, pieces);
        ToolOutput output;
        for (const QByteArray& piece : pieces)
            output.append(piece);
        output.finish();
        QTEST(output.text(), "text");
    }

    void aFloodIsBounded() {
        ToolOutput output;
        output.append("first words\n");
        for (int i = 0; i < 2000; ++i) {
            output.append(QByteArray("warning, again and again\n").repeated(100));
            if (i == 1000) output.append("x.mkv: File ended prematurely\nx.mp4: No space left on device\n");
            output.append("x.mkv: corrupt input packet in stream 0\n");
        }
        output.append(QByteArray(1'000'000, 'x'));  // Never a line break.
        output.append("\nlast words");
        output.finish();
        const QString text = output.text();
        QVERIFY(text.size() < 1'000'000);
        QVERIFY(text.startsWith("first words") && text.endsWith("last words"));
        QVERIFY(output.contains(u"No space left on device") && output.contains(u"File ended prematurely"));
    }

    void notesAreKeptAsTheyAre() {
        ToolOutput output;
        output.note("status: frame= bitrate=");
        QCOMPARE(output.text(), "status: frame= bitrate=");
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
        const auto row = [](JobState state) {
            return QList<bool>{statusIsRunning(state), statusIsQueued(state), statusNotRunning(state),
                               statusNotQueuedAndPaused(state), statusNotFinished(state)};
        };
        QCOMPARE(row(JobState::Queued), (QList<bool>{false, true, true, false, true}));
        QCOMPARE(row(JobState::Converting), (QList<bool>{true, false, false, true, true}));
        QCOMPARE(row(JobState::Paused), (QList<bool>{false, false, true, false, true}));
        QCOMPARE(row(JobState::Finished), (QList<bool>{false, false, true, true, false}));
        QCOMPARE(row(JobState::Failed), (QList<bool>{false, false, true, true, false}));
    }
};

QTEST_GUILESS_MAIN(StatusTextTest)
#include "tst_StatusText.moc"
