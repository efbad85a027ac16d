#include "media/PresentationTimes.h"

#include <algorithm>
#include <cmath>

namespace media {

namespace {

constexpr double kShortestHole = 0.25;  // seconds
constexpr double kHoleInFrames = 6;
constexpr double kReordered = 0.5;   // seconds
constexpr double kLongestFrame = 1;  // seconds; a longer distance is not taken for the duration of a frame
constexpr double kAdaptation = 8;
constexpr unsigned kSteady = 12;            // So many equal gaps on both sides are a constant duration.
constexpr double kSteadyTolerance = 0.05;   // of a frame's duration
constexpr double kLongestSteadyGap = 0.11;  // seconds; still pictures have longer ones

bool isHole(double gap, double frame) {
    return gap > std::max(kShortestHole, kHoleInFrames * frame);
}

void addHole(Track& track, Budget& budget, Hole hole) {
    if (budget.holes > 0) {
        --budget.holes;
        track.holes.push_back(hole);
    } else {
        ++track.holesLeftOut;
    }
}

}  // namespace

bool PresentationTimes::add(double time, double duration, Track& track, Budget& budget) {
    if (!m_any || time < m_start) m_start = time;
    if (!m_any || time > m_latest) m_latest = time;
    if (duration <= 0) duration = m_declared;
    if (duration <= 0 && !m_findsHoles) {
        const double gap = time - m_previous;
        if (m_any && gap > 0 && gap < kLongestFrame) m_typical = gap;
        duration = m_typical;
    }
    m_end = m_any ? std::max(m_end, time + duration) : time + duration;
    m_any = true;
    m_previous = time;
    if (!m_findsHoles) return true;

    bool inOrder = true;
    if (m_count == kWindow) inOrder = pass(takeLeast(), track, budget);
    unsigned place = m_count++;
    for (; place > 0 && sorted(place - 1) > time; --place)
        sorted(place) = sorted(place - 1);
    sorted(place) = time;
    return inOrder;
}

double PresentationTimes::takeLeast() {
    const double least = sorted(0);
    ++m_first;
    --m_count;
    return least;
}

bool PresentationTimes::pass(double time, Track& track, Budget& budget) {
    const double before = m_passed;
    const double gap = time - before;
    if (!m_passedAny || gap > 0) m_passed = time;
    if (!m_passedAny) {
        m_passedAny = true;
        return true;
    }
    if (gap <= 0) {
        m_hasDuplicates = true;
        return gap >= -kReordered;
    }
    countSkipped(gap, track);
    if (m_typical <= 0) {
        m_typical = m_firstGap = gap;
        return true;
    }
    if (m_firstGap > 0) {
        if (isHole(m_firstGap, gap)) {
            addHole(track, budget, {before - m_firstGap, before});
            m_typical = gap;
        }
        m_firstGap = 0;
    }
    if (isHole(gap, m_typical)) addHole(track, budget, {before, time});
    m_typical += (std::min(gap, 2 * m_typical) - m_typical) / kAdaptation;
    return true;
}

void PresentationTimes::countSkipped(double gap, Track& track) {
    const double frames = m_steadyGap > 0 ? gap / m_steadyGap : 0;
    const double whole = std::round(frames);
    const bool isMultiple = whole >= 1 && std::abs(frames - whole) <= kSteadyTolerance;
    if (isMultiple && whole == 1) {
        if (++m_steady < kSteady) return;
        track.skippedFrames += m_skipped;
        m_skipped = 0;
        return;
    }
    const bool mayBeSkip = isMultiple && m_skipped == 0 && m_steady >= kSteady &&
                           m_steadyGap <= kLongestSteadyGap && !isHole(gap, m_steadyGap);
    m_skipped = mayBeSkip ? static_cast<unsigned>(whole) - 1 : 0;
    m_steady = 0;
    if (!mayBeSkip) m_steadyGap = gap;
}

void PresentationTimes::finish(Track& track, Budget& budget) {
    while (m_count > 0)
        pass(takeLeast(), track, budget);
    if (!m_any) return;
    if (m_hasDuplicates) track.skippedFrames = 0;
    track.start = m_start;
    track.end = m_findsHoles && m_declared <= 0 ? std::max(m_end, m_latest + m_typical) : m_end;
}

void addLine(Track& track, Budget& budget, const Line& line) {
    if (budget.lines <= 0) {
        ++track.linesLeftOut;
        return;
    }
    --budget.lines;
    // Doubling would take half of the memory that a reading may use.
    if (track.lines.size() == track.lines.capacity()) track.lines.reserve(track.lines.size() * 5 / 4 + 16);
    track.lines.push_back(line);
}

}  // namespace media
