#pragma once

#include <QDateTime>

/// When the user is asked how they like the application: at most once for each version, rarely, and never
/// again after they turned it off.
namespace rating {

/// Between two questions, whatever versions came meanwhile: 98 days.
inline constexpr qint64 kSecondsBetweenQuestions = 8'467'200;

struct History {
    qint64 usagesOfVersion = 0;
    bool versionHasAsked = false;
    bool dontAskAgain = false;
    QDateTime lastAsked;  ///< Invalid: never.
};

/// Whether to ask now by itself, the version having been used `threshold` times or more.
bool isDue(const History& history, qint64 threshold, const QDateTime& now);

/// Whether the user knows the application well enough to rate it. A minimum below 1: never.
bool isRateable(qint64 usages, qint64 minimum);

}  // namespace rating
