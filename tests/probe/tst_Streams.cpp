#include "fakes/Table.h"
#include "probe/Streams.h"

#include <QRandomGenerator>

namespace {

MovieContents parse(const QString& report) {
    return parseContents(report, u"x.mkv");
}

/// The only stream of a report.
MovieStream streamOf(const QString& line, const QString& metadata = {}) {
    const QString report = "  Stream #0:" + line + "\n    Metadata:\n" + metadata;
    return parse(report).streams.value(0);
}

QString describe(const MovieStream& stream) {
    return QString("%1 %2 %3 %4|%5|%6x%7 %8 %9 %10 %11|%12|%13")
        .arg(QString::number(stream.index), QString::number(static_cast<int>(stream.kind)), stream.codec,
             stream.profile, stream.language, QString::number(stream.width), QString::number(stream.height),
             stream.channelLayout, QString::number(stream.channels))
        .arg(stream.sampleRate)
        .arg(stream.bitRate)
        .arg(stream.dispositions.join(','), stream.isCover ? "cover" : "");
}

}  // namespace

class StreamsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void streamLines_data() {
        addRows<QString, QString>(
            {{"picture",
              "0(eng): Video: h264 (High), yuv420p(tv, bt709, progressive), 1920x1080 [SAR 1:1 DAR 16:9], 23.98 "
              "fps, 23.98 tbr, 1k tbn (default)",
              "0 0 h264 High|eng|1920x1080  0 0 0|default|"},
             {"with a tag of the container",
              "0[0x1](und): Video: hevc (Main 10) (hvc1 / 0x31637668), yuv420p10le(tv, bt2020nc/bt2020/smpte2084), "
              "3840x1600, 10000 kb/s, 25 fps (default)",
              "0 0 hevc Main 10|und|3840x1600  0 0 10000000|default|"},
             {"sound",
              "1(ger): Audio: dts (DTS-HD MA), 48000 Hz, 5.1(side), s32p (24 bit) (default) (original)",
              "1 1 dts DTS-HD MA|ger|0x0 5.1(side) 6 48000 0|default,original|"},
             {"with a decoder of another name",
              "1[0x101]: Audio: dts (dca) (DTS) ([130][0][0][0] / 0x0082), 48000 Hz, 7.1, fltp, 1536 kb/s",
              "1 1 dts DTS||0x0 7.1 8 48000 1536000||"},
             {"a commentary",
              "12(eng): Audio: eac3 (Dolby Digital Plus + Dolby Atmos), 44100 Hz, 3 channels (FL+FR+LFE), "
              "fltp, 96 kb/s (comment) (hearing impaired)",
              "12 1 eac3 Dolby Digital Plus + Dolby Atmos|eng|0x0 3 channels (FL+FR+LFE) 3 44100 96000|comment,hearing "
              "impaired|"},
             {"unknown sound", "1: Audio: none, 2 channels", "1 1 none ||0x0  0 0 0||"},
             {"subtitles of 5.1", "2(eng): Subtitle: subrip (default) (forced)",
              "2 2 subrip |eng|0x0  0 0 0|default,forced|"},
             {"picture subtitles of 7", "2(eng): Subtitle: hdmv_pgs_subtitle (pgssub), 1920x1080",
              "2 2 hdmv_pgs_subtitle |eng|1920x1080  0 0 0||"},
             {"cover",
              "4: Video: mjpeg (Baseline), yuvj444p(pc, bt470bg/unknown/unknown), 600x900 [SAR 1:1 DAR 2:3], 90k "
              "tbr, 90k tbn (attached pic)",
              "4 0 mjpeg Baseline||600x900  0 0 0|attached pic|cover"},
             {"attachment", "5: Attachment: ttf", "5 3 ttf ||0x0  0 0 0||"},
             {"data", "6[0x200]: Data: bin_data ([6][0][0][0] / 0x0006)", "6 4 bin_data ||0x0  0 0 0||"},
             {"unknown", "7: Unknown: none", "7 4 none ||0x0  0 0 0||"}});
    }
    void streamLines() {
        const auto [line, described] = row<QString, QString>();
        QCOMPARE(describe(streamOf(line)), described);
    }

    void metadata() {
        const MovieStream stream = streamOf("1(eng): Audio: ac3, 48000 Hz, stereo, fltp",
                                            "      title           : Director's: commentary\n"
                                            "                      : second line\n"
                                            "      BPS-eng         : 192000\n"
                                            "      DURATION-eng    : 01:00:10.500000000\n"
                                            "      NUMBER_OF_FRAMES-eng: 112000\n"
                                            "    Side data:\n"
                                            "      title           : of none\n");
        QCOMPARE(stream.title, "Director's: commentary\nsecond line");
        QCOMPARE(stream.bitRate, 192000);
        QCOMPARE(stream.seconds.value(), 3610.5);
        QCOMPARE(stream.frameCount.value(), 112000U);
        const MovieStream attachment =
            streamOf("3: Video: png", "      filename        : c:d.png\n      mimetype        : image/png\n");
        QVERIFY(attachment.isCover && attachment.fileName == u"c:d.png");
        const MovieStream broken =
            streamOf("0: Video: h264",
                     "      NUMBER_OF_FRAMES: -3\n      DURATION        : soon\n      title\n      x:\n");
        QVERIFY(!broken.frameCount && !broken.seconds && broken.title.isEmpty());
    }

    /// Both as tool version 5.1 prints them, and with what 7.1 adds.
    void wholeReport() {
        const MovieContents contents = parse(
            "[matroska,webm @ 0x55] Stream #2: not enough frames\n"
            "Input #0, matroska,webm, from '/a/x\n  Stream #0:9: Audio: mp3\nx.mkv':\n"
            "  Metadata:\n"
            "    title           : The\n"
            "                    : Movie\n"
            "    Stream #0:8: Audio: dts: a name\n"
            "  Duration: 01:42:17.53, start: 0.000000, bitrate: 4712 kb/s\n"
            "  Chapters:\n"
            "    Chapter #0:0: start 0.000000, end 5.000000\n"
            "      Metadata:\n"
            "        title           : Stream #0:7: Audio: ac3\n"
            "    Chapter #0:1: start 5.000000, end 9.000000\n"
            "  Program 1 \n"
            "    Metadata:\n"
            "      title           : News\n"
            "  Stream #0:1(eng): Audio: aac (LC), 48000 Hz, stereo, fltp\n"
            "    Metadata:\n"
            "      title           : a\u2028  Stream #0:6: Audio: ac3\n"
            "  Stream #0:0: Video: h264 (High), yuv420p(tv, top first), 720x576 [SAR 16:15 DAR 4:3]\n"
            "  Program 2 \n"
            "  Stream #0:1(eng): Audio: aac (LC), 48000 Hz, stereo, fltp\n"
            "  Stream group #0:0[0x1]: IAMF Audio Element:\n"
            "At least one output file must be specified\n");
        QCOMPARE(contents.formatName, "matroska,webm");
        QCOMPARE(contents.title, "The\nMovie");
        QCOMPARE(contents.chapterCount, 2);
        QCOMPARE(contents.streams.size(), 2);
        QVERIFY(contents.streams[0].isInterlaced);
        QCOMPARE(contents.streams[1].title, u"a\u2028  Stream #0:6: Audio: ac3");
        QCOMPARE(contents.stream(1), &contents.streams[1]);
        QVERIFY(!contents.stream(2));
    }

    /// The streams of random input are sorted, and each is there once.
    void noise() {
        const QStringList words =
            QString(
                "  Stream #0:~Stream #~1~(eng)~: ~Video: ~Audio: ~Subtitle: ~Metadata:\n~Side data:\n~      title   "
                "        : ~\n~\n    ~\r~,~ Hz~x~ (~)~[~0x1]~.~-~99999999999~ kb/s~Input #0, ~x.mkv':~Chapter #~DURATION"
                "        : ~::~ (default)")
                .split('~');
        QRandomGenerator random(1);
        for (int round = 0; round < 20000; ++round) {
            QString report;
            for (int i = 0; i < 40; ++i)
                report += words[random.bounded(words.size())];
            const MovieContents contents = parse(report);
            for (const MovieStream& stream : contents.streams)
                QVERIFY2(contents.stream(stream.index) == &stream, qPrintable(report));
        }
    }
};

QTEST_GUILESS_MAIN(StreamsTest)
#include "tst_Streams.moc"
