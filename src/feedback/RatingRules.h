#pragma once

#include <QDateTime>

/// When to ask the user for a rating: at most once per version, rarely, and never after they turned it off.
/// Callable from any thread.
namespace rating {

/// The minimum time between two questions, independent of versions: 98 days.
inline constexpr qint64 kSecondsBetweenQuestions = 8'467'200;

struct History {
    qint64 usagesOfVersion = 0;
    bool versionHasAsked = false;
    bool dontAskAgain = false;
    QDateTime lastAsked;  ///< Invalid: never.
};

/// Whether to ask now without a request; requires `threshold` usages of this version.
bool isDue(const History& history, qint64 threshold, const QDateTime& now);

/// Whether the user knows the application well enough to rate it. A minimum below 1: never.
bool isRateable(qint64 usages, qint64 minimum);

}  // namespace rating
