#pragma once

#include "media/Reading.h"

#include <vector>

namespace proof {

/// Which lines of a subtitle track did not arrive. Times in seconds of the source, ascending.
struct LineComparison {
    std::vector<double> missing;
    std::vector<double> displaced;
};

/// Compares the visible lines by their start: each has to start within 50 ms of its start in the source plus
/// `shift`. Pure; any thread.
LineComparison compareLineTimes(const std::vector<media::Line>& source,
                                const std::vector<media::Line>& output, double shift);

/// The number of lines with text.
quint64 countOfVisible(const std::vector<media::Line>& lines);

}  // namespace proof
