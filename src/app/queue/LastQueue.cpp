#include "app/queue/LastQueue.h"

#include "app/intake/FileIntake.h"
#include "app/queue/JobQueue.h"
#include "app/queue/MovedPaths.h"
#include "app/queue/QueueStore.h"
#include "support/base/Files.h"
#include "support/base/Text.h"
#include "support/base/Texts.h"
#include "support/processes/Dispatch.h"
#include "support/store/FolderAccess.h"

#include <QFileInfo>

LastQueue::LastQueue(QueueStore& store, JobQueue& queue, FileIntake& intake, QObject* parent)
    : QObject(parent), m_store(store), m_queue(queue), m_intake(intake) {
    // What comes back later does not follow a job that the user moves up.
    connect(&queue, &JobQueue::jobsMoved, this, [this] { m_returned = m_queue.job(m_queue.count() - 1); });
}

LastQueue::~LastQueue() {
    stop();
}

void LastQueue::stop() {
    *m_isStopped = true;
}

void LastQueue::offer() {
    m_isOffered = true;
    if (m_store.last().isToGoOnAt) {
        continueQueue();
    } else {
        Q_EMIT changed();
    }
}

int LastQueue::count() const {
    if (!m_isOffered) return 0;
    return static_cast<int>(m_store.last().jobs.size()) +
           static_cast<int>(m_store.last().waitingMovies.size());
}

void LastQueue::continueQueue() {
    if (!std::exchange(m_isOffered, false)) return;
    m_isReturning = true;
    Q_EMIT changed();
    const StoredQueue& last = m_store.last();
    if (last.isPaused && !m_queue.isPaused() && m_queue.jobCountWithState(JobState::Converting) == 0)
        m_queue.pauseContinueClicked(true);
    if (m_queue.count() > 0) m_returned = m_queue.job(m_queue.count() - 1);
    QStringList waiting = last.waitingSubtitles + last.waitingMovies;
    if (const auto& move = last.isToGoOnAt) {
        for (QString& path : waiting)
            path = movedAlong(path, move->from, move->to);
    }
    // With the intake before they leave the store.
    if (!waiting.isEmpty()) Q_EMIT filesReturned(waiting);
    m_store.takeWaiting();
    bringBackNext();
}

void LastQueue::forget() {
    if (!std::exchange(m_isOffered, false)) return;
    m_store.forget();
    Q_EMIT changed();
}

void LastQueue::bringBackNext() {
    if (*m_isStopped) return;
    if (m_store.last().jobs.empty()) {
        m_isReturning = false;
        m_store.settle();
        Q_EMIT changed();
        return;
    }
    StoredQueue::Entry next = m_store.last().jobs.front();
    moveAlong(next.job);
    const QString source = next.job.source;
    probe(source, [this, next = std::move(next)](const Found& found) {
        bringBack(next.id, next.job, found);
        bringBackNext();
    });
}

void LastQueue::moveAlong(StoredJob& job) const {
    const auto& move = m_store.last().isToGoOnAt;
    if (!move) return;
    for (QString* path : {&job.source, &job.subtitleFile, &job.openedFolder})
        *path = movedAlong(*path, move->from, move->to);
    const QFileInfo destination(job.destination);
    job.destination = movedAlong(destination.path(), move->from, move->to) + u'/' + destination.fileName();
}

LastQueue::Found LastQueue::find(const QString& source, const std::atomic<bool>* isStopped) {
    Found found;
    if (!files::fileExists(source)) {
        found.reason = failure::explain({RunEnding::of(RunEnding::Kind::SourceGone), {}, {}});
        return found;
    }
    MKVFileInfo::Probe probe = MKVFileInfo::probe(FileUrl::fromLocalFile(source), isStopped);
    found.info = std::move(probe.record);
    if (found.info) return found;
    const Verdict why =
        probe.verdicts.empty() ? verdicts::notAMovie(QFileInfo(source).fileName()) : probe.verdicts.back();
    found.reason = {Texts::tr("Conversion Failed"), {}, why.message, {FailureAction::TryAgain}, {}};
    return found;
}

