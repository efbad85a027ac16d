#include "app/queue/QueueStore.h"

#include "app/intake/FileIntake.h"
#include "app/queue/JobQueue.h"
#include "app/queue/JournalFile.h"
#include "support/base/FileLock.h"
#include "support/base/Files.h"
#include "support/base/Log.h"
#include "support/base/Texts.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>

#include <algorithm>
#include <vector>

namespace {

constexpr int kBatchMilliseconds = 500;
constexpr int kRetryMilliseconds = 10000;
/// For the end of an instance that makes room for this one.
constexpr int kLockMilliseconds = 200;

QString journalPath(const QString& folder) {
    return folder + "/queue.journal";
}

/// Which of the numbers belong to a longest increasing subsequence: what need not be moved into the new
/// order.
std::vector<bool> staying(const QList<qsizetype>& origins) {
    std::vector<qsizetype> ends;  // Of each length the subsequence whose last number is the smallest.
    std::vector<qsizetype> before(static_cast<size_t>(origins.size()), -1);
    for (qsizetype i = 0; i < origins.size(); ++i) {
        const auto end =
            std::ranges::lower_bound(ends, origins[i], {}, [&](qsizetype at) { return origins[at]; });
        if (end != ends.begin()) before[static_cast<size_t>(i)] = *std::prev(end);
        if (end == ends.end()) {
            ends.push_back(i);
        } else {
            *end = i;
        }
    }
    std::vector<bool> stays(before.size());
    for (qsizetype i = ends.empty() ? -1 : ends.back(); i >= 0; i = before[static_cast<size_t>(i)])
        stays[static_cast<size_t>(i)] = true;
    return stays;
}

}  // namespace

QueueStore::QueueStore(JobQueue& queue, FileIntake& intake, QObject* parent)
    : QObject(parent), m_queue(queue), m_intake(intake) {
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &QueueStore::flush);
}

QueueStore::~QueueStore() {
    close();
}

void QueueStore::open(const QString& folder) {
    if (!m_folder.isEmpty()) return;
    m_folder = folder;
    QDir().mkpath(folder);
    m_lock = std::make_unique<FileLock>(folder + "/queue.lock");
    if (!m_lock->lock(kLockMilliseconds)) {
        logError("Error: the queue is not stored, since '%@' is locked or cannot be written", folder);
        m_lock.reset();
        return;
    }
    const QString path = journalPath(folder);
    const bool exists = files::fileExists(path);
    const auto bytes = files::contents(path);
    if (exists && !bytes) {
        Q_EMIT problem(Texts::tr("The stored queue '%1' can't be read, so changes are not saved.").arg(path));
        logError("Error: the stored queue '%@' cannot be read", path);
        m_lock.reset();
        return;
    }
    begin(bytes.value_or(QByteArray()), exists);
}

void QueueStore::begin(const QByteArray& bytes, bool exists) {
    const QString path = journalPath(m_folder);
    queuerecords::Read read = queuerecords::read(bytes);
    m_last = std::move(read.queue);
    m_lastId = read.lastId;
    m_storedMovies = m_last.waitingMovies;
    m_storedSubtitles = {m_last.waitingSubtitles.cbegin(), m_last.waitingSubtitles.cend()};
    m_file = std::make_unique<JournalFile>(path, bytes.size());
    connect(m_file.get(), &JournalFile::failed, this, &QueueStore::onFailed);
    connect(m_file.get(), &JournalFile::written, this, [this] { m_hasFailed = false; });
    if (read.isDamaged) {
        const QString aside = files::uniqueFile(m_folder + "/damaged.journal");
        QFile::copy(path, aside);
        Q_EMIT problem(
            Texts::tr("The stored queue was damaged. It is kept as '%1'; what could be read of it is used.")
                .arg(aside));
        logError("Error: the stored queue was damaged and is kept as '%@'", aside);
    }
    follow();
    m_exists = exists;
    m_isToBeReplaced = bytes.isEmpty() || !read.isCompact || read.isDamaged;
    for (qsizetype i = 0; i < m_queue.count(); ++i)
        add(m_queue.job(i), i);
    noteWaiting();
    if (m_isToBeReplaced) flush();
}

