#include "convert/ConversionSettings.h"

#include "settings/Keys.h"
#include "support/store/Defaults.h"

#include <algorithm>
#include <limits>

namespace {

int number(const QString& key) {
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(std::clamp<qint64>(defaultInt(key), Limits::min(), Limits::max()));
}

bool flag(const QString& key) {
    return defaultInt(key) != 0;
}

}  // namespace

ConversionSettings ConversionSettings::current() {
    ConversionSettings settings;
    settings.preset = number(kConversionPresetKey);
    settings.ac3Downmix = flag(kAC3DownmixKey);
    settings.dtsDownmix = flag(kDTSDownmixKey);

    CustomHandling& custom = settings.customHandling;
    custom.ac3 = number(kCustomAC3AudioHandlingKey);
    custom.ac3Surround = number(kCustomAC351AudioHandlingKey);
    custom.dts = number(kCustomDTSAudioHandlingKey);
    custom.dtsSurround = number(kCustomDTS51AudioHandlingKey);
    custom.flac = number(kCustomFLACAudioHandlingKey);
    custom.flacSurround = number(kCustomFLAC51AudioHandlingKey);
    custom.vorbis = number(kCustomVorbisAudioHandlingKey);
    custom.mp3 = number(kCustomMP3AudioHandlingKey);
    custom.unknown = number(kCustomUnknownAudioHandlingKey);
    custom.unknownSurround = number(kCustomUnknown51AudioHandlingKey);

    settings.aacBitrate = number(kAACBitrateKey);
    settings.aacSurroundBitrate = number(kAACSurroundBitrateKey);
    settings.ac3StereoBitrate = number(kAC3StereoBitrateKey);
    settings.ac3SurroundBitrate = number(kAC3SurroundBitrateKey);
    settings.audioVolume = defaultFloat(kAudioVolumeKey);

    settings.includeSurroundTrack = flag(kIncludeSurroundTrackKey);
    settings.includeSurroundTrackTranscoded = flag(kIncludeSurroundTrackTranscodedKey);
    settings.disableBuiltinSubtitles = flag(kDisableBuiltinSubtitlesKey);
    settings.externalSubtitleEncoding = number(kExternalSubtitleEncodingKey);
    settings.fixSubtitleDuration = flag(kFixSubtitleDurationKey);
    settings.produceStreamableFiles = flag(kProduceStreamableFilesKey);
    return settings;
}
