#include "convert/ConversionCommand.h"

#include "convert/AudioHandling.h"
#include "support/base/Format.h"

namespace {

bool isSubtitleFile(const PlannedTrack& track) {
    return !track.stream;
}

QString mapTarget(const PlannedTrack& track) {
    if (isSubtitleFile(track)) return "1:0";
    if (track.audio && track.audio->volume) return "[out]";
    return makeString("0:%i", *track.stream);
}

/// Options of the main audio track.
QStringList mainAudioOptions(const PlannedTrack& track) {
    const PlannedAudio& audio = *track.audio;
    QStringList options;
    if (audio.volume)
        options += {"-filter_complex", makeString("[0:%i]volume=%.2f[out]", *track.stream, *audio.volume)};
    if (audio.sampleRate > 0) options += {"-ar", QString::number(audio.sampleRate)};
    // Levels have no unit.
    const QString rateOption = audio.rate.endsWith(u'k') ? "-b:a" : "-q:a";
    switch (audio.method) {
        case ConversionMethod::AacStereo:
        case ConversionMethod::Ac3Stereo:
            options += {"-ac", "2", rateOption, audio.rate};
            break;
        case ConversionMethod::AacSurround:
            options += {"-ac", "6", rateOption, audio.rate, "-channel_layout", "5.1(side)"};
            break;
        case ConversionMethod::Ac3Surround:
            options += {"-ac", "6", rateOption, audio.rate};
            break;
        case ConversionMethod::Copy:
            break;
    }
    return options + QStringList{"-acodec", codecWord(audio.method)};
}

QStringList secondAudioOptions(const PlannedTrack& track) {
    const PlannedAudio& audio = *track.audio;
    QStringList options = {"-c:a:1", codecWord(audio.method)};
    if (audio.method != ConversionMethod::Copy)
        options += {makeString("-ac:%i", *track.output), "6", "-b:a:1", audio.rate};
    return options;
}

}  // namespace

QStringList toolArguments(const ConversionPlan& plan, const ConversionFiles& files, bool needsFixup) {
    const auto outputs = plan.outputs();
    const auto find = [&](auto matches) -> const PlannedTrack* {
        const auto found = std::find_if(outputs.cbegin(), outputs.cend(),
                                        [&](const PlannedTrack* track) { return matches(*track); });
        return found == outputs.cend() ? nullptr : *found;
    };
    const PlannedTrack* main = find([](const auto& track) { return track.audio && !track.audio->isSecond; });
    const PlannedTrack* second = find([](const auto& track) { return track.audio && track.audio->isSecond; });

    QStringList arguments;
    if (plan.fixesSubtitleDurations) arguments += "-fix_sub_duration";
    // Players of one vendor accept HEVC only with this tag.
    if (plan.tagsHevc) arguments += {"-tag:v", "hvc1"};
    arguments += {"-i", files.source};
    if (find(isSubtitleFile)) {
        if (!plan.subtitleEncoding.isEmpty()) arguments += {"-sub_charenc", plan.subtitleEncoding};
        arguments += {"-i", files.subtitles};
    }
    arguments += "-stats";
    for (const PlannedTrack* track : outputs)
        arguments += {"-map", mapTarget(*track)};
    if (main) {
        arguments += {"-max_muxing_queue_size", plan.longMuxingQueue ? "65536" : "2048"};
        if (needsFixup && main->audio->method == ConversionMethod::Copy)
            arguments += {"-absf", "aac_adtstoasc"};
    }
    arguments += {"-scodec", "mov_text", "-vcodec", "copy"};
    if (main) arguments += mainAudioOptions(*main);
    if (second) arguments += secondAudioOptions(*second);
    const bool hasSubtitles = find([](const auto& track) { return track.kind == StreamKind::Subtitle; });
    if (plan.fineSubtitleTimes && hasSubtitles) arguments += {"-time_base:s", "1/100000"};
    if (plan.namesFormat) arguments += {"-f", "mp4"};
    arguments += {"-progress", files.progress, "-loglevel", "warning", "-y"};
    if (plan.isStreamable) arguments += {"-movflags", "faststart"};
    return arguments + QStringList{"-strict", "experimental", files.destination};
}

QStringList conversionArguments(const ConversionRequest& request, const ConversionSettings& chosen) {
    const MKVFileInfo& info = request.info;
    return toolArguments(
        makePlan(info, request.audioTrackIndex, chosen, request.remedies),
        {info.fileURL.toLocalFile(), info.subtitleFileURL ? info.subtitleFileURL->toLocalFile() : QString(),
         request.progressFile, info.destinationURL.toLocalFile()},
        request.needsFixup);
}
