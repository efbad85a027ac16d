#pragma once

#include "convert/ConversionPlan.h"
#include "probe/Streams.h"

#include <QString>

/// Words for streams and for what they are made into, translated. Any thread.
namespace streamtext {

/// "German" for "ger", "deu" or "de"; an unknown code stays as it is. Empty for an undetermined language.
QString languageName(const QString& code);

/// "H.264" for the tool's name "h264"; an unknown name stays as it is.
QString codecName(const QString& codec);

/// The size of a picture, "1080p" or "320x240"; the channels of sound, "stereo" or "5.1". Empty if unknown or
/// for another kind of stream.
QString format(const MovieStream& stream);

/// "AAC stereo"; empty for a copy.
QString target(ConversionMethod method);
/// The same with all that is changed: "AAC stereo, 128 kb/s, volume 150 %".
QString target(const PlannedAudio& audio);

/// The words for what text subtitles are made into.
QString subtitleTarget();

}  // namespace streamtext
