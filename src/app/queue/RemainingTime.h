#pragma once

#include <optional>

/// Estimates how long the rest of some work will take from the speed so far, of which the last minutes count
/// most. A value; any thread.
class RemainingTime {
public:
    /// In `seconds` of work, `bytes` more were done.
    void add(double bytes, double seconds);

    /// Seconds for the remaining `bytes`; empty in the first three seconds of work, and while nothing is
    /// done.
    std::optional<double> secondsFor(double bytes) const;

private:
    double m_worked = 0;  ///< Seconds in all.
    // What counts of the work so far.
    double m_bytes = 0;
    double m_seconds = 0;
};
