#pragma once

#include <QDateTime>
#include <QObject>

#include <functional>
#include <memory>

class PXRatingWindowController;

/// Base class of application delegates: counts usages of the application, decides when to ask the user for a
/// rating, and checks for updates. Without a window connected to ratingWindowRequested(), nobody is asked.
/// Main thread only.
class PXApplicationDelegate : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isRateable READ isRateable NOTIFY minimumUsagesForRatingChanged)

public:
    explicit PXApplicationDelegate(QObject* parent = nullptr);
    ~PXApplicationDelegate() override;

    /// Adds `usages` to the totals of all versions and of this one. If `allowFeedbackNow` is set, asks the
    /// user for feedback if rating::isDue() with `feedbackThreshold` says so, or if `forceFeedbackNow` is
    /// set. "[APPNAME]" and "[USAGES_ASKREVIEW]" (the threshold) in `feedbackText` are replaced.
    void increaseUsagesBy(qint32 usages, qint32 minimumUsages, qint32 feedbackThreshold,
                          const QString& feedbackText, bool allowFeedbackNow, bool forceFeedbackNow);

    /// Looks for a newer build in the vendor's feed and shows the result; blocks until the user has answered.
    void checkForUpdatesAction();

    qint32 minimumUsagesForRating() const { return m_minimumUsagesForRating; }
    bool isRateable() const;

    /// The controller of the window that is open or about to open; null: none.
    PXRatingWindowController* ratingWindowController() const { return m_ratingWindowController.get(); }

    /// Replaces the system clock, for tests.
    void setClock(std::function<QDateTime()> clock) { m_clock = std::move(clock); }

Q_SIGNALS:
    /// Fetching the feed started or ended; it takes up to 15 s.
    void fetchingUpdates(bool isFetching);
    void minimumUsagesForRatingChanged();
    /// Show the window of this controller in front of the others. The controller lives until that window is
    /// closed.
    void ratingWindowRequested(PXRatingWindowController& controller);

private:
    void countUsages(qint32 usages) const;
    /// Stores that the user is being asked.
    bool beginAutomaticRequest(qint32 feedbackThreshold) const;
    void showRatingWindow(QString feedbackText, qint32 feedbackThreshold);

    qint32 m_minimumUsagesForRating = 0;
    std::function<QDateTime()> m_clock;
    std::unique_ptr<PXRatingWindowController> m_ratingWindowController;
};
