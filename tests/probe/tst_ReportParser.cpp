#include "fakes/Table.h"
#include "fakes/TestHome.h"
#include "probe/ReportParser.h"
#include "settings/Keys.h"
#include "support/store/Defaults.h"

#include <QRandomGenerator>

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

/// What the versions of the tool print for one movie.
struct Version {
    QString colours = "tv, bt709/unknown/unknown, progressive";
    QString start = {};  ///< Of the first two streams.
    QString dtsDecoder = " (dca)";
    QString mp3Decoder = " (mp3float)";
    QString subtitleDecoder = " (srt)";
    QString styledDecoder = " (ssa)";
    QString tagIndentation = "      ";
    QString end = {};
};

QString reportOf(const Version& version) {
    const QString cover = "mimetype        : image/jpeg";
    const std::initializer_list<std::pair<QString, QString>> streams = {
        {": Video: h264 (High), yuv420p(" + version.colours +
             "), 320x240 [SAR 1:1 DAR 4:3], 25 fps, 25 tbr, 1k tbn" + version.start,
         "ENCODER         : Lavc libx264"},
        {"(ger): Audio: ac3, 44100 Hz, 5.1(side), fltp, 448 kb/s" + version.start + " (default) (original)",
         "title           : Stream #0:9: Audio"},
        {": Audio: dts" + version.dtsDecoder +
             " (DTS), 48000 Hz, 5.1(side), fltp, 1411 kb/s (hearing impaired)",
         {}},
        {": Audio: mp3" + version.mp3Decoder + " (U[0][0][0] / 0x0055), 44100 Hz, mono, fltp, 64 kb/s", {}},
        {"(eng): Subtitle: subrip" + version.subtitleDecoder + " (forced) (hearing impaired)", {}},
        {": Subtitle: ass" + version.styledDecoder, {}},
        {": Video: mjpeg (Baseline), yuvj420p(pc, bt470bg/unknown/unknown), 60x90 [SAR 1:1 DAR 2:3], 90k tbr, "
         "90k tbn (attached pic)",
         cover}};
    QString report =
        "Input #0, matroska,webm, from 'x.mkv':\n"
        "  Metadata:\n"
        "    title           : Movie\n"
        "  Duration: 00:00:01.04, start: 0.000000, bitrate: 2668 kb/s\n"
        "  Chapters:\n"
        "    Chapter #0:0: start 0.000000, end 0.500000\n"
        "      Metadata:\n"
        "        title           : One\n";
    int number = 0;
    for (const auto& [line, tag] : streams) {
        report += QString("  Stream #0:%1%2\n").arg(QString::number(number++), line);
        for (const QString& tagLine :
             {QString("Metadata:"), "  " + tag, QString("  DURATION        : 00:00:01.021")})
            report += version.tagIndentation + tagLine + '\n';
    }
    return report + version.end + "At least one output file must be specified\n";
}

