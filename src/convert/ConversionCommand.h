#pragma once

#include "convert/AudioHandling.h"
#include "convert/ConversionSettings.h"
#include "probe/MKVFileInfo.h"

#include <QString>
#include <QStringList>

/// The tool's arguments for one conversion, as values: nothing is started, asked or read. The order of the
/// list is a contract, down to the positions at which options are inserted.

/// What a command is built from.
struct ConversionRequest {
    const MKVFileInfo& info;
    qsizetype audioTrackIndex = 0;  ///< Position in audioTrackInformation.
    bool needsFixup = false;        ///< The copied AAC stream needs the "aac_adtstoasc" filter.
    QString progressFile;
};

/// The chosen entry; null for a movie without audio or an index past the end.
const AudioEntry* chosenAudio(const MKVFileInfo& info, qsizetype audioTrackIndex);

/// Without the tool's own path.
QStringList conversionArguments(const ConversionRequest& request, const ConversionSettings& chosen);

/// Maps a second audio track, 5.1 AC3 or DTS in the main track's language, at `position`, which moves on
/// behind it.
void addAdditionalSurroundTrack(QStringList& arguments, int& position, const MKVFileInfo& info,
                                qsizetype audioTrackIndex, const ConversionSettings& chosen);

/// Maps the movie's own text subtitles and its subtitle file at `position`. `mapTarget` is the stream of the
/// second input.
void addSubtitles(QStringList& arguments, const QString& mapTarget, int position, const MKVFileInfo& info,
                  const ConversionSettings& chosen);
