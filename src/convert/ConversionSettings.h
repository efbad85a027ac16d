#pragma once

#include <QString>

/// The settings that shape a conversion's command, read together when it is built.
struct ConversionSettings {
    static constexpr int kCompatible = 0;
    static constexpr int kFast = 1;
    static constexpr int kCustom = 2;

    int preset = kCompatible;
    bool ac3Downmix = false;
    bool dtsDownmix = false;

    /// Method numbers of the custom style.
    struct CustomHandling {
        int ac3 = 4, ac3Surround = 4;
        int dts = 2, dtsSurround = 3;
        int flac = 2, flacSurround = 3;
        int vorbis = 2;
        int mp3 = 2;
        int unknown = 2, unknownSurround = 3;
    } customHandling;

    // Positions in the lists of rates.
    int aacBitrate = 1;
    int aacSurroundBitrate = 1;
    int ac3StereoBitrate = 1;
    int ac3SurroundBitrate = 1;

    float audioVolume = 100;  ///< Percent; 99 to 101 leave the volume as it is.

    bool includeSurroundTrack = false;
    bool includeSurroundTrackTranscoded = true;
    bool disableBuiltinSubtitles = true;
    int externalSubtitleEncoding = 0;  ///< Below 2: none; else a position in the list of encodings.
    bool fixSubtitleDuration = true;
    bool produceStreamableFiles = false;

    static ConversionSettings current();
};
