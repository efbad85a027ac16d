#include "convert/plan/ConversionCommand.h"

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

const QString kEnd = "-progress /p.log -loglevel warning -y -strict experimental /out.mp4";

}  // namespace

class ConversionCommandTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void wholeCommands() {
        QCOMPARE(command(movie({"#1: eng (ac3) [5.1]"}), plain(1)),
                 "-i /in.mkv -stats -map 0:0 -map 0:1 -max_muxing_queue_size 2048 -scodec mov_text "
                 "-vcodec copy -acodec copy " +
                     kEnd);
        // The group of a transcoding method keeps its fixed position; with copying there is none.
        QCOMPARE(command(movie({"#1: eng (aac)"}), plain(0), true),
                 "-i /in.mkv -stats -map 0:0 -map 0:1 -max_muxing_queue_size 2048 -absf aac_adtstoasc "
                 "-scodec mov_text -vcodec copy -acodec copy " +
                     kEnd);

        ConversionSettings settings = plain(0);
        settings.set(settings::AudioVolume, 50);
        settings.set(settings::DisableBuiltinSubtitles, false);
        MKVFileInfo silent = movie({}, "hevc");
        silent.subtitleTrackIDs = {2};
        silent.subtitleFileURL = QUrl::fromLocalFile("/s.srt");
        QCOMPARE(command(silent, settings),
                 "-tag:v hvc1 -i /in.mkv -stats -map 0:0 -scodec mov_text -vcodec copy " + kEnd);
        QVERIFY(!command(movie({"#1: eng (aac)"}), settings, false, 5).contains("-acodec"));

