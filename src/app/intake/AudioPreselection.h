#pragma once

#include "probe/MKVFileInfo.h"

#include <QStringList>

#include <optional>

/// Which audio track is offered first.
namespace audiopreselection {

/// The languages to look for: the user's own, or the single one that the setting "DefaultAudio" names.
QStringList languages(const QStringList& preferredLanguages);

/// Position of the track to preselect: of those in the best language the first AAC, else the first AC3, else
/// the first; of all tracks where none is in a listed language. Nothing for a movie without audio. Tells the
/// user about a track whose text is unusual.
std::optional<qsizetype> bestTrack(const MKVFileInfo& info, const QStringList& languages);

}  // namespace audiopreselection
