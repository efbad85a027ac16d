#pragma once

#include "watch/events/EventBatch.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>

class QSocketNotifier;

/// Tells of what happens in a folder and everywhere below it, from now on, as long as the observer lives.
///
/// Records come in batches: the block is called `latency` after the first thing that happened, or sooner when
/// there are thousands of records; nothing wakes up while nothing happens. It is called on the thread that
/// started the observer, from its event loop, and may stop or delete the observer. A batch in which no name
/// was valid UTF-8 is an empty list.
///
/// The folder itself is watched when startObserving() returns, those below it within the next turns of the
/// event loop (20,000 folders: about half a second, in slices of some 20 ms); a file that arrives in one of
/// them meanwhile is reported from the times of folder and file. Folders that come are watched at once. The
/// files that are in one by then are reported as created and modified, or as renamed when it was moved here
/// from elsewhere; a folder that moves within the tree is reported alone, see EventRecord::renamedFrom.
/// Linked folders are not followed, only `path` itself may be a link.
///
/// When the kernel's queue overflows, the whole tree is read again, and every file that changed, by its
/// times, since the observer was started is reported as modified, also when it was reported before: nobody
/// knows what was missed. So are all files of folders that come to light. Files that only lay there stay
/// untold.
///
/// The kernel tells only of what this machine does: changes that others make on a network share go unseen,
/// and so does what is mounted below the folder later on.
class DirectoryObserver : public QObject {
    Q_OBJECT

public:
    using Block = std::function<void(const QList<EventRecord>& records)>;

    /// `path` may begin with "~". Without file-level events a record names the folder in which something
    /// changed. Nothing: `error` says why, for the user.
    static std::unique_ptr<DirectoryObserver> startObserving(
        const QString& path, bool withFileLevelEvents, Block block, QString* error = nullptr,
        std::chrono::milliseconds latency = std::chrono::seconds(2));
    ~DirectoryObserver() override;

    /// Now: what waits to be told is dropped.
    void stopObserving();

    /// Folders that are watched.
    size_t folderCount() const;
    /// Events that made no record, because their path is not valid UTF-8.
    quint64 skippedNames() const;

    /// What a full queue in the kernel leads to.
    void simulateOverflow();

Q_SIGNALS:
    /// Every folder that there is is watched, for the first time or again after an overflow.
    void watching();
    /// The watch goes on, but not everything is seen. Each problem is told once.
    void problem(const QString& message);
    /// The folder was removed, moved or unmounted. What had happened is told before; nothing comes after.
    void ended(const QString& reason);

private:
    struct Watch;

    DirectoryObserver(std::unique_ptr<Watch> watch, Block block, std::chrono::milliseconds latency);

    void takeTurn();
    void scanAgain();
    void deliver();
    QString movedAway() const;
    void end(const QString& reason);

    std::unique_ptr<Watch> m_watch;  ///< Null when stopped.
    Block m_block;
    QSocketNotifier* m_notifier;
    QTimer m_delivery;
    QTimer m_slices;
    QTimer m_scanAgain;
    bool m_announced = false;
};
