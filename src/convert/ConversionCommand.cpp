#include "convert/ConversionCommand.h"

#include "settings/Keys.h"
#include "settings/SettingsTable.h"
#include "support/base/Format.h"

namespace {

constexpr int kAudioMapTarget = 6;  // the value of the audio "-map"
constexpr int kBehindMaps = 7;
constexpr int kAudioOptions = 13;
constexpr int kFirstQualityLevel = 4;      // AAC rates from here on are quality levels
constexpr int kHighestSampleRate = 48000;  // Hz; what players take

void insert(QStringList& list, qsizetype position, const QStringList& items) {
    for (qsizetype i = 0; i < items.size(); ++i)
        list.insert(position + i, items[i]);
}

void insertBeforeDestination(QStringList& arguments, const QStringList& items) {
    insert(arguments, arguments.size() - 1, items);
}

/// The index itself; one past the list's end means the registered default.
int fittingIndex(const QStringList& list, int index, const QString& key) {
    return index >= 0 && index < list.size() ? index : settings::registeredInt(key);
}

QString entry(const QStringList& list, int index, const QString& key) {
    return list.at(fittingIndex(list, index, key));
}

QStringList aacRate(const QStringList& rates, int index, const QString& key) {
    const int fitting = fittingIndex(rates, index, key);
    return {fitting < kFirstQualityLevel ? "-b:a" : "-q:a", rates.at(fitting)};
}

QString ac3SurroundRate(const ConversionSettings& settings) {
    return entry({"384k", "448k", "512k", "576k"}, settings.ac3SurroundBitrate, kAC3SurroundBitrateKey);
}

/// Channels and bit rate.
QStringList audioOptions(ConversionMethod method, const ConversionSettings& settings) {
    switch (method) {
        case ConversionMethod::AacStereo:
            return QStringList{"-ac", "2"} + aacRate({"96k", "128k", "160k", "192k", "9", "7", "5", "4"},
                                                     settings.aacBitrate, kAACBitrateKey);
        case ConversionMethod::AacSurround:
            return QStringList{"-ac", "6"} +
                   aacRate({"224k", "256k", "384k", "448k", "9", "7", "5", "4"}, settings.aacSurroundBitrate,
                           kAACSurroundBitrateKey) +
                   QStringList{"-channel_layout", "5.1(side)"};
        case ConversionMethod::Ac3Stereo:
            return {"-ac", "2", "-b:a",
                    entry({"160k", "192k", "224k", "256k"}, settings.ac3StereoBitrate, kAC3StereoBitrateKey)};
        case ConversionMethod::Ac3Surround:
            return {"-ac", "6", "-b:a", ac3SurroundRate(settings)};
        case ConversionMethod::Copy:
            return {};
    }
    return {};
}

QStringList withoutAudio(const ConversionRequest& request) {
    const MKVFileInfo& info = request.info;
    return {"-i",
            info.fileURL.toLocalFile(),
            "-stats",
            "-map",
            makeString("0:%i", info.videoTrackID),
            "-scodec",
            "mov_text",
            "-vcodec",
            "copy",
            "-progress",
            request.progressFile,
            "-loglevel",
            "warning",
            "-y",
            info.destinationURL.toLocalFile()};
}

QStringList withAudio(const ConversionRequest& request, const AudioEntry& audio,
                      const ConversionSettings& settings) {
    const MKVFileInfo& info = request.info;
    const ConversionMethod method = calculateConversionMethod(audio.codec(), audio.isSurround(), settings);
    QStringList arguments = {"-i",
                             info.fileURL.toLocalFile(),
                             "-stats",
                             "-map",
                             makeString("0:%i", info.videoTrackID),
                             "-map",
                             makeString("0:%i", audio.stream()),
                             "-scodec",
                             "mov_text",
                             "-vcodec",
                             "copy",
                             "-acodec",
                             codecWord(method),
                             "-progress",
                             request.progressFile,
                             "-loglevel",
                             "warning",
                             "-y",
                             info.destinationURL.toLocalFile()};

    if (request.needsFixup) insert(arguments, kBehindMaps, {"-absf", "aac_adtstoasc"});
    insert(arguments, kBehindMaps, {"-max_muxing_queue_size", "2048"});
    insert(arguments, kAudioOptions, audioOptions(method, settings));
    if (method != ConversionMethod::Copy) {
        if (audio.sampleRate > kHighestSampleRate) insert(arguments, kAudioOptions, {"-ar", "48000"});
        const float volume = settings.audioVolume;
        if (volume < 99 || volume > 101) {
            insert(arguments, kAudioOptions,
                   {"-filter_complex", makeString("[0:%i]volume=%.2f[out]", audio.stream(), volume / 100)});
            arguments[kAudioMapTarget] = "[out]";
        }
    }
    int position = kBehindMaps;
    addAdditionalSurroundTrack(arguments, position, info, request.audioTrackIndex, settings);
    addSubtitles(arguments, "1:0", position, info, settings);
    return arguments;
}

bool isCarriedSurround(const AudioEntry& entry) {
    return entry.text.contains("[5.1]");
}

/// The entry of the second surround track: the main track itself if it is one, else the first AC3, else the
/// first DTS track in its language.
const AudioEntry* additionalSurroundTrack(const MKVFileInfo& info, const AudioEntry& main) {
    if (isCarriedSurround(main) && (main.text.contains("(ac3)") || main.text.contains("(dts)"))) return &main;
    for (const char* codec : {"(ac3)", "(dts)"}) {
        for (const AudioEntry& candidate : info.audioTrackInformation) {
            if (isCarriedSurround(candidate) && candidate.language() == main.language() &&
                candidate.codecWord() == codec)
                return &candidate;
        }
    }
    return nullptr;
}

}  // namespace

