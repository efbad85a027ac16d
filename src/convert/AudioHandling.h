#pragma once

#include "convert/ConversionSettings.h"
#include "probe/MKVFileInfo.h"

#include <QString>

/// What happens to a movie's audio track. The numbers are those of the custom style's settings.
enum class ConversionMethod : int {
    AacStereo = 0,
    AacSurround = 1,
    Ac3Stereo = 2,
    Ac3Surround = 3,
    Copy = 4,
};

/// The method for a track by its codec tag, its channels and the user's style. A custom setting outside 0 to
/// 4 falls back to copying. Pure.
ConversionMethod calculateConversionMethod(const QString& codec, bool audioIsSurround,
                                           const ConversionSettings& settings);

/// The tool's word for the audio codec.
QString codecWord(ConversionMethod method);

/// The arguments of the one-second trial run that tells whether a copied AAC stream needs the "aac_adtstoasc"
/// filter. It writes to the movie's destination.
QStringList trialRunArguments(const MKVFileInfo& info, int audioStream);
/// What the tool printed in the trial run says yes.
bool trialRunAsksForFixup(const QString& output);