        settings.set(settings::FixSubtitleDuration, true);
        settings.set(settings::ProduceStreamableFiles, true);
        const QString text = command(movie({"#1: eng (aac)"}, "hevc"), settings);
        QVERIFY(text.startsWith("-fix_sub_duration -tag:v hvc1 -i /in.mkv "));
        QVERIFY(text.endsWith(" -y -movflags faststart -strict experimental /out.mp4"));
    }

    void methodGroups() {
        const auto group = [](int method, int rate) {
            ConversionSettings settings = plain(2);
            settings.set(settings::CustomMP3AudioHandling, method);
            for (const auto* bitrate : std::initializer_list<const settings::Row*>{
                     &settings::AACBitrate, &settings::AACSurroundBitrate, &settings::AC3StereoBitrate,
                     &settings::AC3SurroundBitrate})
                settings.set(*bitrate, rate);
            const QString text = command(movie({"#1: eng (mp3)"}), settings);
            return text.section("-vcodec copy ", 1).section(" -progress /p.log", 0, 0);
        };
        QCOMPARE(group(0, 1), "-ac 2 -b:a 128k -acodec aac");
        QCOMPARE(group(0, 3), "-ac 2 -b:a 192k -acodec aac");
        QCOMPARE(group(0, 4), "-ac 2 -q:a 9 -acodec aac");
        for (const int outside : {8, -1})
            QCOMPARE(group(0, outside), "-ac 2 -b:a 128k -acodec aac");
        QCOMPARE(group(1, 0), "-ac 6 -b:a 224k -channel_layout 5.1(side) -acodec aac");
        QCOMPARE(group(1, 7), "-ac 6 -q:a 4 -channel_layout 5.1(side) -acodec aac");
        QCOMPARE(group(2, 2), "-ac 2 -b:a 224k -acodec ac3");
        QCOMPARE(group(2, 4), "-ac 2 -b:a 192k -acodec ac3");  // Past the end.
        QCOMPARE(group(3, 3), "-ac 6 -b:a 576k -acodec ac3");
        QCOMPARE(group(4, 0), "-acodec copy");
    }

    void volumeAndSampleRate() {
        const auto options = [](int hertz, float volume, int preset = 0) {
            ConversionSettings settings = plain(preset);
            settings.set(settings::AudioVolume, volume);
            MKVFileInfo info = movie({"#1: eng (ac3)"});
            info.audioTrackInformation[0].sampleRate = hertz;
            return command(info, settings).section(" -map 0:0 ", 1).section(" -progress", 0, 0);
        };
        const QString copied = "-max_muxing_queue_size 2048 -scodec mov_text -vcodec copy ";
        const QString aac = "-ac 2 -b:a 128k -acodec aac";
        const QString graph = "-map [out] " + copied + "-filter_complex [0:1]volume=";
        QCOMPARE(options(96000, 150), graph + "1.50[out] -ar 48000 " + aac);
        QCOMPARE(options(48000, 98), graph + "0.98[out] " + aac);
        QCOMPARE(options(0, 0), graph + "0.00[out] " + aac);
        QCOMPARE(options(48001, 100), "-map 0:1 " + copied + "-ar 48000 " + aac);
        for (const float unchanged : {99.0F, 101.0F})
            QCOMPARE(options(48000, unchanged), "-map 0:1 " + copied + aac);
        QCOMPARE(options(96000, 200, 1), "-map 0:1 " + copied + "-acodec copy");
    }

    void secondSurroundTrack() {
        ConversionSettings settings = plain(0);
        settings.set(settings::IncludeSurroundTrack, true);
        // The stream and what becomes of it.
        const auto second = [&](const QStringList& tracks) {
            const QString text = command(movie(tracks), settings);
            return text.section(" -map 0:0 -map 0:1 ", 1).section(" -max_muxing", 0, 0) +
                   text.section("-c:a:1", 1).section(" -progress", 0, 0);
        };
        const QString aac = "#1: eng (aac)";
        const QStringList inDts = {aac, "#2: ger (dts) [5.1]", "#13: eng (dts) [5.1]"};
        const QString asAc3 = " ac3 -ac:2 6 -b:a:1 448k";
        QCOMPARE(second({"#1: eng (ac3) [5.1]"}), "-map 0:1 copy");
        QCOMPARE(second({"#1: eng (dts) [5.1]", "#2: eng (ac3) [5.1]"}), "-map 0:1" + asAc3);
        QCOMPARE(second(inDts), "-map 0:13" + asAc3);
        QCOMPARE(second({aac, "#2: eng (dts) [5.1]", "#3: eng (ac3) [5.1]", "#4: eng (ac3) [5.1]"}),
                 "-map 0:3 copy");
        QVERIFY(!second({aac, "#2: eng (ac3)"}).startsWith("-map"));
        QVERIFY(!second({aac, "#2: eng (flac) [5.1]"}).startsWith("-map"));
        settings.set(settings::IncludeSurroundTrackTranscoded, false);
        QCOMPARE(second(inDts), "-map 0:13 copy");
        for (const int preset : {1, 2}) {
            settings.set(settings::ConversionPreset, preset);
            QVERIFY(!command(movie(inDts), settings).contains("-c:a:1"));
        }
    }

    void subtitles() {
        ConversionSettings settings = plain(0);
        settings.set(settings::DisableBuiltinSubtitles, false);
        MKVFileInfo info = movie({"#1: eng (aac)"});
        info.subtitleTrackIDs = {2, 3};
        QVERIFY(command(info, settings).contains("-map 0:1 -map 0:3 -map 0:2 -max_muxing_queue_size"));
        info.subtitleFileURL = QUrl::fromLocalFile("/s.srt");
        settings.set(settings::IncludeSurroundTrack, true);
        info.audioTrackInformation = {{"#1: eng (ac3) [5.1]", 48000}};
        QVERIFY(
            command(info, settings).contains("-map 0:0 -map 0:1 -map 0:1 -map 1:0 -map 0:3 -map 0:2 -max_"));
    }

    void subtitleEncodings() {
        MKVFileInfo info = movie({"#1: eng (aac)"});
        info.subtitleFileURL = QUrl::fromLocalFile("/s.srt");
        // None, a retired one, UTF-8, UTF-16, which is handed on as UTF-8, Russian, the last; outside.
        const std::pair<int, QString> encodings[] = {{0, ""},      {1, ""},       {2, "UTF-8"},
                                                     {3, "UTF-8"}, {7, "CP1251"}, {38, "ISO-8859-16"},
                                                     {39, ""},     {-1, ""}};
        for (const auto& [setting, name] : encodings) {
            ConversionSettings settings = plain(0);
            settings.set(settings::ExternalSubtitleEncoding, setting);
            const QString option = name.isEmpty() ? name : "-sub_charenc " + name + ' ';
            QVERIFY(command(info, settings)
                        .startsWith("-i /in.mkv " + option + "-i /s.srt -stats -map 0:0 -map 0:1 -map 1:0 "));
        }
    }
};

QTEST_GUILESS_MAIN(ConversionCommandTest)
#include "tst_ConversionCommand.moc"
