#pragma once

#include "media/Reading.h"

#include <array>

namespace media {

/// Counts what a reading's lists may still take, so that all tracks together stay within its memory.
struct Budget {
    int lines = 50000;
    int holes = 4000;
};

/// Collects the times of a track's frames, which come in the order of decoding, and finds what is conspicuous
/// about them: the beginning, the end and the holes.
class PresentationTimes {
public:
    /// `frameDuration`: seconds, 0 if the track declares none. `findHoles`: for pictures.
    explicit PresentationTimes(double frameDuration = 0, bool findHoles = false)
        : m_declared(frameDuration), m_findsHoles(findHoles) {}

    /// `duration`: seconds, 0 if not known. False: the frame belongs long before those that were added
    /// earlier, which reordering does not explain.
    bool add(double time, double duration, Track& track, Budget& budget);
    /// Adds what is still being sorted and writes start and end into the track.
    void finish(Track& track, Budget& budget);

private:
    static constexpr unsigned kWindow = 32;  // Twice what a codec may reorder.

    double takeLeast();
    bool pass(double time, Track& track, Budget& budget);
    void countSkipped(double gap, Track& track);

    double& sorted(unsigned place) { return m_ring[(m_first + place) % kWindow]; }

    std::array<double, kWindow> m_ring = {};  // From m_first on, the least first: most times come in order.
    unsigned m_first = 0;
    unsigned m_count = 0;
    double m_declared;
    double m_typical = 0;   // What the distances say of a frame's duration; a declared one may be wrong.
    double m_firstGap = 0;  // Until the second one shows whether it was a hole.
    double m_steadyGap = 0;
    unsigned m_steady = 0;  // So many gaps in a row were like it.
    bool m_hasDuplicates = false;
    unsigned m_skipped = 0;  // Pictures, until the gaps that follow show that the duration is constant.
    bool m_findsHoles;
    bool m_any = false;
    bool m_passedAny = false;
    double m_start = 0;
    double m_latest = 0;  // The greatest time.
    double m_end = 0;
    double m_passed = 0;  // The last sorted time.
    double m_previous = 0;
};

/// Adds to the track's lines, as far as the budget goes.
void addLine(Track& track, Budget& budget, const Line& line);

}  // namespace media
