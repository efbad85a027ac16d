#pragma once

#include "app/queue/StoredJob.h"

#include <QObject>
#include <QPointer>
#include <QStringList>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

class FileIntake;
class JobQueue;
class QueueStore;

/// What the last session left in the store: offered to the user, brought back in its order, or forgotten.
/// Each movie is probed again, one at a time in the background, since it may have changed. Main thread only.
class LastQueue : public QObject {
    Q_OBJECT

public:
    /// All must outlive this object.
    LastQueue(QueueStore& store, JobQueue& queue, FileIntake& intake, QObject* parent = nullptr);
    ~LastQueue() override;

    /// Offers what the store has read; brings it back at once where the user has agreed to a restart.
    void offer();
    /// The number of movies that are offered; 0: nothing is.
    int count() const;
    /// Movies are still being brought back.
    bool isReturning() const { return m_isReturning; }

    /// Brings the jobs back, below those that are queued, and starts them as the queue does. A job whose
    /// movie is gone, or whose destination cannot be written, comes back as a failed one.
    void continueQueue();
    void forget();
    /// Probes the movie of a failed job that came back without it. If that succeeds the job is queued again,
    /// else the user gets a message.
    void probeAgain(ConversionJob& job);
    /// Ends what runs in the background. Whatever is not back yet stays stored.
    void stop();

Q_SIGNALS:
    /// count() or isReturning() may have changed.
    void changed();
    /// Paths that waited for the sheet, in an order for FileIntake::openFiles().
    void filesReturned(const QStringList& paths);
    void message(const QString& text);

private:
    /// The result of a probe.
    struct Found {
        std::optional<MKVFileInfo> info;  ///< Empty: the job cannot be converted, for this reason.
        failure::Explanation reason;
    };
    static Found find(const QString& source, const std::atomic<bool>* isStopped);
    void probe(const QString& source, std::function<void(const Found&)> handle);
    void moveAlong(StoredJob& job) const;
    void bringBackNext();
    void bringBack(quint64 id, const StoredJob& stored, const Found& found);
    qsizetype audioTrackFor(const StoredJob& stored, const MKVFileInfo& info) const;
    qsizetype nextRow();

    QueueStore& m_store;
    JobQueue& m_queue;
    FileIntake& m_intake;
    bool m_isOffered = false;
    bool m_isReturning = false;
    QPointer<ConversionJob> m_returned;  ///< The last one that came back.
    qsizetype m_row = 0;                 ///< Its row, if the queue has not changed meanwhile.
    std::shared_ptr<std::atomic<bool>> m_isStopped = std::make_shared<std::atomic<bool>>(false);
};
