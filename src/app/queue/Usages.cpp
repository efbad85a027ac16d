#include "app/queue/Usages.h"

#include "feedback/PXApplicationDelegate.h"
#include "settings/Keys.h"
#include "support/base/Texts.h"
#include "support/store/Defaults.h"

void increaseUsages(PXApplicationDelegate& delegate, bool increase, bool allowFeedbackNow) {
    constexpr qint32 kMinimumForRating = 10;
    constexpr qint32 kMinimumForFeedback = 20;
    const QString feedbackText =
        Texts::tr("You have now used [APPNAME] more than 20 times, successfully converting %1 MKVs to MP4s.")
            .arg(QString::number(defaultInt(kConvertedFileCountKey)));
    delegate.increaseUsagesBy(increase ? 1 : 0, kMinimumForRating, kMinimumForFeedback, feedbackText,
                              allowFeedbackNow, false);
}