void QueueStore::follow() {
    connect(&m_queue, &JobQueue::jobsAboutToBeAdded, this, [this](qsizetype first) { m_newRow = first; });
    connect(&m_queue, &JobQueue::jobAdded, this, [this](const ConversionJob* job) { add(job, m_newRow++); });
    connect(&m_queue, &JobQueue::jobRemoved, this, &QueueStore::remove);
    connect(&m_queue, &JobQueue::jobsMoved, this, &QueueStore::noteMoves);
    connect(&m_queue, &JobQueue::jobStateChanged, this,
            [this](const ConversionJob* job, JobState, JobState now) { noteState(job, now); });
    connect(&m_queue, &JobQueue::pausedChanged, this,
            [this](bool isPaused) { append(queuerecords::paused(isPaused)); });
    connect(&m_intake, &FileIntake::filesWaitingChanged, this, &QueueStore::noteWaiting);
    connect(&m_intake, &FileIntake::scanningStarted, this, &QueueStore::noteWaiting);
    connect(&m_intake, &FileIntake::becameIdle, this, &QueueStore::noteWaiting);
}

void QueueStore::close() {
    if (!m_file) return;
    m_queue.disconnect(this);
    m_intake.disconnect(this);
    flush();
    m_timer.stop();
    m_file.reset();
    m_lock.reset();
}

void QueueStore::add(const ConversionJob* job, qsizetype row) {
    if (job->state() == JobState::Finished) return;
    auto id = m_ids.constFind(job);
    if (id == m_ids.cend()) id = m_ids.insert(job, ++m_lastId);
    append(queuerecords::job(*id, idAbove(row), storedJob(*job)));
}

void QueueStore::remove(const ConversionJob* job) {
    const quint64 id = m_ids.take(job);
    if (id == 0 || job->state() == JobState::Finished) return;
    m_removedIds.append(id);
    append({});
}

/// From the top: the job above is then in its place already.
void QueueStore::noteMoves(qsizetype first, const QList<qsizetype>& origins) {
    const std::vector<bool> stays = staying(origins);
    for (qsizetype i = 0; i < origins.size(); ++i) {
        const quint64 id = stays[static_cast<size_t>(i)] ? 0 : m_ids.value(m_queue.job(first + i));
        if (id != 0) append(queuerecords::moved(id, idAbove(first + i)));
    }
}

void QueueStore::noteState(const ConversionJob* job, JobState now) {
    const auto id = m_ids.constFind(job);
    if (id == m_ids.cend() || now == JobState::Queued) {
        add(job, m_queue.indexOf(job));  // Queued again, perhaps with other choices.
    } else if (now == JobState::Failed) {
        append(queuerecords::state(*id, now, storedJob(*job).failure));
    } else {
        append(queuerecords::state(*id, now));
        // At once: a finished movie that is still stored would be converted again after a crash.
        if (now == JobState::Finished) m_timer.start(0);
    }
}

/// The file knows finished jobs, too, as places, until it is replaced.
quint64 QueueStore::idAbove(qsizetype row) const {
    for (qsizetype i = row - 1; i >= 0; --i) {
        if (const quint64 id = m_ids.value(m_queue.job(i))) return id;
    }
    return 0;
}

void QueueStore::append(const QByteArray& record) {
    if (!m_file) return;
    m_batch += record;
    if (!m_timer.isActive() || m_timer.remainingTime() > kBatchMilliseconds)
        m_timer.start(kBatchMilliseconds);
}

void QueueStore::noteWaiting() {
    m_waitingHasChanged = true;
    append({});
}

QStringList QueueStore::waitingMovies() const {
    return m_last.waitingMovies + m_searchedPaths + m_intake.unconfirmedMovies();
}

void QueueStore::appendWaiting() {
    if (!std::exchange(m_waitingHasChanged, false)) return;
    const QStringList movies = waitingMovies();
    const auto [now, before] = std::ranges::mismatch(movies, m_storedMovies);
    if (now != movies.cend() || before != m_storedMovies.cend()) {
        const qsizetype kept = now - movies.cbegin();
        m_batch += queuerecords::waiting(kept, movies.sliced(kept));
        m_storedMovies = movies;
    }
    if (movies.isEmpty()) {
        m_storedSubtitles.clear();
        return;
    }
    QStringList added;
    for (const QString& path : m_last.waitingSubtitles + m_intake.subtitleFiles()) {
        if (m_storedSubtitles.contains(path)) continue;
        m_storedSubtitles.insert(path);
        added.append(path);
    }
    if (!added.isEmpty()) m_batch += queuerecords::subtitles(added);
}

