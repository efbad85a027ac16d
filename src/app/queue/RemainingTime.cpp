#include "app/queue/RemainingTime.h"

#include <cmath>

void RemainingTime::add(double bytes, double seconds) {
    constexpr double kMemorySeconds = 300;
    const double kept = std::exp(-seconds / kMemorySeconds);
    m_worked += seconds;
    m_bytes = m_bytes * kept + bytes;
    m_seconds = m_seconds * kept + seconds;
}

std::optional<double> RemainingTime::secondsFor(double bytes) const {
    constexpr double kFirstSeconds = 3;
    if (m_worked < kFirstSeconds || m_bytes <= 0) return std::nullopt;
    return bytes * m_seconds / m_bytes;
}
