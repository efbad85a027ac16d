#pragma once

#include "app/AddSheet.h"
#include "app/OpenWindows.h"
#include "app/actions/FailureActions.h"
#include "app/actions/JobCommands.h"
#include "app/destinations/Destinations.h"
#include "app/intake/FileIntake.h"
#include "app/queue/EndAction.h"
#include "app/queue/JobQueue.h"
#include "app/queue/LastQueue.h"
#include "app/queue/QueueOutcome.h"
#include "app/queue/QueueProgress.h"
#include "app/queue/QueueStore.h"
#include "app/queue/Removals.h"
#include "app/watching/WatchFolder.h"
#include "feedback/PXApplicationDelegate.h"
#include "support/desktop/FilePanels.h"
#include "support/processes/Dispatch.h"

#include <QList>
#include <QUrl>

#include <atomic>
#include <memory>
#include <optional>

class PXAppMovedHandler;
class QuillonLib;

/// The application without its windows: connects the queue, the intake, the destinations and the watch
/// folder, starts them in order and ends them. Windows connect to its signals and call its commands. One
/// instance for the life of the process; main thread only.
class AppDelegate : public PXApplicationDelegate {
    Q_OBJECT

public:
    /// Registers the defaults of the settings. Call it before any setting is read.
    static void initialize();

    /// `panels` must outlive this object. The alert presenter and the desktop must be set before.
    explicit AppDelegate(FilePanels& panels, QObject* parent = nullptr);
    ~AppDelegate() override;

    JobQueue& queue() { return m_queue; }
    FileIntake& intake() { return m_intake; }
    Destinations& destinations() { return m_destinations; }
    AddSheet& addSheet() { return m_addSheet; }
    FailureActions& failureActions() { return m_failureActions; }
    JobCommands& jobCommands() { return m_jobCommands; }
    WatchFolder& watchFolder() { return m_watchFolder; }
    const QueueProgress& progress() const { return m_progress; }
    Removals& removals() { return m_removals; }
    LastQueue& lastQueue() { return m_lastQueue; }
    EndAction& endAction() { return m_endAction; }
    OpenWindows& openWindows() { return m_openWindows; }

    /// "Version: 1.0.0" and "Build: 1".
    const QString& version() const { return m_version; }
    const QString& build() const { return m_build; }

    // Launch and termination.

    void applicationWillFinishLaunching();
    /// The user started the application again: brings the main window to the front.
    void applicationShouldHandleReopen();
    /// The same, as a menu command.
    void openMainWindow() { applicationShouldHandleReopen(); }
    /// Asks the user if a running conversion would be aborted. Returns false if the user wants to continue.
    bool applicationShouldTerminate();
    /// Aborts all jobs. Their incomplete outputs are deleted before isTerminated() returns true.
    void applicationWillTerminate();
    /// Whether applicationWillTerminate() was called.
    bool isTerminating() const { return m_terminates; }
    /// Whether all tools of aborted jobs have ended.
    static bool isTerminated();
    /// Both steps above, then emits terminated(). `mayAsk` is false when the session ends or a signal was
    /// received.
    void terminate(bool mayAsk);

    // Hand-over to the next instance.

    /// Reads what the last session left in the queue, and opens `paths`. Call it once, when the window is
    /// painted.
    void openFirstFiles(const QStringList& paths);
    /// Starts the application from its new place after it was moved, or reports that this failed. Call it at
    /// the very end, when this instance has released its single-instance lock; does nothing when the
    /// application ends for another reason.
    void startSuccessor();

    // Commands.

    /// The single entry for files of every origin. Folders are searched recursively in the background.
    void openFiles(const QStringList& paths);
    /// Lets the user choose files.
    void addClicked();
    /// Whether a drop of `urls` would be accepted. If not, statusMessage() reports why.
    bool draggingEntered(const QList<QUrl>& urls);
    bool performDragOperation(const QList<QUrl>& urls);
    /// Call it when the preferences window closes.
    void preferencesWillClose();
    /// `tag` is the tag of the menu item; empty for every other origin.
    void openDocumentationWindow(std::optional<int> tag = {});

Q_SIGNALS:
    /// Show the main window in front of the others; `activationToken` as in Desktop::notificationActivated().
    void mainWindowRequested(const QString& activationToken = {});
    /// Load the documentation or bring it to the front, and show the tab at `tag`; negative: leave the tab.
    void documentationWindowRequested(int tag);
    /// Show the setting in the preferences.
    void preferenceRequested(const QString& key);
    /// Message for the status area; empty clears it.
    void statusMessage(const QString& message);
    /// Emitted once, when the application starts to terminate: nothing is accepted from now on.
    void terminating();
    /// Everything has ended: the process may exit.
    void terminated();

private:
    void showSpeedNotice();
    /// `leftOut`: movies below the folders that are not accepted.
    void addFiles(const QStringList& files, const QStringList& folders, const QStringList& given,
                  QStringList leftOut = {}, Drops::Origin origin = Drops::Origin::User);
    void takeArrival(const QString& path);
    void connectWindows();
    OpenWindows::Work work() const;
    void showRefusal(const QString& reason);
    void announceTerminated();
    void openStore();
    void connectEndAction();
    bool isMoreComing() const;
    void quitWhenDone();
    void handOver(const QString& newPath, Block launch);

    FilePanels& m_panels;
    std::unique_ptr<QuillonLib> m_library;
    FileIntake m_intake;
    JobQueue m_queue;
    Destinations m_destinations;
    Removals m_removals;
    AddSheet m_addSheet;
    FailureActions m_failureActions;
    JobCommands m_jobCommands;
    QueueProgress m_progress;
    QueueOutcome m_outcome;
    QueueStore m_store;
    LastQueue m_lastQueue;
    EndAction m_endAction;
    WatchFolder m_watchFolder;
    OpenWindows m_openWindows;
    std::unique_ptr<PXAppMovedHandler> m_moveObservation;
    Block m_successor;            ///< Starts the next instance; null: none is to be started.
    QStringList m_searchedPaths;  ///< Added paths whose folders are still being searched.
    bool m_quitIsDue = false;     ///< As soon as the batch has ended.
    bool m_storeIsOpen = false;
    QString m_refusal;  ///< Why the last drop was refused; empty: it was accepted.
    QString m_version;
    QString m_build;
    bool m_isAsking = false;  ///< Whether to quit.
    bool m_terminates = false;
    std::shared_ptr<std::atomic<bool>> m_isStopped = std::make_shared<std::atomic<bool>>(false);
};
