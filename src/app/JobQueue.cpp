#include "app/JobQueue.h"

#include "app/Destination.h"
#include "app/FileIntake.h"
#include "settings/Keys.h"
#include "settings/Settings.h"
#include "support/Alert.h"
#include "support/AlertQueue.h"
#include "support/ApplicationInfo.h"
#include "support/Defaults.h"
#include "support/Files.h"
#include "support/Format.h"
#include "support/Text.h"

#include <QFileInfo>

#include <algorithm>

namespace {

/// How many jobs may convert at a time.
qint64 conversionLimit() {
    constexpr qint64 kMost = 64;
    if (defaultInt(kConcurrentJobsKey) == 0) return 1;
    const qint64 count = defaultInt(kConcurrentJobCountKey);
    return (count < 0 ? 0 : qMin(count, kMost)) + 2;
}

bool insertsAtBottom() {
    return settings::InsertJobsAtBottom.value();
}

}  // namespace

JobQueue::JobQueue(WaitingFiles& waiting, QObject* parent) : QObject(parent), m_waiting(waiting) {}

JobQueue::~JobQueue() = default;

QString JobQueue::uniqueDestination(const QString& path) const {
    return files::uniqueFile(path, [this](const QString& candidate) {
        return isDestinationTaken(candidate) || files::fileExists(candidate) ||
               QFileInfo(candidate).isSymLink();
    });
}

bool JobQueue::addJob(std::unique_ptr<ConversionJob> job) {
    if (!job->destinationIsWriteable()) {
        showInTurn(
            [] {
                alert_apptitled(
                    "You don't seem to have write access to the selected destinatation or it is a read-only "
                    "filesystem. Please choose another destination.",
                    "OK");
            },
            "not writeable");
        m_waiting.cancelAdd();
        return false;
    }
    ConversionJob* added = job.get();
    connect(added, &ConversionJob::stateChanged, this, [this, added](JobState before, JobState now) {
        countState(before, -1);
        countState(now, +1);
        Q_EMIT jobStateChanged(added, before, now);
        Q_EMIT titleChanged();
    });
    connect(added, &ConversionJob::quitRequested, this, &JobQueue::quitRequested);
    added->setDestinationIsTaken([this](const QString& path) { return isDestinationTaken(path); });
    countState(added->state(), +1);
    ++m_destinations[added->queuedDestination()];

    const bool atBottom = insertsAtBottom();
    Q_EMIT jobAboutToBeAdded(atBottom ? count() : 0);
    m_taskArray.insert(atBottom ? m_taskArray.end() : m_taskArray.begin(), std::move(job));
    Q_EMIT jobAdded(added);

    m_startIsDue = true;
    if (!m_paused && !m_waiting.areWaiting()) startNextJobInQueue();
    m_waiting.cancelAdd();
    Q_EMIT titleChanged();
    return true;
}

void JobQueue::removeJob(ConversionJob* job) {
    const qsizetype index = indexOf(job);
    if (index < 0) return;
    Q_EMIT jobAboutToBeRemoved(index);
    std::unique_ptr<ConversionJob> removed = std::move(m_taskArray[static_cast<size_t>(index)]);
    m_taskArray.erase(m_taskArray.begin() + index);
    countState(job->state(), -1);
    if (--m_destinations[job->queuedDestination()] == 0) m_destinations.remove(job->queuedDestination());
    Q_EMIT jobRemoved(job);
    Q_EMIT titleChanged();
    removed.release()->deleteLater();  // The caller is often the job itself.
}

void JobQueue::startPostponed() {
    if (m_startIsDue) startNextJobInQueue();
}

void JobQueue::startNextJobInQueue() {
    const qint64 limit = conversionLimit();
    if (m_paused) return;
    m_startIsDue = false;
    // Starting a job may change the list: jobs are looked up anew by position.
    for (qsizetype i = 0; i < count(); ++i) {
        if (jobCountWithState(JobState::Converting) >= limit) return;
        ConversionJob* next = job(i);
        if (next->state() == JobState::Paused) {
            next->continueJob();
        } else if (next->state() == JobState::Queued) {
            next->start();
        }
    }
}

void JobQueue::pauseContinueClicked(bool byUser) {
    if (m_paused) {
        m_paused = false;
        Q_EMIT pausedChanged(false);
        if (byUser) startNextJobInQueue();
    } else if (byUser) {
        for (const auto& job : m_taskArray) {
            if (job->state() == JobState::Converting) job->pause();
        }
        m_paused = true;
        Q_EMIT pausedChanged(true);
    }
    Q_EMIT titleChanged();
}

void JobQueue::cleanClicked() {
    std::vector<ConversionJob*> finished;
    for (const auto& job : m_taskArray) {
        if (job->state() == JobState::Finished) finished.push_back(job.get());
    }
    for (ConversionJob* job : finished)
        job->remove();
}

void JobQueue::removeAll() {
    m_paused = true;  // No successor starts.
    while (!m_taskArray.empty())
        m_taskArray.front()->remove();
}

QString JobQueue::windowTitle() const {
    const QString pause = m_paused ? text::localized(" (Paused)") : QStringLiteral(" ");
    const QString numbers = m_taskArray.empty() ? QString()
                                                : makeString(" [%li Job(s), %li Queued]", count(),
                                                             jobCountWithState(JobState::Queued));
    return makeString("%@%@%@", ApplicationInfo::name(), pause, numbers);
}

QString JobQueue::addButtonTitle() const {
    return text::localized(m_paused ? "Add to Queue" : "Start Conversion");
}

int JobQueue::jobCountWithState(JobState state) const {
    return m_stateCounts[static_cast<size_t>(state)];
}

void JobQueue::countState(JobState state, int change) {
    m_stateCounts[static_cast<size_t>(state)] += change;
}

void JobQueue::increaseUsages(bool increase, bool allowFeedbackNow) {
    if (m_usageCounter) m_usageCounter(increase, allowFeedbackNow);
}

void JobQueue::setUsageCounter(std::function<void(bool, bool)> counter) {
    m_usageCounter = std::move(counter);
}

bool JobQueue::willWrite(const QString& path) const {
    return std::ranges::any_of(m_taskArray, [&](const auto& job) {
        return statusNotFinished(job->state()) &&
               (job->queuedDestination() == path ||
                destination::isSameFile(job->fileInfo().destinationURL.toLocalFile(), path));
    });
}

QStringList JobQueue::unfinishedFiles() const {
    QStringList movies;
    QStringList subtitles;
    for (const auto& job : m_taskArray) {
        if (job->state() == JobState::Finished) continue;
        movies.append(job->fileInfo().fileURL.toLocalFile());
        if (const auto& subtitle = job->fileInfo().subtitleFileURL) subtitles.append(subtitle->toLocalFile());
    }
    // The intake begins at the end, and each job goes to the top, or to the bottom.
    if (insertsAtBottom()) std::ranges::reverse(movies);
    return subtitles + movies;
}

bool JobQueue::isDestinationTaken(const QString& path) const {
    return m_destinations.contains(path);
}

qsizetype JobQueue::indexOf(const ConversionJob* job) const {
    const auto found =
        std::ranges::find_if(m_taskArray, [job](const auto& candidate) { return candidate.get() == job; });
    return found == m_taskArray.end() ? -1 : found - m_taskArray.begin();
}
