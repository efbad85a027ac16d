#include "fakes/TestHome.h"
#include "probe/ReportParser.h"
#include "settings/Keys.h"
#include "support/Defaults.h"

#include <QElapsedTimer>
#include <QTest>

namespace {

const QString kHead =
    "Input #0, matroska,webm, from 'x.mkv':\n"
    "  Metadata:\n"
    "    encoder         : libebml\n"
    "  Duration: 01:42:17.53, start: 0.000000, bitrate: 4712 kb/s\n";

const QString kVideo =
    "    Stream #0:0(eng): Video: h264 (High), yuv420p(progressive), 1920x1080 [SAR 1:1 DAR 16:9], 25 fps\n";

ReportFacts parse(const QString& streams, const settings::Snapshot& settings = {}) {
    return parseReport(kHead + streams, settings, "x.mkv");
}

QStringList keysOf(const ReportFacts& facts) {
    QStringList keys;
    for (const Verdict& verdict : facts.verdicts)
        keys.append(verdict.key);
    return keys;
}

}  // namespace

class ReportParserTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void wholeReport() {
        const ReportFacts facts = parse(
            "    Stream #0:0: Video: mjpeg (Baseline), yuvj420p(pc), 600x900, 90k tbr (attached pic)\n"
            "    Metadata:\n"
            "      filename        : cover.jpg\n"
            "      mimetype        : image/jpeg\n"
            "    Stream #0:1(eng): Video: h264 (High) (avc1 / 0x31637661), yuv420p, 1280x720 [SAR 1:1 DAR "
            "16:9]|refs: 4|, 25 fps\n"
            "    Stream #0:2(ger): Audio: dts (DTS), 48000 Hz, 5.1(side), fltp, 1536 kb/s (default)\n"
            "    Metadata:\n"
            "      title           : Video: a commentary\n"
            "    Stream #0:3: Audio: aac (LC), 44100 Hz, stereo, fltp\n"
            "    Stream #0:4(eng): Subtitle: subrip\n"
            "    Stream #0:5(eng): Subtitle: hdmv_pgs_subtitle\n"
            "    Stream #0:6(eng): Subtitle: ass (ssa)\n"
            "    Stream #0:7(eng): Subtitle: ass\n"
            "    Stream #0:8: Video: h264, yuv420p, 640x480\n"
            "At least one output file must be specified\n");
        QVERIFY(!facts.rejected);
        QCOMPARE(facts.videoTrackID.value(), 1);
        QCOMPARE(facts.videoTrackCodec, "h264");
        QCOMPARE(facts.resolution.value(), "1280x720");
        QCOMPARE(facts.runtimeSeconds.value(), 6137);
        QCOMPARE(facts.audioTracks,
                 (QList<AudioEntry>{{"#2: ger (dts) [5.1]", 48000}, {"#3: unk (aac)", 44100}}));
        QCOMPARE(facts.subtitleTrackIDs, (QList<int>{4, 6}));
        QCOMPARE(facts.informationString(),
                 "Duration: 01:42:17  Bitrate: 4712 kb/s  Resolution: 1280x720  Audiotracks: 2 (4)");
        QVERIFY(facts.verdicts.empty());
    }

    void audioLines_data() {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("entry");
        QTest::addColumn<int>("hertz");
        const auto row = [](const char* name, const char* line, const char* entry, int hertz) {
            QTest::newRow(name) << QString(line) << QString(entry) << hertz;
        };
        row("no language", "Stream #0:2: Audio: aac (LC), 44100 Hz, stereo, fltp", "#2: unk (aac)", 44100);
        row("container's number",
            "Stream #0:1[0x101](eng): Audio: mp2 ([3][0][0][0] / 0x0003), 48000 Hz, stereo, s16p",
            "#1: eng (mp2)", 48000);
        row("number without language", "Stream #0:12[0x2]: Audio: aac, 48000 Hz, stereo", "#12: unk (aac)",
            48000);
        row("7.1 is marked alike", "Stream #0:1(eng): Audio: flac, 96000 Hz, 7.1, s32 (24 bit)",
            "#1: eng (flac) [5.1]", 96000);
        row("6.1", "Stream #0:1(eng): Audio: dts (DTS-ES), 48000 Hz, 6.1, fltp", "#1: eng (dts) [5.1]",
            48000);
        row("5.0 is not surround", "Stream #0:1(eng): Audio: dts, 48000 Hz, 5.0(side), fltp", "#1: eng (dts)",
            48000);
        row("no sample rate", "Stream #0:1(eng): Audio: none, 2 channels", "#1: eng (none)", 0);
        row("ends in digits", "Stream #0:10(de1): Audio: mp3, 48000 Hz, mono", "#10: de (mp3)", 48000);
        row("AAC Main", "Stream #0:1(eng): Audio: aac (Main), 48000 Hz, stereo", "#1: eng (aac-main)", 48000);
        row("E-AC3", "Stream #0:1(eng): Audio: eac3, 48000 Hz, 5.1(side)", "#1: eng (ac3) [5.1]", 48000);
        row("HE-AAC", "Stream #0:1(eng): Audio: aac (HE-AAC), 48000 Hz, stereo", "#1: eng (aac)", 48000);
    }
    void audioLines() {
        QFETCH(QString, line);
        QFETCH(QString, entry);
        QFETCH(int, hertz);
        const ReportFacts facts = parse(kVideo + "    " + line + "\n");
        QCOMPARE(facts.audioTracks, (QList<AudioEntry>{{entry, hertz}}));
    }

    void audioBySettings() {
        settings::Snapshot all;
        for (const settings::Setting<bool>& setting :
             {settings::HEAACConvert, settings::EAC3Convert, settings::DontConvertAACMain})
            all.set(setting, true);
        const auto codec = [&](const QString& description) {
            return parse(kVideo + "    Stream #0:1(eng): Audio: " + description + ", 48000 Hz, stereo\n", all)
                .audioTracks.first()
                .codec();
        };
        QCOMPARE(codec("aac (HE-AACv2)"), "he-aac");
        QCOMPARE(codec("eac3"), "eac3");
        QCOMPARE(codec("aac (Main)"), "aac");
    }

    void durations_data() {
        QTest::addColumn<QString>("line");
        QTest::addColumn<int>("seconds");  // -1: none
        QTest::addColumn<QString>("information");
        QTest::newRow("plain") << "Duration: 00:00:09.98, start: 0.000000, bitrate: 10 kb/s" << 9
                               << "Duration: 00:00:09  Bitrate: 10 kb/s";
        QTest::newRow("ten hours") << "Duration: 10:00:00.00, bitrate: N/A" << 36000
                                   << "Duration: 10:00:00  Bitrate: N/A";
        QTest::newRow("not known") << "Duration: N/A, bitrate: N/A" << -1
                                   << "Duration: N/A, bitrate: N/A  Bitrate: (null)";
        QTest::newRow("another word") << "Durations vary" << -1 << "Duration: (null)  Bitrate: (null)";
        QTest::newRow("no line") << "nothing" << -1 << "Duration: (null)  Bitrate: (null)";
        QTest::newRow("the last counts")
            << "Duration: 00:00:01.00, bitrate: 1 kb/s\n  Duration: 00:00:02.00, bitrate: 2 kb/s" << 2
            << "Duration: 00:00:02  Bitrate: 2 kb/s";
    }
    void durations() {
        QFETCH(QString, line);
        QFETCH(QString, information);
        const ReportFacts facts = parseReport("  " + line + "\n" + kVideo, {}, "x.mkv");
        QTEST(facts.runtimeSeconds.value_or(-1), "seconds");
        QVERIFY2(facts.informationString().startsWith(information + "  "),
                 qPrintable(facts.informationString()));
    }

    void onlyDuration() {
        QCOMPARE(durationInReport("a\n  Duration: 00:01:09.98, start\nb"), 69);
        QCOMPARE(durationInReport("no such line"), -1);
        QCOMPARE(durationInReport("Duration: 00:00:01.0\nDuration: 00:00:01.0"), -1);
        QCOMPARE(durationInReport("Duration: N/A, bitrate: N/A"), -1);
    }

    void verdicts_data() {
        QTest::addColumn<QString>("streams");
        QTest::addColumn<QStringList>("keys");  // of the warnings, in the order taken
        QTest::addColumn<bool>("rejected");
        const auto video = [](const QString& description) {
            return "    Stream #0:0: Video: " + description + "\n";
        };
        const QString heaac = "    Stream #0:1: Audio: aac (HE-AAC), 48000 Hz, stereo\n";
        QTest::newRow("plain") << kVideo << QStringList{} << false;
        QTest::newRow("mpeg4") << video("mpeg4, 640x480") << QStringList{} << false;
        QTest::newRow("hevc") << video("hevc (Main 10), yuv420p10le, 1920x1080")
                              << QStringList{"hevcvideowarning"} << false;
        QTest::newRow("vp9") << video("vp9 (Profile 0), 640x480") << QStringList{"wrongvideowarning"}
                             << false;
        QTest::newRow("10 bits") << video("h264 (High 10), 640x480") << QStringList{"10bitvideowarning"}
                                 << false;
        QTest::newRow("both") << video("vp9 (High 10), 640x480")
                              << QStringList{"wrongvideowarning", "10bitvideowarning"} << false;
        QTest::newRow("vp8") << video("vp8, 640x480") << QStringList{""} << true;
        QTest::newRow("rejected ends it")
            << heaac + video("wmv3, 3000x10") + heaac << QStringList{"warningheaac", ""} << true;
        QTest::newRow("wide") << video("h264, 1921x800") << QStringList{"warningtoohighres"} << false;
        QTest::newRow("five references")
            << video("h264, 1920x1080|refs: 5|") << QStringList{"warningtoomanyrefframes"} << false;
        QTest::newRow("four references") << video("h264, 1920x1080|refs: 4|") << QStringList{} << false;
        QTest::newRow("nine small") << video("h264, 1280x720|refs: 9|") << QStringList{} << false;
        QTest::newRow("ten small") << video("h264, 1280x720|refs: 10|")
                                   << QStringList{"warningtoomanyrefframes"} << false;
        QTest::newRow("no height") << video("h264, 1920x|refs: 99|") << QStringList{} << false;
        QTest::newRow("two HE-AAC") << kVideo + heaac + heaac << QStringList{"warningheaac", "warningheaac"}
                                    << false;
        QTest::newRow("E-AC3") << kVideo + "    Stream #0:1: Audio: eac3, 48000 Hz, stereo\n"
                               << QStringList{"warningeac3"} << false;
        QTest::newRow("only audio") << heaac << QStringList{"warningheaac", ""} << true;
        QTest::newRow("only a cover")
            << video("png, 300x300") + "    Metadata:\n      mimetype        : image/png\n"
            << QStringList{""} << true;
        QTest::newRow("screen capture")
            << kVideo.trimmed() + "\n      comment         : Movie/video screen capture\n"
            << QStringList{""} << true;
        QTest::newRow("nothing") << QString() << QStringList{""} << true;
    }
    void verdicts() {
        QFETCH(QString, streams);
        QFETCH(QStringList, keys);
        const ReportFacts facts = parse(streams);
        QCOMPARE(keysOf(facts), keys);
        QTEST(facts.rejected, "rejected");
    }

    void texts() {
        const ReportFacts rejected = parse("    Stream #0:0: Video: vp8, yuv420p, 640x480\n");
        QCOMPARE(rejected.verdicts.back().message,
                 "Warning: the file 'x.mkv' contains an invalid video codec (vp8) and can't be converted by "
                 "Ravelin.");
        QCOMPARE(rejected.verdicts.back().title, "Ravelin");
        const ReportFacts warned =
            parse("    Stream #0:0: Video: vp9, 640x480\n    Stream #0:1: Audio: eac3, 48000 Hz, stereo\n");
        QCOMPARE(warned.verdicts.front().message,
                 "The file 'x.mkv' doesn't contain a H264/MPEG4 video track (videocodec: vp9) so the result "
                 "may not be playable.");
        QVERIFY(warned.verdicts.back().message.contains("similar to AC3 but not 100% the same."));
    }

    void straightOverComesFirst() {
        const ReportFacts facts = parse(
            "    Stream #0:0: Audio: aac (HE-AAC), 48000 Hz, stereo\n    Stream #0:1: Video: hevc, "
            "1921x1080\n");
        QStringList keys;
        for (const Verdict& verdict : verdicts::inOrderOfShowing(facts.verdicts))
            keys.append(verdict.key);
        QCOMPARE(keys, (QStringList{"hevcvideowarning", "warningheaac", "warningtoohighres"}));
    }

    void eac3WarningReadsTheSettingsWhenItIsDue_data() {
        QTest::addColumn<bool>("surround");
        QTest::addColumn<int>("preset");
        QTest::addColumn<int>("stereoHandling");
        QTest::addColumn<int>("surroundHandling");
        QTest::addColumn<bool>("due");
        QTest::newRow("compatible") << false << 0 << 4 << 4 << false;
        QTest::newRow("fast") << true << 1 << 0 << 0 << true;
        QTest::newRow("custom, copied") << false << 2 << 4 << 0 << true;
        QTest::newRow("custom, not copied") << false << 2 << 0 << 4 << false;
        QTest::newRow("custom, surround copied") << true << 2 << 0 << 4 << true;
        QTest::newRow("unknown style") << true << 3 << 4 << 4 << false;
    }
    void eac3WarningReadsTheSettingsWhenItIsDue() {
        const TestHome home;
        QFETCH(bool, surround);
        QFETCH(int, preset);
        QFETCH(int, stereoHandling);
        QFETCH(int, surroundHandling);
        const Verdict verdict = verdicts::eac3("x.mkv", surround);
        setDefaultInt(kConversionPresetKey, preset);
        setDefaultInt(kCustomAC3AudioHandlingKey, stereoHandling);
        setDefaultInt(kCustomAC351AudioHandlingKey, surroundHandling);
        QTEST(verdict.isDue(), "due");
    }

    /// Ten times the report may cost about ten times the time, whatever its shape.
    void timeIsLinear_data() {
        QTest::addColumn<QString>("line");
        QTest::newRow("streams") << "    Stream #0:1(eng): Audio: ac3, 48000 Hz, 5.1(side), fltp, 640 kb/s\n";
        QTest::newRow("metadata") << "      title           : a picture: x comment\n";
        QTest::newRow("durations") << "  Duration: 01:42:17.53, start: 0.000000, bitrate: 4712 kb/s\n";
        QTest::newRow("covers")
            << "    Stream #0:1: Video: mjpeg, 600x900\n      mimetype        : image/jpeg\n";
        QTest::newRow("newlines") << "\r\n\r\n\r\n";
    }
    void timeIsLinear() {
        QFETCH(QString, line);
        const auto cost = [&](qsizetype size) {
            const QString report = kHead + kVideo + line.repeated(size / line.size());
            QElapsedTimer timer;
            timer.start();
            const ReportFacts facts = parseReport(report, {}, "x.mkv");
            return facts.videoTrackID ? timer.nsecsElapsed() : 0;
        };
        cost(100'000);
        const qint64 small = qMin(cost(400'000), cost(400'000));
        const qint64 large = qMin(cost(4'000'000), cost(4'000'000));
        QVERIFY2(small > 0 && large < 40 * small, qPrintable(QString("%1 %2").arg(small).arg(large)));
    }

    void noiseDoesNotCrash() {
        const QStringList words = {"Stream",     " #0:1",    "(eng)", ": ",      "Video: ",    "Audio: ",
                                   "Subtitle: ", "Duration", ": ",    ":",       "\n",         "\r",
                                   ",",          " Hz",      "x",     "|refs: ", "|",          "eac3",
                                   "[",          "0x1]",     ".",     "-",       "99999999999"};
        quint32 seed = 1;
        for (int round = 0; round < 20000; ++round) {
            QString report;
            for (int i = 0; i < 30; ++i) {
                seed = seed * 1664525 + 1013904223;
                report += words[static_cast<qsizetype>(seed >> 8) % words.size()];
            }
            parseReport(report, {}, "x.mkv");
            durationInReport(report);
        }
    }
};

QTEST_GUILESS_MAIN(ReportParserTest)
#include "tst_ReportParser.moc"
