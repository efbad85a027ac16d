#pragma once

#include "convert/JobState.h"
#include "probe/AudioEntry.h"

#include <QList>
#include <QString>

/// The input of a job's one-line status. The functions of this header are pure; any thread.
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

/// "no progress for a minute" and the like. For the user.
QString stallText(double seconds);

/// Estimated remaining seconds: 0 to five hours; five hours while the progress is 0.
double remainingSeconds(double progress, double elapsedSeconds);
