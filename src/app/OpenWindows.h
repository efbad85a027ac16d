#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>

class ConversionJob;
class JobQueue;

/// Which windows the user has open, as far as the application without its windows needs to know, and what
/// follows when they are closed. With the main window closed, what runs goes on and is announced by a
/// notification. With all of them closed and nothing left to do, the application ends: at once when the last
/// one is closed, else some time after the last event, so that its notifications can still be clicked; not
/// when a movie has failed or is damaged that the user has not seen in the window, and not with the setting
/// StayOpen. Main thread only.
class OpenWindows : public QObject {
    Q_OBJECT

public:
    /// What keeps the application running.
    struct Work {
        bool isConverting = false;
        bool isWaiting = false;   ///< Movies in the queue, on the sheet, or on their way to it.
        bool isExpected = false;  ///< Something that comes by itself: arrivals, the end of a countdown.
    };

    /// `queue` must outlive this object. `work` is called when a decision is due; call reconsider() when its
    /// answer may have changed.
    OpenWindows(JobQueue& queue, std::function<Work()> work,
                std::chrono::milliseconds patience = std::chrono::minutes(1), QObject* parent = nullptr);

    /// Call it for each window that is opened or closed. `areOthersOpen`: windows beside the main window,
    /// such as the preferences, the help and questions. Minimised windows are open.
    void set(bool isMainOpen, bool areOthersOpen);
    /// Also true before the first call of set(), while the application starts.
    bool isMainOpen() const { return m_isMainOpen; }
    void reconsider();

Q_SIGNALS:
    /// The main window was closed while movies are converted, or while some wait.
    void wentOn(bool isConverting);
    /// What wentOn() said holds no longer.
    void settled();
    /// The last window was closed, and the application goes on without any.
    void staysWithoutWindows();
    /// The application is to quit.
    void endRequested();

private:
    bool isDone() const;
    void noteEnding(const ConversionJob& job);

    const std::function<Work()> m_work;
    QTimer m_patience;
    bool m_isMainOpen = true;
    bool m_areOthersOpen = false;
    bool m_hasGoneOn = false;         ///< Until settled().
    bool m_hasUnseenTrouble = false;  ///< Since the main window was closed.
};
