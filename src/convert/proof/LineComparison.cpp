#include "convert/proof/LineComparison.h"

#include <algorithm>

namespace proof {

namespace {

constexpr double kTolerance = 0.05;  // seconds

std::vector<double> visibleStarts(const std::vector<media::Line>& lines) {
    std::vector<double> starts;
    for (const media::Line& line : lines)
        if (line.visible) starts.push_back(line.start);
    std::sort(starts.begin(), starts.end());
    return starts;
}

}  // namespace

LineComparison compareLineTimes(const std::vector<media::Line>& source,
                                const std::vector<media::Line>& output, double shift) {
    const std::vector<double> expected = visibleStarts(source);
    const std::vector<double> found = visibleStarts(output);
    LineComparison result;
    std::vector<double> unmatched;
    std::size_t surplus = 0;
    std::size_t next = 0;
    for (const double start : expected) {
        const double wanted = start + shift;
        while (next < found.size() && found[next] < wanted - kTolerance) {
            ++surplus;
            ++next;
        }
        if (next < found.size() && found[next] <= wanted + kTolerance) {
            ++next;
        } else {
            unmatched.push_back(start);
        }
    }
    surplus += found.size() - next;
    // A line that arrived at another time is in the output, where no line of the source starts.
    const std::size_t displaced = std::min(surplus, unmatched.size());
    const auto middle = unmatched.begin() + static_cast<std::ptrdiff_t>(displaced);
    result.displaced.assign(unmatched.begin(), middle);
    result.missing.assign(middle, unmatched.end());
    return result;
}

quint64 countOfVisible(const std::vector<media::Line>& lines) {
    return static_cast<quint64>(
        std::count_if(lines.cbegin(), lines.cend(), [](const media::Line& line) { return line.visible; }));
}

}  // namespace proof
