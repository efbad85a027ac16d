#include "convert/ConversionCommand.h"

#include <QTest>

namespace {

MKVFileInfo movie(const QStringList& audio, const QString& codec = "h264") {
    MKVFileInfo info;
    info.fileURL = QUrl::fromLocalFile("/in.mkv");
    info.destinationURL = QUrl::fromLocalFile("/out.mp4");
    info.videoTrackCodec = codec;
    for (const QString& text : audio)
        info.audioTrackInformation.append({text, 48000});
    return info;
}

ConversionSettings plain(int preset) {
    ConversionSettings settings;
    settings.set(settings::ConversionPreset, preset);
    settings.set(settings::FixSubtitleDuration, false);
    return settings;
}

QString command(const MKVFileInfo& info, const ConversionSettings& settings, bool fixup = false,
                qsizetype track = 0) {
    return conversionArguments({info, track, fixup, "/p.log"}, settings).join(u' ');
}

}  // namespace

class ConversionCommandTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void copied() {
        QCOMPARE(command(movie({"#1: eng (ac3) [5.1]"}), plain(1)),
                 "-i /in.mkv -stats -map 0:0 -map 0:1 -max_muxing_queue_size 2048 -scodec mov_text -vcodec "
                 "copy -acodec copy "
                 "-progress /p.log -loglevel warning -y -strict experimental /out.mp4");
    }

    void withoutAudio() {
        ConversionSettings settings = plain(0);
        settings.set(settings::AudioVolume, 50);
        settings.set(settings::DisableBuiltinSubtitles, false);
        MKVFileInfo info = movie({}, "hevc");
        info.subtitleTrackIDs = {2};
        info.subtitleFileURL = QUrl::fromLocalFile("/s.srt");
        QCOMPARE(command(info, settings),
                 "-tag:v hvc1 -i /in.mkv -stats -map 0:0 -scodec mov_text -vcodec copy -progress /p.log "
                 "-loglevel warning -y "
                 "-strict experimental /out.mp4");
    }

    void fixup() {
        const QStringList arguments =
            conversionArguments({movie({"#1: eng (aac)"}), 0, true, "/p.log"}, plain(0));
        QCOMPARE(arguments.mid(7, 4).join(u' '), "-max_muxing_queue_size 2048 -absf aac_adtstoasc");
        // The group of a transcoding method keeps its fixed position; with copying there is none.
        QCOMPARE(arguments.mid(11, 6).join(u' '), "-scodec mov_text -vcodec copy -acodec copy");
    }

    void methodGroups_data() {
        QTest::addColumn<int>("method");
        QTest::addColumn<int>("rate");
        QTest::addColumn<QString>("group");
        QTest::newRow("AAC") << 0 << 1 << "-ac 2 -b:a 128k -acodec aac";
        QTest::newRow("AAC highest rate") << 0 << 3 << "-ac 2 -b:a 192k -acodec aac";
        QTest::newRow("AAC quality") << 0 << 4 << "-ac 2 -q:a 9 -acodec aac";
        QTest::newRow("AAC past the end") << 0 << 8 << "-ac 2 -b:a 128k -acodec aac";
        QTest::newRow("AAC below") << 0 << -1 << "-ac 2 -b:a 128k -acodec aac";
        QTest::newRow("AAC 5.1") << 1 << 0 << "-ac 6 -b:a 224k -channel_layout 5.1(side) -acodec aac";
        QTest::newRow("AAC 5.1 quality") << 1 << 7 << "-ac 6 -q:a 4 -channel_layout 5.1(side) -acodec aac";
        QTest::newRow("AC3") << 2 << 2 << "-ac 2 -b:a 224k -acodec ac3";
        QTest::newRow("AC3 past the end") << 2 << 4 << "-ac 2 -b:a 192k -acodec ac3";
        QTest::newRow("AC3 5.1") << 3 << 3 << "-ac 6 -b:a 576k -acodec ac3";
        QTest::newRow("copy") << 4 << 0 << "-acodec copy";
    }
    void methodGroups() {
        QFETCH(int, method);
        QFETCH(int, rate);
        QFETCH(QString, group);
        ConversionSettings settings = plain(2);
        settings.set(settings::CustomMP3AudioHandling, method);
        for (const settings::Row* row : std::initializer_list<const settings::Row*>{
                 &settings::AACBitrate, &settings::AACSurroundBitrate, &settings::AC3StereoBitrate,
                 &settings::AC3SurroundBitrate})
            settings.set(*row, rate);
        const QString text = command(movie({"#1: eng (mp3)"}), settings);
        QVERIFY2(text.contains("-vcodec copy " + group + " -progress /p.log"), qPrintable(text));
    }

    void volumeAndSampleRate_data() {
        QTest::addColumn<int>("hertz");
        QTest::addColumn<float>("volume");
        QTest::addColumn<QString>("inserted");
        QTest::newRow("both") << 96000 << 150.0F << "-filter_complex [0:1]volume=1.50[out] -ar 48000 ";
        QTest::newRow("rate") << 48001 << 100.0F << "-ar 48000 ";
        QTest::newRow("neither") << 48000 << 101.0F << "";
        QTest::newRow("lower bound") << 48000 << 99.0F << "";
        QTest::newRow("quieter") << 48000 << 98.0F << "-filter_complex [0:1]volume=0.98[out] ";
        QTest::newRow("silent") << 0 << 0.0F << "-filter_complex [0:1]volume=0.00[out] ";
    }
    void volumeAndSampleRate() {
        QFETCH(int, hertz);
        QFETCH(float, volume);
        QFETCH(QString, inserted);
        ConversionSettings settings = plain(0);
        settings.set(settings::AudioVolume, volume);
        MKVFileInfo info = movie({"#1: eng (flac)"});
        info.audioTrackInformation[0].sampleRate = hertz;
        const QString target = inserted.contains("[out]") ? "[out]" : "0:1";
        QCOMPARE(command(info, settings), "-i /in.mkv -stats -map 0:0 -map " + target +
                                              " -max_muxing_queue_size 2048 -scodec mov_text -vcodec copy " +
                                              inserted +
                                              "-ac 2 -b:a 128k -acodec aac -progress /p.log -loglevel "
                                              "warning -y -strict experimental /out.mp4");
    }

    void volumeLeavesACopyAlone() {
        ConversionSettings settings = plain(1);
        settings.set(settings::AudioVolume, 200);
        MKVFileInfo info = movie({"#1: eng (ac3)"});
        info.audioTrackInformation[0].sampleRate = 96000;
        QVERIFY(!command(info, settings).contains("volume"));
        QVERIFY(!command(info, settings).contains("-ar"));
    }

    void frontAndEnd() {
        ConversionSettings settings = plain(0);
        settings.set(settings::FixSubtitleDuration, true);
        settings.set(settings::ProduceStreamableFiles, true);
        const QString text = command(movie({"#1: eng (aac)"}, "hevc"), settings);
        QVERIFY(text.startsWith("-fix_sub_duration -tag:v hvc1 -i /in.mkv "));
        QVERIFY(text.endsWith(" -y -movflags faststart -strict experimental /out.mp4"));
    }

    void secondSurroundTrack_data() {
        QTest::addColumn<QStringList>("tracks");
        QTest::addColumn<QString>("map");  // empty: no second track
        QTest::addColumn<bool>("transcoded");
        const QString main = "#1: eng (aac)";
        QTest::newRow("the main track itself") << QStringList{"#1: eng (ac3) [5.1]"} << "0:1" << false;
        QTest::newRow("the main track in DTS")
            << QStringList{"#1: eng (dts) [5.1]", "#2: eng (ac3) [5.1]"} << "0:1" << true;
        QTest::newRow("same language")
            << QStringList{main, "#2: ger (dts) [5.1]", "#3: eng (dts) [5.1]"} << "0:3" << true;
        QTest::newRow("AC3 wins") << QStringList{main, "#2: eng (dts) [5.1]", "#3: eng (ac3) [5.1]",
                                                 "#4: eng (ac3) [5.1]"}
                                  << "0:3" << false;
        QTest::newRow("stereo does not count") << QStringList{main, "#2: eng (ac3)"} << "" << false;
        QTest::newRow("other codecs do not count")
            << QStringList{main, "#2: eng (flac) [5.1]"} << "" << false;
    }
    void secondSurroundTrack() {
        QFETCH(QStringList, tracks);
        QFETCH(QString, map);
        QFETCH(bool, transcoded);
        ConversionSettings settings = plain(0);
        settings.set(settings::IncludeSurroundTrack, true);
        const QString text = command(movie(tracks), settings);
        if (map.isEmpty()) {
            QVERIFY(!text.contains("-c:a:1"));
            return;
        }
        QVERIFY2(text.contains("-map 0:0 -map 0:1 -map " + map + " -max_muxing_queue_size 2048"),
                 qPrintable(text));
        const QString options =
            transcoded ? "-c:a:1 ac3 -ac:2 6 -b:a:1 448k -progress" : "-c:a:1 copy -progress";
        QVERIFY2(text.contains(options), qPrintable(text));
        settings.set(settings::IncludeSurroundTrackTranscoded, false);
        QVERIFY(command(movie(tracks), settings).contains("-c:a:1 copy -progress"));
        for (const int preset : {1, 2}) {
            settings.set(settings::ConversionPreset, preset);
            QVERIFY(!command(movie(tracks), settings).contains("-c:a:1"));
        }
    }

    void subtitles() {
        ConversionSettings settings = plain(0);
        settings.set(settings::DisableBuiltinSubtitles, false);
        MKVFileInfo info = movie({"#1: eng (aac)"});
        info.subtitleTrackIDs = {2, 3};
        QVERIFY(command(info, settings).contains("-map 0:1 -map 0:3 -map 0:2 -max_muxing_queue_size"));
        info.subtitleFileURL = QUrl::fromLocalFile("/s.srt");
        settings.set(settings::ExternalSubtitleEncoding, 7);
        QVERIFY(command(info, settings)
                    .startsWith("-i /in.mkv -sub_charenc CP1251 -i /s.srt -stats -map 0:0 -map 0:1 -map 1:0 "
                                "-map 0:3 -map 0:2 "));
        settings.set(settings::IncludeSurroundTrack, true);
        info.audioTrackInformation = {{"#1: eng (ac3) [5.1]", 48000}};
        QVERIFY(
            command(info, settings).contains("-map 0:0 -map 0:1 -map 0:1 -map 1:0 -map 0:3 -map 0:2 -max_"));
    }

    void subtitleEncodings_data() {
        QTest::addColumn<int>("setting");
        QTest::addColumn<QString>("encoding");
        QTest::newRow("none") << 0 << "";
        QTest::newRow("retired") << 1 << "";
        QTest::newRow("UTF-8") << 2 << "UTF-8";
        QTest::newRow("UTF-16 is handed on as UTF-8") << 3 << "UTF-8";
        QTest::newRow("last") << 38 << "ISO-8859-16";
        QTest::newRow("past the end") << 39 << "";
        QTest::newRow("negative") << -1 << "";
    }
    void subtitleEncodings() {
        QFETCH(int, setting);
        QFETCH(QString, encoding);
        ConversionSettings settings = plain(0);
        settings.set(settings::ExternalSubtitleEncoding, setting);
        MKVFileInfo info = movie({"#1: eng (aac)"});
        info.subtitleFileURL = QUrl::fromLocalFile("/s.srt");
        const QString option = encoding.isEmpty() ? "" : "-sub_charenc " + encoding + ' ';
        QVERIFY(command(info, settings).startsWith("-i /in.mkv " + option + "-i /s.srt -stats "));
    }

    void trackPastTheEndIsNoAudio() {
        QVERIFY(!command(movie({"#1: eng (aac)"}), plain(0), false, 5).contains("-acodec"));
    }
};

QTEST_GUILESS_MAIN(ConversionCommandTest)
#include "tst_ConversionCommand.moc"
