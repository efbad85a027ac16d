#pragma once

#include "app/queue/StoredJob.h"

#include <QByteArray>
#include <QList>
#include <QStringList>

#include <deque>
#include <optional>

/// A queue as it is stored.
struct StoredQueue {
    struct Entry {
        quint64 id = 0;  ///< Not zero.
        StoredJob job;
    };
    /// A move of the application folder that the application was restarted for.
    struct Move {
        QString from;
        QString to;
    };

    std::deque<Entry> jobs;        ///< From the top.
    QStringList waitingMovies;     ///< Added and not confirmed; the next one is the last. May be folders.
    QStringList waitingSubtitles;  ///< Empty if no movie waits.
    bool isPaused = false;         ///< By the user.
    std::optional<Move>
        isToGoOnAt;  ///< The user agreed to a restart: the queue continues without a question.

    bool isEmpty() const { return jobs.empty() && waitingMovies.isEmpty(); }
};

/// The format of the stored queue: a journal of changes. Each record is one line: the first eight hexadecimal
/// digits of the SHA-1 of what follows, a blank, and a JSON object. Pure; any thread.
namespace queuerecords {

// Records.

/// The first record of a file.
QByteArray header();
/// A job that is new, or whose choices have changed, at its place behind the job `after`; 0: at the top.
QByteArray job(quint64 id, quint64 after, const StoredJob& job);
/// The job is now behind the job `after`.
QByteArray moved(quint64 id, quint64 after);
/// `failure` belongs to JobState::Failed. A finished job is no longer stored.
QByteArray state(quint64 id, JobState state, const PastFailure& failure = {});
QByteArray removed(const QList<quint64>& ids);
/// Of the waiting movies the first `kept` stay and `added` follow.
QByteArray waiting(qsizetype kept, const QStringList& added);
/// Further subtitle files beside the waiting movies.
QByteArray subtitles(const QStringList& added);
QByteArray paused(bool isPaused);
/// Empty: the move is dealt with.
QByteArray goOnAt(const std::optional<StoredQueue::Move>& move);

/// A file that holds the queue and nothing else.
QByteArray whole(const StoredQueue& queue);

struct Read {
    StoredQueue queue;
    quint64 lastId = 0;  ///< The largest of the file; 0: none.
    /// A line in the middle is damaged, or the file is none of ours. What could be read is in `queue`. A torn
    /// end, as a crash leaves it, is no damage.
    bool isDamaged = false;
    /// There is nothing in the bytes that whole() would leave out, such as changes and a torn end.
    bool isCompact = true;
};

/// Accepts any bytes.
Read read(const QByteArray& bytes);

}  // namespace queuerecords
