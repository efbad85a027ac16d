#include "convert/AudioHandling.h"

#include "settings/Keys.h"
#include "support/base/Format.h"

namespace {

ConversionMethod customMethod(const QString& codec, bool surround, const ConversionSettings& settings) {
    const auto& custom = settings.customHandling;
    int method = surround ? custom.unknownSurround : custom.unknown;
    if (codec == u"ac3") method = surround ? custom.ac3Surround : custom.ac3;
    if (codec == u"dts") method = surround ? custom.dtsSurround : custom.dts;
    if (codec == u"flac") method = surround ? custom.flacSurround : custom.flac;
    // MP3 and Vorbis have no setting for surround.
    if (codec == u"mp3" && !surround) method = custom.mp3;
    if (codec == u"vorbis" && !surround) method = custom.vorbis;
    return method >= 0 && method <= 4 ? static_cast<ConversionMethod>(method) : ConversionMethod::Copy;
}

}  // namespace

ConversionMethod calculateConversionMethod(const QString& codec, bool audioIsSurround,
                                           const ConversionSettings& settings) {
    using enum ConversionMethod;
    if (codec == u"aac") return Copy;
    if (settings.preset == ConversionSettings::kCustom) return customMethod(codec, audioIsSurround, settings);
    if (settings.preset == ConversionSettings::kCompatible) return AacStereo;
    if (codec == u"ac3") return audioIsSurround && settings.ac3Downmix ? Ac3Stereo : Copy;
    if (codec == u"dts") return audioIsSurround && !settings.dtsDownmix ? Ac3Surround : Ac3Stereo;
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
