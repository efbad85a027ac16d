#pragma once

#include "convert/ConversionSettings.h"
#include "probe/MKVFileInfo.h"

#include <QString>

/// The method for a track by its codec tag, its channels and the user's style. Pure.
ConversionMethod calculateConversionMethod(const QString& codec, bool audioIsSurround,
                                           const ConversionSettings& chosen);

/// The tool's word for the audio codec.
QString codecWord(ConversionMethod method);

/// The arguments of the one-second trial run that tells whether a copied AAC stream needs the "aac_adtstoasc"
/// filter. It writes to the movie's destination.
QStringList trialRunArguments(const MKVFileInfo& info, int audioStream);
/// What the tool printed in the trial run says yes.
bool trialRunAsksForFixup(const QString& output);