template <typename Verdicts>
QStringList keysOf(const Verdicts& verdicts) {
    QStringList keys;
    for (const Verdict& verdict : verdicts)
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
            "    Stream #0:6(eng): Subtitle: ssa\n"
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

    void versionsOfTheTool_data() {
        addRows<QString>(
            {{"5.1", reportOf({.colours = "tv, bt709, progressive",
                               .dtsDecoder = {},
                               .mp3Decoder = {},
                               .subtitleDecoder = {},
                               .styledDecoder = {},
                               .tagIndentation = "    "})},
             {"6.1", reportOf({.subtitleDecoder = {}, .styledDecoder = {}, .tagIndentation = "    "})},
             {"7.1", reportOf({})},
             {"8.0", "[in#0 @ 0x55e9] Stream #2: not enough frames to estimate rate\n" +
                         reportOf({.colours = "tv, bt709/unknown/unknown, progressive, left",
                                   .start = ", start 0.021",
                                   .end = "  Stream group #0:0[0x1]: Tile Grid: hevc (Main) (default)\n"})}});
    }
    void versionsOfTheTool() {
        const auto [report] = row<QString>();
        const ReportFacts facts = parseReport(report, {}, "x.mkv");
        QVERIFY(!facts.rejected && facts.verdicts.empty());
        QCOMPARE(facts.informationString(),
                 "Duration: 00:00:01  Bitrate: 2668 kb/s  Resolution: 320x240  Audiotracks: 3 (2)");
        QCOMPARE(facts.audioTracks, (QList<AudioEntry>{{"#1: ger (ac3) [5.1]", 44100},
                                                       {"#2: unk (dts) [5.1]", 48000},
                                                       {"#3: unk (mp3)", 44100}}));
        QCOMPARE(facts.subtitleTrackIDs, QList<int>{4});
        QCOMPARE(facts.contents.title, "Movie");
        QCOMPARE(facts.contents.chapterCount, 1);
        QStringList described;
        for (const MovieStream& stream : facts.contents.streams) {
            described.append(
                QString("%1 %2 %3 %4 %5%6")
                    .arg(stream.codec, stream.profile, stream.title, stream.dispositions.join('+'))
                    .arg(stream.channels)
                    .arg(stream.isCover ? " cover" : ""));
            QCOMPARE(stream.seconds.value(), 1.021);
        }
        QCOMPARE(described,
                 (QStringList{"h264 High   0", "ac3  Stream #0:9: Audio default+original 6",
                              "dts DTS  hearing impaired 6", "mp3    1", "subrip   forced+hearing impaired 0",
                              "ass    0", "mjpeg Baseline  attached pic 0 cover"}));
    }

    void audioLines() {
        const auto read = [](const QString& line, const settings::Snapshot& settings = {}) {
            const AudioEntry entry =
                parse(kVideo + "    Stream #0:" + line + "\n", settings).audioTracks.value(0);
            return QString("%1 %2").arg(entry.text).arg(entry.sampleRate);
        };
        QCOMPARE(read("2: Audio: aac (LC), 44100 Hz, stereo, fltp"), "#2: unk (aac) 44100");
        QCOMPARE(read("1[0x101](eng): Audio: mp2 ([3][0][0][0] / 0x0003), 48000 Hz, stereo"),
                 "#1: eng (mp2) 48000");
        QCOMPARE(read("12[0x2]: Audio: aac, 48000 Hz, stereo"), "#12: unk (aac) 48000");
        QCOMPARE(read("1[eng]: Audio: aac, 48000 Hz, stereo"), "#1: [eng] (aac) 48000");
        // All of more channels are marked alike, but 5.0 is none of them.
        QCOMPARE(read("1(eng): Audio: flac, 96000 Hz, 7.1, s32 (24 bit)"), "#1: eng (flac) [5.1] 96000");
        QCOMPARE(read("1(eng): Audio: dts (DTS-ES), 48000 Hz, 6.1, fltp"), "#1: eng (dts) [5.1] 48000");
        QCOMPARE(read("1(eng): Audio: dts, 48000 Hz, 5.0(side), fltp"), "#1: eng (dts) 48000");
        QCOMPARE(read("1(eng): Audio: none, 2 channels"), "#1: eng (none) 0");
        QCOMPARE(read("10(de1): Audio: mp3, 48000 Hz, mono"), "#10: de (mp3) 48000");
        settings::Snapshot all;
        for (const auto* setting :
             {&settings::HEAACConvert, &settings::EAC3Convert, &settings::DontConvertAACMain})
            all.set(*setting, true);
        const QString main = "1(eng): Audio: aac (Main), 48000 Hz, stereo";
        QCOMPARE(read(main), "#1: eng (aac-main) 48000");
        QCOMPARE(read(main, all), "#1: eng (aac) 48000");
        const QString eac3 = "1(eng): Audio: eac3, 48000 Hz, 5.1(side)";
        QCOMPARE(read(eac3), "#1: eng (ac3) [5.1] 48000");
        QCOMPARE(read(eac3, all), "#1: eng (eac3) [5.1] 48000");
        const QString heaac = "1(eng): Audio: aac (HE-AACv2), 48000 Hz, stereo";
        QCOMPARE(read(heaac), "#1: eng (aac) 48000");
        QCOMPARE(read(heaac, all), "#1: eng (he-aac) 48000");
    }

    void durations_data() {
        const QString unknown = "Duration: (null)  Bitrate: (null)";
        addRows<QString, int, int, QString>(
            {// line, seconds, seconds where only they are asked for, information
             {"plain", "Duration: 00:00:09.98, start: 0.000000, bitrate: 10 kb/s", 9, 9,
              "Duration: 00:00:09  Bitrate: 10 kb/s"},
             {"ten hours", "Duration: 10:00:00.00, bitrate: N/A", 36000, 36000,
              "Duration: 10:00:00  Bitrate: N/A"},
             {"not known", "Duration: N/A, bitrate: N/A", -1, -1,
              "Duration: N/A, bitrate: N/A  Bitrate: (null)"},
             {"another word", "Durations vary", -1, -1, unknown},
             {"no line", "nothing", -1, -1, unknown},
             {"the last counts",
              "Duration: 00:00:01.00, bitrate: 1 kb/s\n  Duration: 00:00:02.00, bitrate: 2 kb/s", 2, -1,
              "Duration: 00:00:02  Bitrate: 2 kb/s"}});
    }
    void durations() {
        const auto [line, seconds, only, information] = row<QString, int, int, QString>();
        const ReportFacts facts = parseReport("  " + line + "\n" + kVideo, {}, "x.mkv");
        QCOMPARE(facts.runtimeSeconds.value_or(-1), seconds);
        QVERIFY2(facts.informationString().startsWith(information + "  "),
                 qPrintable(facts.informationString()));
        QCOMPARE(durationInReport("a\n  " + line + "\nb"), only);
    }

    void verdicts_data() {
        const auto video = [](const QString& description) {
            return "    Stream #0:0: Video: " + description + "\n";
        };
        const QString heaac = "    Stream #0:1: Audio: aac (HE-AAC), 48000 Hz, stereo\n";
        // Streams, and the keys of the warnings in order. A rejection, which ends the parsing, has no key.
        addRows<QString, QStringList>(
            {{"plain", kVideo, {}},
             {"mpeg4", video("mpeg4, 640x480"), {}},
             {"hevc", video("hevc (Main 10), yuv420p10le, 1920x1080"), {"hevcvideowarning"}},
             {"vp9", video("vp9 (Profile 0), 640x480"), {"wrongvideowarning"}},
             {"10 bits", video("h264 (High 10), 640x480"), {"10bitvideowarning"}},
             {"vp8", video("vp8, 640x480"), {""}},
             {"rejected ends it", heaac + video("wmv3, 3000x10") + heaac, {"warningheaac", ""}},
             {"wide", video("h264, 1921x800"), {"warningtoohighres"}},
             {"five references", video("h264, 1920x1080|refs: 5|"), {"warningtoomanyrefframes"}},
             {"four references", video("h264, 1920x1080|refs: 4|"), {}},
             {"nine small", video("h264, 1280x720|refs: 9|"), {}},
             {"ten small", video("h264, 1280x720|refs: 10|"), {"warningtoomanyrefframes"}},
             {"no height", video("h264, 1920x|refs: 99|"), {}},
             {"E-AC3", kVideo + "    Stream #0:1: Audio: eac3, 48000 Hz, stereo\n", {"warningeac3"}},
             {"only audio", heaac, {"warningheaac", ""}},
             {"only a cover", video("png, 300x300") + "      mimetype        : image/png\n", {""}},
             {"screen capture", kVideo + "      comment         : Movie/video screen capture\n", {""}},
             {"nothing", "", {""}}});
    }
    void verdicts() {
        const auto [streams, keys] = row<QString, QStringList>();
        const ReportFacts facts = parse(streams);
        QCOMPARE(keysOf(facts.verdicts), keys);
        QCOMPARE(facts.rejected, keys.contains(""));
    }

    void texts() {
        const auto messages = [](const QString& streams) {
            QStringList result;
            for (const Verdict& verdict : parse(streams).verdicts)
                result.append(verdict.message);
            return result.join('|');
        };
        QCOMPARE(messages("    Stream #0:0: Video: vp8, yuv420p, 640x480\n"),
                 "Warning: the file 'x.mkv' contains an invalid video codec (vp8) and can't be converted by "
                 "Ravelin.");
        const QString warnings = messages(
            "    Stream #0:0: Video: vp9, 640x480\n    Stream #0:1: Audio: eac3, 48000 Hz, stereo\n");
        QVERIFY(warnings.startsWith(
            "The file 'x.mkv' doesn't contain a H264/MPEG4 video track (videocodec: vp9) so the result may not "
            "be playable.|"));
        QVERIFY(warnings.contains("similar to AC3 but not 100% the same."));
    }

    void eac3WarningReadsTheSettingsWhenItIsDue() {
        const TestHome home;
        const auto isDue = [](bool surround, int preset, int stereoHandling, int surroundHandling) {
            const Verdict verdict = verdicts::eac3("x.mkv", surround);
            setDefaultInt(kConversionPresetKey, preset);
            setDefaultInt(kCustomAC3AudioHandlingKey, stereoHandling);
            setDefaultInt(kCustomAC351AudioHandlingKey, surroundHandling);
            return verdict.isDue();
        };
        QVERIFY(!isDue(false, 0, 4, 4));  // Compatible.
        QVERIFY(isDue(true, 1, 0, 0));    // Fast.
        QVERIFY(isDue(false, 2, 4, 0));   // Custom, with what is copied.
        QVERIFY(!isDue(false, 2, 0, 4));
        QVERIFY(isDue(true, 2, 0, 4));
        QVERIFY(!isDue(true, 3, 4, 4));  // Unknown.
    }

    /// The facts from random input are consistent.
    void noise() {
        const QStringList words =
            QString(
                "Stream~ #0:1~(eng)~: ~Video: ~Audio: ~Subtitle: ~Duration~: ~:~\n~\r~,~ Hz~x~|refs: ~|~eac3~"
                "[~0x1]~.~-~99999999999")
                .split('~');
        QRandomGenerator random(1);
        for (int round = 0; round < 5000; ++round) {
            QString report;
            for (int i = 0; i < 30; ++i)
                report += words[random.bounded(words.size())];
            const ReportFacts facts = parseReport(report, {}, "x.mkv");
            const qint32 only = durationInReport(report);  // The same, or not known.
            const bool isSound = facts.rejected == !facts.videoTrackID &&
                                 facts.rejected == keysOf(facts.verdicts).contains("") &&
                                 facts.audioTracks.size() <= report.count("Audio: ") &&
                                 facts.subtitleTrackIDs.size() <= facts.subtitleCount &&
                                 facts.subtitleCount <= report.count("Subtitle: ") &&
                                 (only == -1 || only == facts.runtimeSeconds || !facts.runtimeSeconds ||
                                  report.count("Duration") > 1);
            QVERIFY2(isSound, qPrintable(report));
        }
    }
};

QTEST_GUILESS_MAIN(ReportParserTest)
#include "tst_ReportParser.moc"
