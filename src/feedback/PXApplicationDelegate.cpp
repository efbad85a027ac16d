#include "feedback/PXApplicationDelegate.h"

#include "feedback/PXRatingWindowController.h"
#include "feedback/RatingRules.h"
#include "feedback/UpdateCheck.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/Format.h"
#include "support/base/Text.h"
#include "support/store/Defaults.h"

#include <QPointer>

namespace {

constexpr QLatin1StringView kUsagesKey("quillonlib_usages");
constexpr QLatin1StringView kAskDateKey("quillonlib_askdate");

QString usagesOfVersionKey() {
    return makeString("quillonlib_%@_usages", ApplicationInfo::version());
}

QString askedKey() {
    return makeString("quillonlib_%@_asked", ApplicationInfo::version());
}

}  // namespace

PXApplicationDelegate::PXApplicationDelegate(QObject* parent)
    : QObject(parent), m_clock([] { return QDateTime::currentDateTimeUtc(); }) {}

PXApplicationDelegate::~PXApplicationDelegate() = default;

void PXApplicationDelegate::checkForUpdatesAction() {
    checkForUpdates([this](const QUrl& feed) {
        Q_EMIT fetchingUpdates(true);
        auto page = download::fetch(feed);
        Q_EMIT fetchingUpdates(false);
        return page;
    });
}

bool PXApplicationDelegate::isRateable() const {
    return rating::isRateable(defaultInt(kUsagesKey), m_minimumUsagesForRating);
}

void PXApplicationDelegate::increaseUsagesBy(qint32 usages, qint32 minimumUsages, qint32 feedbackThreshold,
                                             const QString& feedbackText, bool allowFeedbackNow,
                                             bool forceFeedbackNow) {
    m_minimumUsagesForRating = minimumUsages;
    countUsages(usages);
    Q_EMIT minimumUsagesForRatingChanged();
    if (!allowFeedbackNow) return;
    if (beginAutomaticRequest(feedbackThreshold) || forceFeedbackNow)
        showRatingWindow(feedbackText, feedbackThreshold);
}

void PXApplicationDelegate::countUsages(qint32 usages) const {
    if (usages == 0) return;
    for (const QString& key : {QString(kUsagesKey), usagesOfVersionKey()})
        setDefaultInt(key, defaultInt(key) + usages);
}

bool PXApplicationDelegate::beginAutomaticRequest(qint32 feedbackThreshold) const {
    const rating::History history{
        .usagesOfVersion = defaultInt(usagesOfVersionKey()),
        .versionHasAsked = defaultInt(askedKey()) != 0,
        .dontAskAgain = defaultInt(PXRatingWindowController::kDontAskAgainKey) != 0,
        .lastAsked = defaultObject(kAskDateKey).toDateTime(),
    };
    const QDateTime now = m_clock();
    if (!rating::isDue(history, feedbackThreshold, now)) return false;
    setDefaultInt(askedKey(), 1);
    setDefaultObject(kAskDateKey, now);
    return true;
}

void PXApplicationDelegate::showRatingWindow(QString feedbackText, qint32 feedbackThreshold) {
    feedbackText.replace("[USAGES_ASKREVIEW]", QString::number(feedbackThreshold));
    feedbackText.replace("[APPNAME]", ApplicationInfo::name());
    if (!m_ratingWindowController) {
        m_ratingWindowController = std::make_unique<PXRatingWindowController>();
        m_ratingWindowController->setCloseBlock([self = QPointer(this)] {
            // Delete it later: one of its own methods is the caller.
            if (self && self->m_ratingWindowController)
                self->m_ratingWindowController.release()->deleteLater();
        });
    }
    m_ratingWindowController->setIntroText(feedbackText);
    Q_EMIT ratingWindowRequested(*m_ratingWindowController);
}
