#pragma once

#include "probe/MKVFileInfo.h"

#include <QStringList>

#include <optional>

/// Which audio track is preselected. Main thread only.
namespace audiopreselection {

/// The languages to search for: the user's own, or the single one from the setting "DefaultAudio".
QStringList languages(const QStringList& preferredLanguages);

/// Position of the track to preselect: among those in the best language the first AAC, else the first AC3,
/// else the first; among all tracks if none is in a listed language. Empty for a movie without audio. Shows
/// an alert about a track whose text has an unknown format.
std::optional<qsizetype> bestTrack(const MKVFileInfo& info, const QStringList& languages);

}  // namespace audiopreselection
