#pragma once

#include "app/AddSheet.h"
#include "app/destinations/Destinations.h"
#include "app/intake/FileIntake.h"
#include "app/queue/JobQueue.h"
#include "app/queue/QueueProgress.h"
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

/// The application without its windows: puts the queue, the intake, the destinations and the watch folder
/// together, starts them in order and ends them. Windows listen to its signals and call its commands. One for
/// the life of the process; main thread only.
class AppDelegate : public PXApplicationDelegate {
    Q_OBJECT

public:
    /// Registers the defaults of the settings. Before anything reads one.
    static void initialize();

    /// `panels` outlives this. The alert presenter and the desktop are set.
    explicit AppDelegate(FilePanels& panels, QObject* parent = nullptr);
    ~AppDelegate() override;

    JobQueue& queue() { return m_queue; }
    FileIntake& intake() { return m_intake; }
    Destinations& destinations() { return m_destinations; }
    AddSheet& addSheet() { return m_addSheet; }
    WatchFolder& watchFolder() { return m_watchFolder; }
    const QueueProgress& progress() const { return m_progress; }

    /// "Version: 1.0.0" and "Build: 1".
    const QString& version() const { return m_version; }
    const QString& build() const { return m_build; }

    // The launch and its end.

    void applicationWillFinishLaunching();
    /// The application was opened again: the main window comes to the front.
    void applicationShouldHandleReopen();
    /// The menu command that does the same.
    void openMainWindow() { applicationShouldHandleReopen(); }
    /// Asks where a conversion would be cut off. False: the user wants to go on.
    bool applicationShouldTerminate();
    /// Ends all jobs; nothing half-written is left when isTerminated() says so.
    void applicationWillTerminate();
    /// applicationWillTerminate() was called.
    bool isTerminating() const { return m_terminates; }
    /// No tool runs any more for a job that was ended.
    static bool isTerminated();
    /// Both steps, then terminated() in due time. `mayAsk` false: the session ends, or a signal came.
    void terminate(bool mayAsk);

    // One instance after the other.

    /// What the user gave and no movie came of yet: paths for openFiles() that lead to the same queue and
    /// sheet.
    QStringList unfinishedFiles() const;
    /// Opens what a former instance left unfinished, then `paths`. Once, when the window is there.
    void openFirstFiles(const QStringList& paths);
    /// The application was moved and ends: starts it from the new place, else tells that it cannot. To be
    /// called at the end, when this instance has given up its place; does nothing when it ends for another
    /// reason.
    void startSuccessor();

    // Commands.

    /// The single entry for files, from wherever they come. Folders are searched below, in the background.
    void openFiles(const QStringList& paths);
    /// Has the user choose files.
    void addClicked();
    /// What is dragged would be taken. If not, statusMessage() says why.
    bool draggingEntered(const QList<QUrl>& urls);
    bool performDragOperation(const QList<QUrl>& urls);
    /// The preferences window closes.
    void preferencesWillClose();
    /// `tag` is that of the menu item; nothing, where something else asks.
    void openDocumentationWindow(std::optional<int> tag = {});

Q_SIGNALS:
    /// Show the main window in front of the others.
    void mainWindowRequested();
    /// Load the documentation or bring it to the front, and show the tab at `tag`; negative: leave the tab.
    void documentationWindowRequested(int tag);
    /// Tell the user in passing; empty: nothing to tell any more.
    void statusMessage(const QString& message);
    /// Nothing new is taken from now on.
    void terminating();
    /// The process may end.
    void terminated();

private:
    void showSpeedNotice();
    void addFiles(const QStringList& files, const QList<QUrl>& given);
    void showRefusal(const QString& reason);
    void announceTerminated();
    void giveWay(const QString& newPath, Block launch);

    FilePanels& m_panels;
    std::unique_ptr<QuillonLib> m_library;
    FileIntake m_intake;
    JobQueue m_queue;
    Destinations m_destinations;
    AddSheet m_addSheet;
    QueueProgress m_progress;
    WatchFolder m_watchFolder;
    std::unique_ptr<PXAppMovedHandler> m_moveObservation;
    Block m_successor;            ///< Starts it; null: there is to be none.
    QStringList m_searchedPaths;  ///< Given with folders, of which the search is not done yet.
    QString m_refusal;            ///< Why the last drop was refused; empty: it was taken.
    QString m_version;
    QString m_build;
    bool m_terminates = false;
    std::shared_ptr<std::atomic<bool>> m_isStopped = std::make_shared<std::atomic<bool>>(false);
};
