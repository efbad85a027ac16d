#include "convert/plan/ConversionCommand.h"
#include "convert/plan/PlanText.h"
#include "convert/plan/StreamText.h"
#include "fakes/Table.h"

namespace {

/// The record of a movie whose report has these stream lines.
MKVFileInfo movie(const QStringList& streams, const QString& more = {}) {
    QString report =
        "Input #0, matroska,webm, from 'x.mkv':\n  Duration: 00:00:10.00, bitrate: 1 kb/s\n" + more;
    for (qsizetype i = 0; i < streams.size(); ++i)
        report += QString("  Stream #0:%1%2\n").arg(QString::number(i), streams[i]);
    const ReportFacts facts = parseReport(report, {}, "x.mkv");
    MKVFileInfo info;
    info.fileURL = QUrl::fromLocalFile("/x.mkv");
    info.audioTrackInformation = facts.audioTracks;
    info.subtitleTrackIDs = facts.subtitleTrackIDs;
    info.videoTrackID = facts.videoTrackID.value_or(0);
    info.videoTrackCodec = facts.videoTrackCodec;
    info.contents = facts.contents;
    return info;
}

const QString kPicture = ": Video: h264 (High), yuv420p, 1920x800, 24 fps";
const QString kAc3 = "(eng): Audio: ac3, 48000 Hz, 5.1(side), fltp (default)";
const QString kCommentary =
    "(eng): Audio: aac (LC), 48000 Hz, stereo, fltp (comment)\n    Metadata:\n      title           : "
    "Director's commentary";
const QString kText = "(ger): Subtitle: subrip";
const QString kPictures = "(eng): Subtitle: hdmv_pgs_subtitle";
const QString kCover =
    ": Video: mjpeg, yuvj444p, 600x900 (attached pic)\n    Metadata:\n      mimetype        : image/jpeg";

ConversionSettings carrying(ConversionStyle style = ConversionStyle::Compatible) {
    ConversionSettings settings;
    settings.set(settings::ConversionPreset, style);
    settings.set(settings::DisableBuiltinSubtitles, false);
    return settings;
}

/// "1>1 AAC stereo, 128 kb/s": the number in the movie and in the output, and what becomes of it.
QStringList described(const ConversionPlan& plan) {
    QStringList result;
    for (const PlannedTrack& track : plan.tracks) {
        result += QString("%1>%2 %3")
                      .arg(track.stream ? QString::number(*track.stream) : "file",
                           track.output ? QString::number(*track.output) : "",
                           track.action == PlannedTrack::Action::Copied ? "copied" : track.to + track.reason);
    }
    return result;
}

}  // namespace

class ConversionPlanTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void rules_data() {
        const QString one = "only one audio track is carried";
        const QString toText = "MP4 text";
        const QString silent = "a movie without sound carries no subtitles";
        const QString off = "switched off in Preferences";
        addRows<QStringList, QStringList, QStringList>(
            {{"copied", {kPicture, kCommentary}, {}, {"0>0 copied", "1>1 copied"}},
             {"converted", {kPicture, kAc3}, {}, {"0>0 copied", "1>1 AAC stereo, 128 kb/s"}},
             {"one sound of many",
              {kPicture, kAc3, kCommentary},
              {},
              {"0>0 copied", "1>1 AAC stereo, 128 kb/s", "2> " + one}},
             {"with a second track",
              {kPicture, kAc3},
              {"IncludeSurroundTrack"},
              {"0>0 copied", "1>1 AAC stereo, 128 kb/s", "1>2 copied"}},
             {"later subtitles come first",
              {kPicture, kAc3, kText, kText, "file"},
              {"IncludeSurroundTrack"},
              {"0>0 copied", "1>1 AAC stereo, 128 kb/s", "1>2 copied", "2>5 " + toText, "3>4 " + toText,
               "file>3 " + toText}},
             {"subtitles that do not fit",
              {kPicture, kAc3, kPictures, ": Subtitle: ass", ": Subtitle: webvtt"},
              {},
              {"0>0 copied", "1>1 AAC stereo, 128 kb/s", "2> picture subtitles do not fit into MP4",
               "3> styled subtitles (ASS) would become text full of style codes",
               "4> subtitles of this format are not converted"}},
             {"switched off",
              {kPicture, kAc3, kText, kPictures, "file"},
              {"DisableBuiltinSubtitles"},
              {"0>0 copied", "1>1 AAC stereo, 128 kb/s", "2> " + off,
               "3> picture subtitles do not fit into MP4", "file>2 " + toText}},
             {"without sound",
              {kPicture, kText, "file"},
              {},
              {"0>0 copied", "1> " + silent, "file> " + silent}},
             {"what is not of the movie",
              {kCover, kPicture, kPicture, ": Attachment: ttf", ": Data: bin_data"},
              {},
              {"0> cover pictures are not carried", "1>0 copied", "2> only one picture track is carried",
               "3> attachments are not carried", "4> data is not carried"}},
             {"all that changes sound",
              {kPicture, "(eng): Audio: flac, 96000 Hz, stereo"},
              {"AudioVolume", "AACBitrate"},
              {"0>0 copied", "1>1 AAC stereo, variable rate, level 7, 48 kHz, volume 150 %"}}});
    }
    void rules() {
        const auto [streams, set, tracks] = row<QStringList, QStringList, QStringList>();
        QStringList inMovie = streams;
        const bool hasFile = inMovie.removeAll("file") > 0;
        MKVFileInfo info = movie(inMovie);
        if (hasFile) info.subtitleFileURL = QUrl::fromLocalFile("/x.srt");
        ConversionSettings chosen = carrying();
        if (set.contains("IncludeSurroundTrack")) chosen.set(settings::IncludeSurroundTrack, true);
        if (set.contains("DisableBuiltinSubtitles")) chosen.set(settings::DisableBuiltinSubtitles, true);
        if (set.contains("AudioVolume")) chosen.set(settings::AudioVolume, 150.0F);
        if (set.contains("AACBitrate")) chosen.set(settings::AACBitrate, 5);
        const ConversionPlan plan = makePlan(info, 0, chosen);
        QCOMPARE(described(plan), tracks);

        // A record without the descriptions has the same outputs.
        info.contents = {};
        const ConversionPlan bare = makePlan(info, 0, chosen);
        QCOMPARE(bare.outputs().size(), plan.outputs().size());
        for (qsizetype i = 0; i < bare.outputs().size(); ++i)
            QCOMPARE(bare.outputs()[i]->stream, plan.outputs()[i]->stream);
    }

    void remedies() {
        MKVFileInfo info = movie({kPicture, kAc3, kText});
        info.subtitleFileURL = QUrl::fromLocalFile("/x.srt");
        ConversionSettings chosen = carrying();
        chosen.set(settings::ExternalSubtitleEncoding, 7);
        const auto arguments = [&](const Remedies& remedies) {
            return conversionArguments({info, 0, false, "/p", remedies}, chosen).join(' ');
        };
        const QString usual = arguments({});
        const auto changed = [&](const QString& before, const QString& after) {
            QString expected = usual;
            return usual.count(before) == 1 ? expected.replace(before, after) : QString();
        };
        QCOMPARE(arguments({.keepsSubtitleDurations = true}), changed("-fix_sub_duration ", ""));
        QCOMPARE(arguments({.fineSubtitleTimes = true}),
                 changed("-progress /p", "-time_base:s 1/100000 -progress /p"));
        QCOMPARE(arguments({.namesFormat = true}), changed("-progress /p", "-f mp4 -progress /p"));
        QCOMPARE(arguments({.longMuxingQueue = true}), changed(" 2048 ", " 65536 "));
        QCOMPARE(arguments({.subtitleEncoding = "CP1252"}), changed("CP1251", "CP1252"));
        QCOMPARE(arguments({.subtitleEncoding = ""}), changed("-sub_charenc CP1251 ", ""));
        QCOMPARE(arguments({.withoutEmbeddedSubtitles = true}), changed("-map 0:2 ", ""));
        const QString withoutFile = arguments(
            {.fineSubtitleTimes = true, .withoutEmbeddedSubtitles = true, .withoutSubtitleFile = true});
        QVERIFY(!withoutFile.contains("x.srt") && !withoutFile.contains("1:0") &&
                !withoutFile.contains("-time_base"));
        QCOMPARE(described(makePlan(info, 0, chosen, {.withoutSubtitleFile = true})).last(),
                 "file> left out of this conversion");
    }

    void words() {
        MKVFileInfo info =
            movie({kPicture, kAc3, "(ger): Audio: dts, 48000 Hz, stereo", kCommentary, kText, kPictures,
                   kPictures, kCover, ": Attachment: none\n    Metadata:\n      filename        : a.ttf"},
                  "  Chapters:\n    Chapter #0:0: start 0, end 1\n");
        info.subtitleFileURL = QUrl::fromLocalFile("/a/Third Act.srt");
        const ConversionPlan plan = makePlan(info, 0, carrying());
        QCOMPARE(
            plantext::sentence(plan),
            "Picture: H.264 1080p, copied. Sound: English AC3 5.1 becomes AAC stereo. Subtitles: Third Act.srt, "
            "German. Left out: German, Director's commentary, 2 picture subtitle(s), 1 cover picture(s), 1 "
            "attachment(s)");
        QCOMPARE(plantext::summary(plan), "H.264 copied, AC3 5.1 to AAC stereo, 2 subtitle(s)");
        QCOMPARE(
            plantext::lines(plan),
            (QStringList{
                "Picture: H.264 1080p, copied", "Sound: English AC3 5.1 becomes AAC stereo, 128 kb/s",
                "Sound: German DTS stereo, left out (only one audio track is carried)",
                "Sound: English AAC stereo “Director's commentary”, left out (only one audio track is carried)",
                "Subtitles: German SubRip becomes MP4 text",
                "Subtitles: English PGS, left out (picture subtitles do not fit into MP4)",
                "Subtitles: English PGS, left out (picture subtitles do not fit into MP4)",
                "Cover: JPEG 600x900, left out (cover pictures are not carried)",
                "Attachment: a.ttf, left out (attachments are not carried)",
                "Subtitles: Third Act.srt becomes MP4 text", "Chapters: 1, copied"}));
        const ConversionPlan silent = makePlan(movie({kPicture, kText}), 0, carrying());
        QCOMPARE(plantext::sentence(silent),
                 "Picture: H.264 1080p, copied. Sound: none. Left out: 1 subtitle(s)");
        QCOMPARE(plantext::summary(silent), "H.264 copied, no sound");
    }

    void audioLabels() {
        const auto titled = [](const QString& line, const QString& title) {
            return line + "\n    Metadata:\n      title           : " + title;
        };
        const QString unknown = ": Audio: flac, 48000 Hz, 4.0";
        const MKVFileInfo info =
            movie({kPicture, titled(kAc3, "Same"), kAc3, kCommentary, titled(kAc3, "English Surround"),
                   unknown, kAc3, titled(kAc3, "Same"), titled(kCommentary.section('\n', 0, 0), "Same"),
                   kCommentary.section('\n', 0, 0)});
        QCOMPARE(plantext::audioLabels(info),
                 (QStringList{"English, Same, AC3 5.1 (track 1)", "English, AC3 5.1 (track 2)",
                              "English, Director's commentary", "English Surround", "FLAC 4.0",
                              "English, AC3 5.1 (track 6)", "English, Same, AC3 5.1 (track 7)",
                              "English, Same, AAC stereo", "English, commentary"}));
    }

    void pictureSizes_data() {
        addRows<int, int, QString>({{"wide 1080", 1920, 800, "1080p"},
                                    {"narrow 1080", 1440, 1080, "1080p"},
                                    {"padded 1080", 1920, 1088, "1080p"},
                                    {"2160", 3840, 1600, "2160p"},
                                    {"720", 1280, 536, "720p"},
                                    {"PAL", 720, 576, "576p"},
                                    {"NTSC", 720, 480, "480p"},
                                    {"small", 320, 240, "320x240"},
                                    {"between", 1600, 900, "1600x900"},
                                    {"upright", 1080, 1920, "1080x1920"},
                                    {"unknown", 0, 0, ""}});
    }
    void pictureSizes() {
        const auto [width, height, name] = row<int, int, QString>();
        MovieStream stream;
        stream.kind = StreamKind::Video;
        stream.width = width;
        stream.height = height;
        QCOMPARE(streamtext::format(stream), name);
    }

    void languages_data() {
        addRows<QString>({{"eng", "English"},
                          {"ger", "German"},
                          {"deu", "German"},
                          {"de", "German"},
                          {"pt-BR", "Portuguese"},
                          {"nor", "Norwegian"},
                          {"gle", "Irish"},
                          {"und", ""},
                          {"qaa", "qaa"},
                          {"x)y", "x)y"}});
    }
    void languages() {
        QCOMPARE(streamtext::languageName(QTest::currentDataTag()), std::get<0>(row<QString>()));
    }
};

QTEST_GUILESS_MAIN(ConversionPlanTest)
#include "tst_ConversionPlan.moc"
