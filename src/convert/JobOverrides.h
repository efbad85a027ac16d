#pragma once

#include "convert/ConversionSettings.h"
#include "probe/MKVFileInfo.h"

#include <optional>

/// What the user chose for one job, in place of the settings and of what the movie offers. A value; any
/// thread.
struct JobOverrides {
    bool keepDamaged = false;  ///< Keep the output although a part of the movie is missing in it.
    bool withoutSubtitleFile = false;
    bool withoutEmbeddedSubtitles = false;
    std::optional<SubtitleEncoding> subtitleEncoding;  ///< Of the subtitle file.

    bool operator==(const JobOverrides&) const = default;
};

/// Changes the movie and the settings that the arguments are built from.
inline void apply(const JobOverrides& overrides, MKVFileInfo& info, ConversionSettings& settings) {
    if (overrides.withoutSubtitleFile) info.subtitleFileURL.reset();
    if (overrides.withoutEmbeddedSubtitles) info.subtitleTrackIDs.clear();
    if (overrides.subtitleEncoding)
        settings.set(settings::ExternalSubtitleEncoding, *overrides.subtitleEncoding);
}
