#pragma once

#include <QLatin1StringView>

/// The names of the settings. What each means is told in the table of SettingsTable.cpp.

#define RAVELIN_KEY(name) inline constexpr QLatin1StringView k##name##Key(#name)

RAVELIN_KEY(ConversionPreset);
RAVELIN_KEY(IncludeSurroundTrack);
RAVELIN_KEY(WelcomeShown);
RAVELIN_KEY(HEAACConvert);
RAVELIN_KEY(DefaultExtension);
RAVELIN_KEY(AACBitrate);
RAVELIN_KEY(AACSurroundBitrate);
RAVELIN_KEY(AC3StereoBitrate);
RAVELIN_KEY(AC3SurroundBitrate);
RAVELIN_KEY(AudioVolume);
RAVELIN_KEY(AutoAdd);
RAVELIN_KEY(AutoClean);
RAVELIN_KEY(AutoRemove);
RAVELIN_KEY(AutoRemoveType);
RAVELIN_KEY(Conversions);
RAVELIN_KEY(HasUpgradedFromPre13);
RAVELIN_KEY(ExternalSubtitleEncoding);
RAVELIN_KEY(DefaultAudio);
RAVELIN_KEY(DefaultDestination);
RAVELIN_KEY(FixSubtitleDuration);
RAVELIN_KEY(DestinationBookmarks);
RAVELIN_KEY(DestinationNames);
RAVELIN_KEY(DisableBuiltinSubtitles);
RAVELIN_KEY(QuitAfterConversion);
RAVELIN_KEY(IncludeSurroundTrackTranscoded);
RAVELIN_KEY(DTSDownmix);
RAVELIN_KEY(AC3Downmix);
RAVELIN_KEY(CustomAC351AudioHandling);
RAVELIN_KEY(CustomAC3AudioHandling);
RAVELIN_KEY(CustomDTSAudioHandling);
RAVELIN_KEY(CustomDTS51AudioHandling);
RAVELIN_KEY(CustomFLACAudioHandling);
RAVELIN_KEY(CustomFLAC51AudioHandling);
RAVELIN_KEY(CustomVorbisAudioHandling);
RAVELIN_KEY(CustomMP3AudioHandling);
RAVELIN_KEY(CustomUnknownAudioHandling);
RAVELIN_KEY(CustomUnknown51AudioHandling);
RAVELIN_KEY(Usages);

// Read or written, but without a registered default.
RAVELIN_KEY(EAC3Convert);
RAVELIN_KEY(DontConvertAACMain);
RAVELIN_KEY(ProduceStreamableFiles);
RAVELIN_KEY(ConcurrentJobs);
RAVELIN_KEY(ConcurrentJobCount);
RAVELIN_KEY(AbsentDestinations);
RAVELIN_KEY(AbsentDefaultDestination);
RAVELIN_KEY(AbsentWatchfolderBookmark);
RAVELIN_KEY(AbsentWatchfolderActive);

#undef RAVELIN_KEY

inline constexpr QLatin1StringView kConvertedFileCountKey("convertedFileCount");