const AudioEntry* chosenAudio(const MKVFileInfo& info, qsizetype audioTrackIndex) {
    const auto& entries = info.audioTrackInformation;
    return audioTrackIndex >= 0 && audioTrackIndex < entries.size() ? &entries[audioTrackIndex] : nullptr;
}

QStringList conversionArguments(const ConversionRequest& request, const ConversionSettings& settings) {
    const AudioEntry* audio = chosenAudio(request.info, request.audioTrackIndex);
    QStringList arguments = audio ? withAudio(request, *audio, settings) : withoutAudio(request);
    // Players of one vendor take HEVC under this tag only.
    if (request.info.videoTrackCodec == u"hevc") insert(arguments, 0, {"-tag:v", "hvc1"});
    if (settings.produceStreamableFiles) insertBeforeDestination(arguments, {"-movflags", "faststart"});
    insertBeforeDestination(arguments, {"-strict", "experimental"});
    if (settings.fixSubtitleDuration) insert(arguments, 0, {"-fix_sub_duration"});
    return arguments;
}

void addAdditionalSurroundTrack(QStringList& arguments, int& position, const MKVFileInfo& info,
                                qsizetype audioTrackIndex, const ConversionSettings& settings) {
    if (settings.preset != ConversionSettings::kCompatible || !settings.includeSurroundTrack) return;
    const AudioEntry* main = chosenAudio(info, audioTrackIndex);
    const AudioEntry* track = main ? additionalSurroundTrack(info, *main) : nullptr;
    if (!track) return;
    insert(arguments, position, {"-map", makeString("0:%i", track->stream())});
    position += 2;
    const bool transcodes = track->codecWord() == u"(dts)" && settings.includeSurroundTrackTranscoded;
    const QStringList options =
        transcodes ? QStringList{"-c:a:1", "ac3", "-ac:2", "6", "-b:a:1", ac3SurroundRate(settings)}
                   : QStringList{"-c:a:1", "copy"};
    insert(arguments, arguments.indexOf("-progress"), options);
}

void addSubtitles(QStringList& arguments, const QString& mapTarget, int position, const MKVFileInfo& info,
                  const ConversionSettings& settings) {
    if (!settings.disableBuiltinSubtitles) {
        for (const int stream : info.subtitleTrackIDs)
            insert(arguments, position, {"-map", makeString("0:%i", stream)});
    }
    if (!info.subtitleFileURL) return;
    const qsizetype behindFirstInput = arguments.indexOf("-stats");
    insert(arguments, position, {"-map", mapTarget});
    insert(arguments, behindFirstInput, {"-i", info.subtitleFileURL->toLocalFile()});
    if (settings.externalSubtitleEncoding < 2) return;
    QString encoding = subtitleEncodings().value(settings.externalSubtitleEncoding);
    if (encoding.isEmpty()) return;  // A number past the end of the list stands for no encoding.
    // The tool recognises UTF-16 by itself and hands it on as UTF-8.
    if (encoding == u"UTF-16") encoding = "UTF-8";
    insert(arguments, behindFirstInput, {"-sub_charenc", encoding});
}

const QStringList& subtitleEncodings() {
    static const QStringList encodings = {"None",        "",
                                          "UTF-8",       "UTF-16",
                                          "CP874",       "CP936",
                                          "CP1250",      "CP1251",
                                          "CP1252",      "CP1253",
                                          "CP1254",      "CP1255",
                                          "CP1256",      "CP1257",
                                          "CP1258",      "LATIN1",
                                          "LATIN2",      "LATIN3",
                                          "LATIN4",      "LATIN5",
                                          "LATIN6",      "LATIN7",
                                          "LATIN8",      "ISO-8859-1",
                                          "ISO-8859-2",  "ISO-8859-3",
                                          "ISO-8859-4",  "ISO-8859-5",
                                          "ISO-8859-6",  "ISO-8859-7",
                                          "ISO-8859-8",  "ISO-8859-9",
                                          "ISO-8859-10", "ISO-8859-11",
                                          "ISO-8859-12", "ISO-8859-13",
                                          "ISO-8859-14", "ISO-8859-15",
                                          "ISO-8859-16"};
    return encodings;
}
