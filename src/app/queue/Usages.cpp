#include "app/queue/Usages.h"

#include "feedback/PXApplicationDelegate.h"
#include "settings/Keys.h"
#include "support/base/Format.h"
#include "support/store/Defaults.h"

void increaseUsages(PXApplicationDelegate& delegate, bool increase, bool allowFeedbackNow) {
    constexpr qint32 kMinimumForRating = 10;
    constexpr qint32 kMinimumForFeedback = 20;
    const QString feedbackText = makeString(
        "You have now used [APPNAME] more than 20 times, successfully converting %li MKVs to MP4s.",
        defaultInt(kConvertedFileCountKey));
    delegate.increaseUsagesBy(increase ? 1 : 0, kMinimumForRating, kMinimumForFeedback, feedbackText,
                              allowFeedbackNow, false);
}
