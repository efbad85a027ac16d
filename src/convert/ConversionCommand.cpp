#include "convert/ConversionCommand.h"

#include "settings/Keys.h"
#include "settings/SettingsTable.h"
#include "support/base/Format.h"

namespace {

constexpr int kAudioMapTarget = 6;  // index of the value of the audio "-map"
constexpr int kBehindMaps = 7;
constexpr int kAudioOptions = 13;
constexpr int kHighestSampleRate = 48000;  // Hz; the highest rate that players support

void insert(QStringList& list, qsizetype position, const QStringList& items) {
    for (qsizetype i = 0; i < items.size(); ++i)
        list.insert(position + i, items[i]);
}

void insertBeforeDestination(QStringList& arguments, const QStringList& items) {
    insert(arguments, arguments.size() - 1, items);
}

/// Quality levels have no unit.
QStringList aacRate(QLatin1StringView rate) {
    return {rate.endsWith('k') ? "-b:a" : "-q:a", rate};
}

/// Options for channels and bit rate.
QStringList audioOptions(ConversionMethod method, const ConversionSettings& chosen) {
    switch (method) {
        case ConversionMethod::AacStereo:
            return QStringList{"-ac", "2"} + aacRate(chosen.word(settings::AACBitrate));
        case ConversionMethod::AacSurround:
            return QStringList{"-ac", "6"} + aacRate(chosen.word(settings::AACSurroundBitrate)) +
                   QStringList{"-channel_layout", "5.1(side)"};
        case ConversionMethod::Ac3Stereo:
            return {"-ac", "2", "-b:a", chosen.word(settings::AC3StereoBitrate)};
        case ConversionMethod::Ac3Surround:
            return {"-ac", "6", "-b:a", chosen.word(settings::AC3SurroundBitrate)};
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
                      const ConversionSettings& chosen) {
    const MKVFileInfo& info = request.info;
    const ConversionMethod method = calculateConversionMethod(audio.codec(), audio.isSurround(), chosen);
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
    insert(arguments, kAudioOptions, audioOptions(method, chosen));
    if (method != ConversionMethod::Copy) {
        if (audio.sampleRate > kHighestSampleRate) insert(arguments, kAudioOptions, {"-ar", "48000"});
        const float volume = chosen.value(settings::AudioVolume);
        if (volume < 99 || volume > 101) {
            insert(arguments, kAudioOptions,
                   {"-filter_complex", makeString("[0:%i]volume=%.2f[out]", audio.stream(), volume / 100)});
            arguments[kAudioMapTarget] = "[out]";
        }
    }
    int position = kBehindMaps;
    addAdditionalSurroundTrack(arguments, position, info, request.audioTrackIndex, chosen);
    addSubtitles(arguments, "1:0", position, info, chosen);
    return arguments;
}

bool isCarriedSurround(const AudioEntry& entry) {
    return entry.text.contains("[5.1]");
}

/// The entry of the second surround track: the main track itself if it is surround, else the first AC3, else
/// the first DTS track in its language.
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

QStringList conversionArguments(const ConversionRequest& request, const ConversionSettings& chosen) {
    const AudioEntry* audio = chosenAudio(request.info, request.audioTrackIndex);
    QStringList arguments = audio ? withAudio(request, *audio, chosen) : withoutAudio(request);
    // Players of one vendor accept HEVC only with this tag.
    if (request.info.videoTrackCodec == u"hevc") insert(arguments, 0, {"-tag:v", "hvc1"});
    if (chosen.value(settings::ProduceStreamableFiles))
        insertBeforeDestination(arguments, {"-movflags", "faststart"});
    insertBeforeDestination(arguments, {"-strict", "experimental"});
    if (chosen.value(settings::FixSubtitleDuration)) insert(arguments, 0, {"-fix_sub_duration"});
    return arguments;
}

void addAdditionalSurroundTrack(QStringList& arguments, int& position, const MKVFileInfo& info,
                                qsizetype audioTrackIndex, const ConversionSettings& chosen) {
    if (chosen.value(settings::ConversionPreset) != ConversionStyle::Compatible ||
        !chosen.value(settings::IncludeSurroundTrack))
        return;
    const AudioEntry* main = chosenAudio(info, audioTrackIndex);
    const AudioEntry* track = main ? additionalSurroundTrack(info, *main) : nullptr;
    if (!track) return;
    insert(arguments, position, {"-map", makeString("0:%i", track->stream())});
    position += 2;
    const bool transcodes =
        track->codecWord() == u"(dts)" && chosen.value(settings::IncludeSurroundTrackTranscoded);
    const QStringList options =
        transcodes
            ? QStringList{"-c:a:1", "ac3", "-ac:2", "6", "-b:a:1", chosen.word(settings::AC3SurroundBitrate)}
            : QStringList{"-c:a:1", "copy"};
    insert(arguments, arguments.indexOf("-progress"), options);
}

void addSubtitles(QStringList& arguments, const QString& mapTarget, int position, const MKVFileInfo& info,
                  const ConversionSettings& chosen) {
    if (!chosen.value(settings::DisableBuiltinSubtitles)) {
        for (const int stream : info.subtitleTrackIDs)
            insert(arguments, position, {"-map", makeString("0:%i", stream)});
    }
    if (!info.subtitleFileURL) return;
    const qsizetype behindFirstInput = arguments.indexOf("-stats");
    insert(arguments, position, {"-map", mapTarget});
    insert(arguments, behindFirstInput, {"-i", info.subtitleFileURL->toLocalFile()});
    QString encoding = chosen.word(settings::ExternalSubtitleEncoding);
    if (encoding.isEmpty()) return;
    // The tool detects UTF-16 and converts it to UTF-8 before it applies this option.
    if (encoding == u"UTF-16") encoding = "UTF-8";
    insert(arguments, behindFirstInput, {"-sub_charenc", encoding});
}
