#pragma once

#include "app/queue/QueueRecords.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QTimer>

#include <memory>

class FileIntake;
class FileLock;
class JobQueue;
class JournalFile;

/// Keeps the queue and the movies that wait for the sheet on disk, for the next start: every change is there
/// within a second. A change costs the same in a queue of any length. One process at a time stores; all
/// others of the user work without. Main thread only.
class QueueStore : public QObject {
    Q_OBJECT

public:
    /// Both must outlive the store. Nothing is read or written before open().
    QueueStore(JobQueue& queue, FileIntake& intake, QObject* parent = nullptr);
    /// Closes the store.
    ~QueueStore() override;

    /// Reads what the last session left, and stores the queue from now on, also what is queued already. The
    /// second call has no effect.
    void open(const QString& folder);
    /// Writes what is not written yet, and leaves the store to the next process. Waits for the disk. Whatever
    /// happens to the queue afterwards is not stored.
    void close();

    /// What the last session left and was neither brought back nor forgotten. It stays stored beside the
    /// queue.
    const StoredQueue& last() const { return m_last; }
    /// `job`, which is queued next, is the one that was stored as `id`.
    void bringBack(const ConversionJob& job, quint64 id);
    /// The waiting movies of the last session; they are now with the intake.
    void takeWaiting();
    /// Nothing of the last session is left to be decided about its pause or its move.
    void settle();
    /// Drops what the last session left. A copy is kept until the next time.
    void forget();

    /// Paths that were added and whose folders are still being searched.
    void setSearchedPaths(const QStringList& paths);
    /// The application folder was moved, and the next start continues the queue.
    void goOnAt(const StoredQueue::Move& move);

Q_SIGNALS:
    /// For the user: the store is damaged, or cannot be read or written.
    void problem(const QString& message);

private:
    void begin(const QByteArray& bytes, bool exists);
    void follow();
    void add(const ConversionJob* job, qsizetype row);
    void remove(const ConversionJob* job);
    void noteMoves(qsizetype first, const QList<qsizetype>& origins);
    void noteState(const ConversionJob* job, JobState now);
    void noteWaiting();
    quint64 idAbove(qsizetype row) const;
    void append(const QByteArray& record);
    void appendWaiting();
    QStringList waitingMovies() const;
    bool isEmpty() const;
    QByteArray snapshot();
    void flush();
    void onFailed(const QString& reason);

    JobQueue& m_queue;
    FileIntake& m_intake;
    QString m_folder;  ///< Empty: not opened yet.
    std::unique_ptr<FileLock> m_lock;
    std::unique_ptr<JournalFile> m_file;  ///< Null: nothing is stored.
    StoredQueue m_last;
    QHash<const ConversionJob*, quint64> m_ids;  ///< Of the queue's jobs that the file knows.
    quint64 m_lastId = 0;
    qsizetype m_newRow = 0;       ///< Of the job that is added next.
    QByteArray m_batch;           ///< Records that are not given to the file yet.
    QList<quint64> m_removedIds;  ///< Jobs whose removal is no record yet.
    QTimer m_timer;               ///< Until the batch is.
    QStringList m_searchedPaths;
    // What the file, with the batch, knows.
    QStringList m_storedMovies;
    QSet<QString> m_storedSubtitles;
    bool m_waitingHasChanged = false;
    bool m_exists = false;          ///< There is a file.
    bool m_isToBeReplaced = false;  ///< The file is missing, not compact, or lacks what could not be written.
    bool m_hasFailed = false;       ///< The last attempt to write.
};
