#include "feedback/RatingRules.h"

namespace rating {

bool isDue(const History& history, qint64 threshold, const QDateTime& now) {
    if (history.dontAskAgain || history.versionHasAsked || history.usagesOfVersion < threshold) return false;
    // Milliseconds, because secsTo() truncates.
    return !history.lastAsked.isValid() || history.lastAsked.msecsTo(now) > kSecondsBetweenQuestions * 1000;
}

bool isRateable(qint64 usages, qint64 minimum) {
    return minimum >= 1 && usages > minimum;
}

}  // namespace rating
