#pragma once

#include "convert/ConversionSettings.h"
#include "probe/MKVFileInfo.h"

#include <QString>

/// The conversion method for a track, from its codec tag, its channels and the user's style. The functions of
/// this header are pure; any thread.
ConversionMethod calculateConversionMethod(const QString& codec, bool audioIsSurround,
                                           const ConversionSettings& chosen);

/// The tool's name of the audio codec.
QString codecWord(ConversionMethod method);
/// The tool's word for the bit rate that the user has chosen, "128k", or for the level of a variable one,
/// "5"; empty for a copy.
QString rateWord(ConversionMethod method, const ConversionSettings& chosen);

/// The arguments of the trial run over one second, which shows whether a copied AAC stream needs the
/// "aac_adtstoasc" filter. It writes to the movie's destination.
QStringList trialRunArguments(const MKVFileInfo& info, int audioStream);
/// Whether the output of the trial run asks for the filter.
bool trialRunAsksForFixup(const QString& output);