bool QueueStore::isEmpty() const {
    return m_last.isEmpty() && m_storedMovies.isEmpty() &&
           m_queue.count() == m_queue.jobCountWithState(JobState::Finished);
}

/// Everything; behind it the batch is no longer needed.
QByteArray QueueStore::snapshot() {
    StoredQueue all;
    m_ids.removeIf([](const auto& job) { return job.key()->state() == JobState::Finished; });
    for (qsizetype i = 0; i < m_queue.count(); ++i) {
        if (const quint64 id = m_ids.value(m_queue.job(i)))
            all.jobs.push_back({id, storedJob(*m_queue.job(i))});
    }
    all.jobs.insert(all.jobs.end(), m_last.jobs.cbegin(), m_last.jobs.cend());
    all.waitingMovies = m_storedMovies;
    all.waitingSubtitles = m_storedSubtitles.values();
    all.isPaused = !all.isEmpty() && (m_queue.isPaused() || m_last.isPaused);
    all.isToGoOnAt = m_last.isToGoOnAt;
    return queuerecords::whole(all);
}

void QueueStore::flush() {
    if (!m_file) return;
    appendWaiting();
    if (!m_removedIds.isEmpty()) m_batch += queuerecords::removed(std::exchange(m_removedIds, {}));
    if (m_batch.isEmpty() && !m_isToBeReplaced) return;
    const bool isIdle = isEmpty() && !m_last.isToGoOnAt;
    if (isIdle && !m_exists) {
        m_batch.clear();  // No file is made for nothing.
        return;
    }
    if (m_isToBeReplaced || isIdle) {
        m_file->replace(snapshot());
        m_exists = true;
        m_isToBeReplaced = false;
    } else {
        m_file->append(m_batch);
    }
    m_batch.clear();
}

void QueueStore::onFailed(const QString& reason) {
    if (!std::exchange(m_hasFailed, true)) {
        const QString path = journalPath(m_folder);
        Q_EMIT problem(Texts::tr("The queue can't be saved in '%1': %2").arg(path, reason));
        logError("Error: the queue cannot be saved in '%@': %@", path, reason);
    }
    m_isToBeReplaced = true;
    m_timer.start(kRetryMilliseconds);
}

void QueueStore::bringBack(const ConversionJob& job, quint64 id) {
    // It is the first one, unless something was forgotten meanwhile.
    const auto found = std::ranges::find(m_last.jobs, id, &StoredQueue::Entry::id);
    if (found != m_last.jobs.end()) m_last.jobs.erase(found);
    m_ids.insert(&job, id);
}

void QueueStore::takeWaiting() {
    m_last.waitingMovies.clear();
    m_last.waitingSubtitles.clear();
    noteWaiting();
}

void QueueStore::settle() {
    m_last.isPaused = false;
    m_last.isToGoOnAt.reset();
    append(queuerecords::paused(m_queue.isPaused()) + queuerecords::goOnAt({}));
}

void QueueStore::forget() {
    QSaveFile copy(m_folder + "/forgotten.journal");
    if (!copy.open(QIODevice::WriteOnly) || copy.write(queuerecords::whole(m_last)) < 0 || !copy.commit())
        logError("Error: the queue of the last session was not kept: %@", copy.errorString());
    QList<quint64> ids;
    for (const StoredQueue::Entry& entry : m_last.jobs)
        ids.append(entry.id);
    append(queuerecords::removed(ids));
    m_last.jobs.clear();
    takeWaiting();
    settle();
}

void QueueStore::setSearchedPaths(const QStringList& paths) {
    m_searchedPaths = paths;
    noteWaiting();
}

void QueueStore::goOnAt(const StoredQueue::Move& move) {
    m_last.isToGoOnAt = move;
    append(queuerecords::goOnAt(move));
}
