#pragma once

#include "convert/plan/ConversionPlan.h"

#include <map>
#include <utility>
#include <vector>

namespace proof {

/// Adds up how much of a movie is lost. Times in seconds. One thread at a time.
class Loss {
public:
    /// A part of the movie without such a track; parts may overlap.
    void addSpan(PlannedTrack::Kind kind, double from, double to);
    /// `missing` of `expected` frames, at unknown places of a track of `seconds`.
    void addFrames(PlannedTrack::Kind kind, quint64 missing, quint64 expected, double seconds);

    /// Whether at most 1 % and 30 s of a movie of `seconds` are lost, of the picture as of the sound.
    bool isSmall(double seconds) const;

private:
    struct Track {
        std::vector<std::pair<double, double>> spans;
        double missingSeconds = 0;
    };
    std::map<PlannedTrack::Kind, Track> m_tracks;
};

}  // namespace proof
