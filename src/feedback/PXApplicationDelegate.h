#pragma once

#include <QDateTime>
#include <QObject>

#include <functional>
#include <memory>

class PXRatingWindowController;

/// What any application's delegate can do: counts how often the application was of use, decides when to ask
/// the user how they like it, and looks for updates. Without a window that listens, nobody is asked. Main
/// thread only.
class PXApplicationDelegate : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isRateable READ isRateable NOTIFY minimumUsagesForRatingChanged)

public:
    explicit PXApplicationDelegate(QObject* parent = nullptr);
    ~PXApplicationDelegate() override;

    /// Counts `usages` more, of all versions and of this one. Where `allowFeedbackNow` is set, asks the user
    /// for feedback if it is due by rating::isDue() with `feedbackThreshold`, or if `forceFeedbackNow` is
    /// set. "[APPNAME]" and "[USAGES_ASKREVIEW]" (the threshold) in `feedbackText` are replaced.
    void increaseUsagesBy(qint32 usages, qint32 minimumUsages, qint32 feedbackThreshold,
                          const QString& feedbackText, bool allowFeedbackNow, bool forceFeedbackNow);

    /// Asks the maker's feed for a newer build and tells the user; returns when the user has answered.
    void checkForUpdatesAction();

    qint32 minimumUsagesForRating() const { return m_minimumUsagesForRating; }
    bool isRateable() const;

    /// Of the window that is open, or waits to be; null: none.
    PXRatingWindowController* ratingWindowController() const { return m_ratingWindowController.get(); }

    /// The current time; the machine's clock unless a test brings another.
    void setClock(std::function<QDateTime()> clock) { m_clock = std::move(clock); }

Q_SIGNALS:
    /// The feed is being fetched, which takes up to 15 s, or no longer is.
    void fetchingUpdates(bool isFetching);
    void minimumUsagesForRatingChanged();
    /// Show the window of this controller, in front of the others. It lives until its window is closed.
    void ratingWindowRequested(PXRatingWindowController& controller);

private:
    void countUsages(qint32 usages) const;
    /// Remembers that the user is being asked.
    bool beginAutomaticRequest(qint32 feedbackThreshold) const;
    void showRatingWindow(QString feedbackText, qint32 feedbackThreshold);

    qint32 m_minimumUsagesForRating = 0;
    std::function<QDateTime()> m_clock;
    std::unique_ptr<PXRatingWindowController> m_ratingWindowController;
};
