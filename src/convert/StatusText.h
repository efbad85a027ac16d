#pragma once

#include "convert/JobState.h"
#include "probe/AudioEntry.h"

#include <QList>
#include <QString>

/// What a job's one-line status is made from.
struct StatusFacts {
    JobState state = JobState::Queued;
    double progress = 0;           ///< Percent.
    double elapsedSeconds = 0;     ///< Since the conversion started.
    double conversionSeconds = 0;  ///< From start to end, for a finished job.
    QList<AudioEntry> audioTracks;
    qsizetype audioTrackIndex = 0;
};

/// "Status: Converting   Audio:  eng (ac3) (Discarded:  ger (dts))   ETA: 3m 20s" and the like.
QString stateInfoString(const StatusFacts& facts);

/// Seconds to go by what was done so far: 0 to five hours, and five hours as long as nothing was done.
double remainingSeconds(double progress, double elapsedSeconds);