void LastQueue::probe(const QString& source, std::function<void(const Found&)> handle) {
    dispatch_async_back([self = QPointer(this), isStopped = m_isStopped, source, handle = std::move(handle)] {
        if (*isStopped) return;
        const Found found = find(source, isStopped.get());
        dispatch_async_main([self, isStopped, found, handle] {
            if (self && !*isStopped) handle(found);
        });
    });
}

void LastQueue::bringBack(quint64 id, const StoredJob& stored, const Found& found) {
    MKVFileInfo info = found.info.value_or(MKVFileInfo());
    if (!found.info) {
        info.fileURL = FileUrl::fromLocalFile(stored.source);
        info.fileName = info.fileURL.fileName();
    }
    const bool replaces = stored.mayReplaceDestination && QFileInfo(stored.destination).isFile();
    info.destinationURL =
        FileUrl::fromLocalFile(replaces ? stored.destination : m_queue.uniqueDestination(stored.destination));
    if (!stored.subtitleFile.isEmpty()) info.subtitleFileURL = FileUrl::fromLocalFile(stored.subtitleFile);
    if (!stored.openedFolder.isEmpty() && folderaccess::startAccessing(stored.openedFolder))
        info.securityURL = FileUrl::fromLocalFile(stored.openedFolder);
    const qsizetype track = audioTrackFor(stored, info);
    auto job = std::make_unique<ConversionJob>(m_queue, std::move(info), track);
    job->presetSpeedInfo();
    job->setMayReplaceDestination(stored.mayReplaceDestination);
    job->overrides() = stored.overrides;
    if (!found.info) job->setIsUnprobed();
    if (stored.state == JobState::Failed) {
        job->restoreFailure(stored.failure);
    } else if (!found.info) {
        job->restoreFailure({found.reason, {}, {}});
    } else if (!job->destinationIsWriteable()) {
        job->restoreFailure({{Texts::tr("Conversion Failed"),
                              {},
                              text::localized(JobQueue::kNotWriteable),
                              {FailureAction::ChooseAnotherFolder, FailureAction::TryAgain},
                              {}},
                             {},
                             {}});
    }
    m_row = nextRow();
    m_returned = job.get();
    m_store.bringBack(*job, id);
    m_queue.insertJob(std::move(job), m_row);
    m_queue.startNextJobInQueue();
}

/// The track may be elsewhere in a movie that has changed.
qsizetype LastQueue::audioTrackFor(const StoredJob& stored, const MKVFileInfo& info) const {
    const QList<AudioEntry>& tracks = info.audioTrackInformation;
    if (tracks.isEmpty()) return stored.audioTrack;
    const auto fits = [&](qsizetype track) {
        return track < tracks.size() &&
               (stored.audioText.isEmpty() || tracks[track].text == stored.audioText);
    };
    if (fits(stored.audioTrack)) return stored.audioTrack;
    for (qsizetype track = 0; track < tracks.size(); ++track) {
        if (fits(track)) return track;
    }
    return m_intake.bestLanguage(info).value_or(0);
}

qsizetype LastQueue::nextRow() {
    if (!m_returned) return m_queue.count();
    if (m_row < m_queue.count() && m_queue.job(m_row) == m_returned) return m_row + 1;
    const qsizetype row = m_queue.indexOf(m_returned);
    return row < 0 ? m_queue.count() : row + 1;
}

void LastQueue::probeAgain(ConversionJob& job) {
    const QString source = job.fileInfo().fileURL.toLocalFile();
    probe(source, [this, alive = QPointer(&job)](const Found& found) {
        if (!alive || alive->state() != JobState::Failed) return;
        if (!found.info) {
            Q_EMIT message(found.reason.message);
            return;
        }
        const StoredJob stored = storedJob(*alive);
        alive->completeFileInfo(*found.info, audioTrackFor(stored, *found.info));
        alive->queueAgain();
        m_queue.startNextJobInQueue();
    });
}
