#pragma once

#include "convert/plan/ConversionPlan.h"

#include <QString>

/// A track with its title: "English AC3 5.1 “Director's commentary”", or the subtitle file's name. Pure; any
/// thread.
QString trackName(const PlannedTrack& track);

/// What a plan does with the tracks of one kind, in words for people, translated.
struct PlanLine {
    QString kind;              ///< "Sound"
    QString name;              ///< "English AC3 5.1"; empty: there is no such track.
    QString outcome;           ///< "becomes AAC stereo, 128 kb/s"; "none" without a name.
    bool isUnchanged = false;  ///< Nothing is converted or left out.
};

/// A plan in four lines, which are always there.
struct PlanLines {
    PlanLine picture;
    PlanLine sound;
    PlanLine subtitles;    ///< Its name has only the movie's own subtitles.
    QString subtitleFile;  ///< The name of the carried subtitle file; empty: there is none.
    PlanLine leftOut;
};

/// Pure; any thread.
PlanLines planLines(const ConversionPlan& plan);

/// A track that is left out: its name, and why.
struct LeftOutTrack {
    QString name;
    QString reason;
};

/// In the order of the plan. Pure; any thread.
QList<LeftOutTrack> leftOutTracks(const ConversionPlan& plan);
