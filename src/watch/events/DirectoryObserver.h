#pragma once

#include "watch/events/EventBatch.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>

class QSocketNotifier;

/// Reports changes in a folder and all folders below it while the observer lives. Use it on one thread, which
/// needs an event loop.
///
/// Records are delivered in batches: the block is called `latency` after the first event, or earlier if there
/// are thousands of records; there are no wake-ups without events. The block is called on the thread that
/// started the observer, from its event loop, and may stop or delete the observer. A batch in which no name
/// was valid UTF-8 is an empty list.
///
/// The folder itself is watched when startObserving() returns, those below it within the next iterations of
/// the event loop (20,000 folders: about half a second, in slices of about 20 ms); a file that arrives there
/// earlier is detected by the times of folder and file. New folders are watched at once. Files that are
/// already in a new folder are reported as created and modified, or as renamed if the folder was moved here
/// from elsewhere. A folder that moves within the tree is reported without its files, see
/// EventRecord::renamedFrom. Symbolic links to folders are not followed, except `path` itself.
///
/// If the kernel's queue overflows, the whole tree is read again, and every file whose times changed since
/// the observer was started is reported as modified, even if it was reported before: the lost events are
/// unknown. The same holds for all files in folders that were unknown until then. Older files are not
/// reported.
///
/// The kernel reports only changes made on this machine: changes that other machines make on a network share
/// are not seen, nor are volumes mounted below the folder later. In the documents portal, which hides all
/// changes from the kernel, the tree is read again every ten seconds, as after an overflow.
class DirectoryObserver : public QObject {
    Q_OBJECT

public:
    using Block = std::function<void(const QList<EventRecord>& records)>;

    /// `path` may begin with "~". Without file-level events a record names the folder in which something
    /// changed. Null on failure; `error` has the reason, for the user.
    static std::unique_ptr<DirectoryObserver> startObserving(
        const QString& path, bool withFileLevelEvents, Block block, QString* error = nullptr,
        std::chrono::milliseconds latency = std::chrono::seconds(2),
        std::chrono::milliseconds portalInterval = std::chrono::seconds(10));
    ~DirectoryObserver() override;

    /// Stops at once; pending records are dropped.
    void stopObserving();

    /// The number of watched folders.
    size_t folderCount() const;
    /// The number of events without a record, because their path is not valid UTF-8.
    quint64 skippedNames() const;

    /// Simulates a full kernel queue, for tests.
    void simulateOverflow();

Q_SIGNALS:
    /// All existing folders are watched, for the first time or again after an overflow.
    void watching();
    /// The watch continues, but is incomplete. Each problem is reported once.
    void problem(const QString& message);
    /// The folder was removed, moved or unmounted. All records are delivered before, none after this.
    void ended(const QString& reason);

private:
    struct Watch;

    DirectoryObserver(std::unique_ptr<Watch> watch, Block block, std::chrono::milliseconds latency,
                      std::chrono::milliseconds portalInterval);

    void processSlice();
    void scanAgain();
    void scanPortal();
    void deliver();
    QString movedAway() const;
    void end(const QString& reason);

    std::unique_ptr<Watch> m_watch;  ///< Null when stopped.
    Block m_block;
    QSocketNotifier* m_notifier;
    QTimer m_delivery;
    QTimer m_slices;
    QTimer m_scanAgain;
    QTimer m_portalScan;
    bool m_announced = false;
};
