#include "convert/AudioHandling.h"

#include "settings/Keys.h"
#include "support/base/Format.h"

#include <algorithm>
#include <array>

namespace {

using enum ConversionMethod;

/// What the styles make of a codec. Without settings for the custom style it is copied in every style.
struct AudioRule {
    QLatin1StringView codec;  ///< The codec tag of the record; empty: any other.
    ConversionMethod compatible;
    ConversionMethod fast;
    ConversionMethod fastSurround;
    /// Whether the fast style makes stereo of surround; null: there is no choice.
    const settings::Setting<bool>* downmix;
    const settings::Setting<ConversionMethod>* custom;
    const settings::Setting<ConversionMethod>* customSurround;
};

// MP3 and Vorbis have no setting for surround.
constexpr std::array kRules = {
    AudioRule{QLatin1StringView("aac"), Copy, Copy, Copy, nullptr, nullptr, nullptr},
    AudioRule{QLatin1StringView("ac3"), AacStereo, Copy, Copy, &settings::AC3Downmix,
              &settings::CustomAC3AudioHandling, &settings::CustomAC351AudioHandling},
    AudioRule{QLatin1StringView("dts"), AacStereo, Ac3Stereo, Ac3Surround, &settings::DTSDownmix,
              &settings::CustomDTSAudioHandling, &settings::CustomDTS51AudioHandling},
    AudioRule{QLatin1StringView("flac"), AacStereo, Ac3Stereo, Ac3Stereo, nullptr,
              &settings::CustomFLACAudioHandling, &settings::CustomFLAC51AudioHandling},
    AudioRule{QLatin1StringView("mp3"), AacStereo, Ac3Stereo, Ac3Stereo, nullptr,
              &settings::CustomMP3AudioHandling, &settings::CustomUnknown51AudioHandling},
    AudioRule{QLatin1StringView("vorbis"), AacStereo, Ac3Stereo, Ac3Stereo, nullptr,
              &settings::CustomVorbisAudioHandling, &settings::CustomUnknown51AudioHandling},
    AudioRule{QLatin1StringView(), AacStereo, Ac3Stereo, Ac3Stereo, nullptr,
              &settings::CustomUnknownAudioHandling, &settings::CustomUnknown51AudioHandling},
};

}  // namespace

ConversionMethod calculateConversionMethod(const QString& codec, bool audioIsSurround,
                                           const ConversionSettings& chosen) {
    const AudioRule* rule = std::find_if(kRules.begin(), kRules.end() - 1,
                                         [&](const AudioRule& each) { return codec == each.codec; });
    switch (chosen.value(settings::ConversionPreset)) {
        case ConversionStyle::Compatible:
            return rule->compatible;
        case ConversionStyle::Custom: {
            const auto* handling = audioIsSurround ? rule->customSurround : rule->custom;
            return handling ? chosen.value(*handling) : Copy;
        }
        case ConversionStyle::Fast:
            break;
    }
    if (!audioIsSurround) return rule->fast;
    return rule->downmix && chosen.value(*rule->downmix) ? Ac3Stereo : rule->fastSurround;
}

QString codecWord(ConversionMethod method) {
    switch (method) {
        case AacStereo:
        case AacSurround:
            return "aac";
        case Ac3Stereo:
        case Ac3Surround:
            return "ac3";
        case Copy:
            break;
    }
    return "copy";
}

QString rateWord(ConversionMethod method, const ConversionSettings& chosen) {
    switch (method) {
        case AacStereo:
            return chosen.word(settings::AACBitrate);
        case AacSurround:
            return chosen.word(settings::AACSurroundBitrate);
        case Ac3Stereo:
            return chosen.word(settings::AC3StereoBitrate);
        case Ac3Surround:
            return chosen.word(settings::AC3SurroundBitrate);
        case Copy:
            break;
    }
    return {};
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
