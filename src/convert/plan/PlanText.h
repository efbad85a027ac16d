#pragma once

#include "convert/plan/ConversionPlan.h"

#include <QString>
#include <QStringList>

/// A plan in words for people, translated. Any thread.
namespace plantext {

/// The whole plan: "Picture: H.264 1080p, copied. Sound: English AC3 5.1 becomes AAC stereo. Left out:
/// German, Director's commentary, 2 picture subtitles".
QString sentence(const ConversionPlan& plan);

/// What the output will hold: "H.264 copied, AC3 5.1 to AAC stereo, 2 subtitles".
QString summary(const ConversionPlan& plan);

/// What the output of a finished conversion holds: "H.264, English AAC stereo, 2 subtitles".
QString contents(const ConversionPlan& plan);

/// What is left out: "German, Director's commentary, 2 picture subtitles"; empty: nothing.
QString leftOut(const ConversionPlan& plan);

/// A line for each track, for the chapters and for the title.
QStringList lines(const ConversionPlan& plan);

/// One track: "Sound: German DTS 5.1, left out (only one audio track is carried)".
QString line(const PlannedTrack& track);

// The parts of a line.

QString kind(const PlannedTrack& track);     ///< "Sound"
QString name(const PlannedTrack& track);     ///< "English AC3 5.1", or the subtitle file's name.
QString outcome(const PlannedTrack& track);  ///< "copied", "becomes AAC stereo, 128 kb/s", "left out"

/// The entries of audioTrackInformation: "English, Director's commentary", "English, AC3 5.1". Tracks that
/// would have the same label are numbered.
QStringList audioLabels(const MKVFileInfo& info);
/// One of them; empty for a position that is not in the list.
QString audioLabel(const MKVFileInfo& info, qsizetype index);

}  // namespace plantext
