#include "convert/AudioHandling.h"

#include "settings/Keys.h"
#include "support/base/Format.h"

namespace {

/// The setting of the custom style for a kind of audio.
const settings::Setting<ConversionMethod>& customHandling(const QString& codec, bool surround) {
    if (codec == u"ac3")
        return surround ? settings::CustomAC351AudioHandling : settings::CustomAC3AudioHandling;
    if (codec == u"dts")
        return surround ? settings::CustomDTS51AudioHandling : settings::CustomDTSAudioHandling;
    if (codec == u"flac")
        return surround ? settings::CustomFLAC51AudioHandling : settings::CustomFLACAudioHandling;
    // MP3 and Vorbis have no setting for surround.
    if (codec == u"mp3" && !surround) return settings::CustomMP3AudioHandling;
    if (codec == u"vorbis" && !surround) return settings::CustomVorbisAudioHandling;
    return surround ? settings::CustomUnknown51AudioHandling : settings::CustomUnknownAudioHandling;
}

}  // namespace

ConversionMethod calculateConversionMethod(const QString& codec, bool audioIsSurround,
                                           const ConversionSettings& chosen) {
    using enum ConversionMethod;
    if (codec == u"aac") return Copy;
    const ConversionStyle style = chosen.value(settings::ConversionPreset);
    if (style == ConversionStyle::Custom) return chosen.value(customHandling(codec, audioIsSurround));
    if (style == ConversionStyle::Compatible) return AacStereo;
    if (codec == u"ac3") return audioIsSurround && chosen.value(settings::AC3Downmix) ? Ac3Stereo : Copy;
    if (codec == u"dts")
        return audioIsSurround && !chosen.value(settings::DTSDownmix) ? Ac3Surround : Ac3Stereo;
    return Ac3Stereo;
}

QString codecWord(ConversionMethod method) {
    switch (method) {
        case ConversionMethod::AacStereo:
        case ConversionMethod::AacSurround:
            return "aac";
        case ConversionMethod::Ac3Stereo:
        case ConversionMethod::Ac3Surround:
            return "ac3";
        case ConversionMethod::Copy:
            return "copy";
    }
    return "copy";
}

QStringList trialRunArguments(const MKVFileInfo& info, int audioStream) {
    return {"-i",
            info.fileURL.toLocalFile(),
            "-stats",
            "-t",
            "1",
            "-map",
            makeString("0:%i", info.videoTrackID),
            "-map",
            makeString("0:%i", audioStream),
            "-vcodec",
            "copy",
            "-acodec",
            "copy",
            "-y",
            info.destinationURL.toLocalFile()};
}

bool trialRunAsksForFixup(const QString& output) {
    return output.contains("aac_adtstoasc");
}
