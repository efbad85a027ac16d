#include "convert/proof/Loss.h"

#include <algorithm>

namespace proof {

namespace {

constexpr double kSmallShare = 0.01;
constexpr double kSmallSeconds = 30;

double lengthOfUnion(std::vector<std::pair<double, double>> spans) {
    std::sort(spans.begin(), spans.end());
    double length = 0;
    double reached = 0;
    for (const auto& [from, to] : spans) {
        length += std::max(0.0, to - std::max(from, reached));
        reached = std::max(reached, to);
    }
    return length;
}

}  // namespace

void Loss::addSpan(PlannedTrack::Kind kind, double from, double to) {
    m_tracks[kind].spans.emplace_back(std::max(from, 0.0), to);
}

void Loss::addFrames(PlannedTrack::Kind kind, quint64 missing, quint64 expected, double seconds) {
    if (expected == 0) return;
    const double lost = static_cast<double>(missing) / static_cast<double>(expected) * seconds;
    m_tracks[kind].missingSeconds = std::max(m_tracks[kind].missingSeconds, lost);
}

bool Loss::isSmall(double seconds) const {
    return std::all_of(m_tracks.cbegin(), m_tracks.cend(), [&](const auto& entry) {
        const Track& track = entry.second;
        // Missing frames usually lie in the spans, so that they are not counted twice.
        const double lost = std::max(lengthOfUnion(track.spans), track.missingSeconds);
        return lost <= kSmallSeconds && lost <= seconds * kSmallShare;
    });
}

}  // namespace proof
