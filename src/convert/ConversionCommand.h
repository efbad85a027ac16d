#pragma once

#include "convert/AudioHandling.h"
#include "convert/ConversionSettings.h"
#include "probe/MKVFileInfo.h"

#include <QString>
#include <QStringList>

/// Builds the tool's arguments for one conversion. Pure functions, any thread: nothing is started or read.
/// The order of the arguments is a contract, down to the positions at which options are inserted.

/// The input of conversionArguments().
struct ConversionRequest {
    const MKVFileInfo& info;
    qsizetype audioTrackIndex = 0;  ///< Position in audioTrackInformation.
    bool needsFixup = false;        ///< The copied AAC stream needs the "aac_adtstoasc" filter.
    QString progressFile;
};

/// The chosen entry; null for a movie without audio or an index out of range.
const AudioEntry* chosenAudio(const MKVFileInfo& info, qsizetype audioTrackIndex);

/// The arguments without the tool's own path.
QStringList conversionArguments(const ConversionRequest& request, const ConversionSettings& chosen);

/// Maps a second audio track, 5.1 AC3 or DTS in the main track's language, at `position`, which is advanced
/// past it.
void addAdditionalSurroundTrack(QStringList& arguments, int& position, const MKVFileInfo& info,
                                qsizetype audioTrackIndex, const ConversionSettings& chosen);

/// Maps the movie's own text subtitles and its subtitle file at `position`. `mapTarget` is the stream of the
/// second input.
void addSubtitles(QStringList& arguments, const QString& mapTarget, int position, const MKVFileInfo& info,
                  const ConversionSettings& chosen);
