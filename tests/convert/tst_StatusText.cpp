#include "convert/Progress.h"
#include "convert/SpaceCheck.h"
#include "convert/StallWatch.h"
#include "convert/StatusText.h"
#include "convert/ToolOutput.h"
#include "fakes/TestHome.h"

#include <QFile>
#include <QTest>

#include <limits>

class StatusTextTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void texts() {
        using enum JobState;
        StatusFacts facts;
        facts.elapsedSeconds = 30;
        facts.conversionSeconds = 61.9;
        const auto text = [&](JobState state, double progress = 50) {
            facts.state = state;
            facts.progress = progress;
            return stateInfoString(facts);
        };
        const QString converting = "Status: Converting   ";
        QCOMPARE(text(Converting), converting + "ETA: 30s");
        for (const double atTheStart : {0.0, 0.001})
            QCOMPARE(text(Converting, atTheStart), converting + "ETA: 300m 0s");
        for (const double atTheEnd : {100.0, 120.0})
            QCOMPARE(text(Converting, atTheEnd), converting + "ETA: 0s");
        facts.audioTracks = {{"#1: eng (ac3) [5.1]", 48000}};
        QCOMPARE(text(Converting, 75), converting + "Audio:  eng (ac3) [5.1]   ETA: 10s");

        // Only the last discarded track is named.
        facts.audioTracks += QList<AudioEntry>{{"#2: ger (dts)", 48000}, {"#3: fre (aac)", 48000}};
        QCOMPARE(text(Converting), converting + "Audio:  eng (ac3) [5.1] (Discarded:  fre (aac))   ETA: 30s");
        QCOMPARE(text(Queued), "Status: Queued");
        QCOMPARE(text(Paused), "Status: Paused");
        QCOMPARE(text(Failed), "Status: Failed   Click the arrow at the right to get more information.");
        QCOMPARE(text(Finished), "Status: Finished [Conversion took: 1m 1s]");
        facts.audioTrackIndex = 2;
        QCOMPARE(text(Converting), converting + "Audio:  fre (aac) (Discarded:  ger (dts))   ETA: 30s");
        facts.elapsedSeconds = std::numeric_limits<double>::quiet_NaN();
        facts.audioTracks.clear();
        QCOMPARE(text(Converting), "Status: Converting");
    }

    void stalls() {
        StallWatch watch;
        watch.restart(100);
        // Once a second; what each second adds, and how long the tool is idle after a minute.
        const QList<std::pair<StallWatch::Activity, double>> cases = {
            {{0, 0, 0, 0}, 60},     {{1, 0, 0, 0}, 0},       {{0, 0.01, 0, 0}, 0}, {{0, 0, 0.5, 0}, 0},
            {{0, 0, 0.001, 0}, 60}, {{0, 0, 0, 1 << 20}, 0}, {{0, 0, 0, 100}, 60}};
        for (const auto& [step, expected] : cases) {
            StallWatch::Activity activity;
            watch.restart(100);
            double idle = -1;
            for (int second = 1; second <= 60; ++second) {
                activity.outputBytes += step.outputBytes;
                activity.seconds += step.seconds;
                activity.processorSeconds += step.processorSeconds;
                activity.transferredBytes += step.transferredBytes;
                idle = watch.idleSeconds(activity, 100 + second);
            }
            QCOMPARE(idle, expected);
        }
        QVERIFY(activityOfProcess(QCoreApplication::applicationPid()).transferredBytes > 0);
        QCOMPARE(stallText(59), "no progress for 59 second(s)");
        QCOMPARE(stallText(119), "no progress for a minute");
        QCOMPARE(stallText(120), "no progress for 2 minute(s)");
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
        // As newer versions write it before the first packet, and with what they add.
        file.write("out_time_us=N/A\nout_time_ms=N/A\nout_time=N/A\nspeed=N/A\nprogress=continue\n");
        QVERIFY(!progress.readNew());
        file.write("bitrate= 523.4kbits/s\nout_time_us=7000000\nout_time_ms=7000000\nelapsed=0:00:00.03\n");
        QCOMPARE(progress.readNew().value(), 7.0);
    }

    void percentages() {
        QCOMPARE(progress::percent(5, 10).value(), 50.0);
        QCOMPARE(progress::percent(10.9, 10).value(), 100.0);
        QVERIFY(!progress::percent(5, std::nullopt));
        QVERIFY(!progress::percent(5, 0));
    }

    void outputWithoutStatistics() {
        const auto said = [](const QByteArrayList& pieces) {
            ToolOutput output;
            for (const QByteArray& piece : pieces)
                output.append(piece);
            output.finish();
            const QString text = output.text();
            output.note("frame= bitrate=");
            return output.text() == text + "frame= bitrate=" ? text : "the note is lost";
        };
        QCOMPARE(said({"frame=1 bitrate=2\rreal\nframe=3 only\n"}), "realframe=3 only");
        QCOMPARE(said({"frame=1 fps", "=0 bitr", "ate=2kb/s\rafter"}), "after");
        QCOMPARE(said({"No space left", " on device\n"}), "No space left on device");
        QCOMPARE(said({"Gr\xc3", "\xbc\xc3\x9f\n"}), "Grüß");
        QCOMPARE(said({"a\xff"}), "a\uFFFD");  // Not text.
        QCOMPARE(said({"x\nframe=9 bitrate=1"}), "x");
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
        QVERIFY(output.text().contains(u"No space left on device") &&
                output.text().contains(u"File ended prematurely"));
    }

    void space() {
        using enum spacecheck::Verdict;
        QCOMPARE(spacecheck::check(10, 10, 10), Enough);
        QCOMPARE(spacecheck::check(10, 9, 100), TooLittleSpace);
        QCOMPARE(spacecheck::check(10, 100, 9), NoLargeFiles);
        QCOMPARE(spacecheck::check(10, 9, 9), TooLittleSpace);
        QCOMPARE(spacecheck::check(10, std::nullopt, std::nullopt), Enough);
    }
};

QTEST_GUILESS_MAIN(StatusTextTest)
#include "tst_StatusText.moc"
