#include "app/queue/JobQueue.h"

#include "app/destinations/OutputName.h"
#include "app/intake/FileIntake.h"
#include "convert/RunJournal.h"
#include "settings/Keys.h"
#include "settings/Settings.h"
#include "support/alerts/Alert.h"
#include "support/alerts/AlertQueue.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/Files.h"
#include "support/base/Format.h"
#include "support/base/Texts.h"
#include "support/store/Defaults.h"

#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <iterator>
#include <limits>
#include <numeric>
#include <span>
#include <vector>

namespace {

bool insertsAtBottom() {
    return settings::InsertJobsAtBottom.value();
}

}  // namespace

const char* const JobQueue::kNotWriteable = QT_TRANSLATE_NOOP(
    "Ravelin",
    "You don't seem to have write access to the selected destinatation or it is a read-only filesystem. Please choose another destination.");

JobQueue::JobQueue(WaitingFiles& waiting, QObject* parent) : QObject(parent), m_waiting(waiting) {}

JobQueue::~JobQueue() = default;

qint64 JobQueue::conversionLimit() {
    // The setting is an index into a list that starts with two.
    constexpr qint64 kOffset = 2;
    if (defaultInt(kConcurrentJobsKey) == 0) return 1;
    return std::clamp<qint64>(defaultInt(kConcurrentJobCountKey), 0,
                              std::numeric_limits<qint64>::max() - kOffset) +
           kOffset;
}

QString JobQueue::uniqueDestination(const QString& path) const {
    return files::uniqueFile(path, [this](const QString& candidate) {
        return isDestinationTaken(candidate) || files::fileExists(candidate) ||
               QFileInfo(candidate).isSymLink();
    });
}

bool JobQueue::addJob(std::unique_ptr<ConversionJob> job, const ConversionJob* above) {
    if (!job->destinationIsWriteable()) {
        // Jobs that were added before do not wait for the user.
        if (!m_waiting.areWaiting()) startPostponed();
        return false;
    }
    insertJob(std::move(job), insertsAtBottom() ? count() : above ? indexOf(above) + 1 : 0);
    m_startIsDue = true;
    if (!m_paused && !m_waiting.areWaiting()) startNextJobInQueue();
    m_waiting.cancelAdd();
    return true;
}

void JobQueue::insertJob(std::unique_ptr<ConversionJob> job, qsizetype index) {
    std::vector<Placed> one;
    ++m_destinations[job->queuedDestination()];
    // Movies that are added one after the other are often of one series.
    if (count() > 0) job->shareFileInfo(*this->job(std::clamp<qsizetype>(index - 1, 0, count() - 1)));
    one.push_back({index, std::move(job)});
    place(std::move(one));
}

void JobQueue::insertJobs(std::vector<Placed> jobs) {
    for (const Placed& each : jobs) {
        ConversionJob& job = *each.job;
        const QString destination = job.queuedDestination();
        // The name of a paused job is that of its own file.
        const bool isTaken =
            job.state() == JobState::Queued &&
            (isDestinationTaken(destination) || (job.mayReplaceDestination() && willWrite(destination)));
        if (isTaken) job.setDestination(uniqueDestination(destination));
        ++m_destinations[job.queuedDestination()];
    }
    place(std::move(jobs));
}

void JobQueue::onStateChanged(ConversionJob& job, JobState before, JobState now) {
    countState(before, -1);
    countState(now, +1);
    noteDamage(&job);
    Q_EMIT jobStateChanged(&job, before, now);
    Q_EMIT titleChanged();
}

void JobQueue::onProgressed(ConversionJob& job) {
    Q_EMIT jobProgressed(&job);
}

void JobQueue::onEnded(ConversionJob& job) {
    Q_EMIT jobEnded(&job);
}

void JobQueue::onQuitRequested() {
    Q_EMIT quitRequested();
}

void JobQueue::place(std::vector<Placed> jobs) {
    for (auto begin = jobs.begin(); begin != jobs.end();) {
        const qsizetype first = std::min(begin->row, count());
        auto end = begin;
        std::vector<std::unique_ptr<ConversionJob>> adjacent;
        for (; end != jobs.end() && (end->row == begin->row + (end - begin) || first == count()); ++end)
            adjacent.push_back(std::move(end->job));
        begin = end;
        const auto size = static_cast<qsizetype>(adjacent.size());
        for (const auto& job : adjacent) {
            job->setListener(this);
            countState(job->state(), +1);
            noteDamage(job.get());
        }
        Q_EMIT jobsAboutToBeAdded(first, size);
        m_taskArray.insert(m_taskArray.begin() + first, std::move_iterator(adjacent.begin()),
                           std::move_iterator(adjacent.end()));
        for (qsizetype row = first; row < first + size; ++row)
            Q_EMIT jobAdded(job(row));
        Q_EMIT jobsAdded();
    }
    Q_EMIT titleChanged();
}

void JobQueue::removeJob(ConversionJob* job) {
    // The caller is often the job itself: delete later.
    if (const qsizetype index = indexOf(job); index >= 0)
        takeJobs({index}).front().job.release()->deleteLater();
}

std::vector<JobQueue::Placed> JobQueue::takeJobs(const QList<qsizetype>& rows) {
    std::vector<Placed> taken(static_cast<size_t>(rows.size()));
    // From the end, so that the rows of the others stay.
    for (qsizetype end = rows.size(); end > 0;) {
        qsizetype begin = end - 1;
        while (begin > 0 && rows[begin - 1] + 1 == rows[begin])
            --begin;
        const std::span adjacent(taken.begin() + begin, taken.begin() + end);
        const qsizetype first = rows[begin];
        end = begin;
        Q_EMIT jobsAboutToBeRemoved(first, std::ssize(adjacent));
        const auto from = m_taskArray.begin() + first;
        for (qsizetype i = 0; i < std::ssize(adjacent); ++i) {
            Placed& place = adjacent[static_cast<size_t>(i)];
            place = {first + i, std::move(from[i])};
            countState(place.job->state(), -1);
            m_damaged.remove(place.job.get());
            releaseDestination(place.job->queuedDestination());
        }
        m_taskArray.erase(from, from + std::ssize(adjacent));
        for (const Placed& each : adjacent)
            Q_EMIT jobRemoved(each.job.get());
        Q_EMIT jobsRemoved();
    }
    Q_EMIT titleChanged();
    return taken;
}

void JobQueue::startPostponed() {
    if (m_startIsDue) startNextJobInQueue();
}

void JobQueue::startNextJobInQueue() {
    const qint64 limit = conversionLimit();
    if (m_paused) return;
    m_startIsDue = false;
    // Starting a job may change the list: look jobs up by position each time.
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
    QList<ConversionJob*> finished;
    for (const auto& job : m_taskArray) {
        if (job->state() == JobState::Finished) finished.append(job.get());
    }
    removeJobs(finished);
}

void JobQueue::removeJobs(const QList<ConversionJob*>& jobs) {
    if (m_removal) {
        m_removal(jobs);
        return;
    }
    const QSet<ConversionJob*> chosen(jobs.cbegin(), jobs.cend());
    QList<qsizetype> rows;
    for (qsizetype row = 0; row < count(); ++row) {
        if (chosen.contains(job(row))) rows.append(row);
    }
    endJobs(rows);
}

void JobQueue::endJobs(const QList<qsizetype>& rows) {
    std::vector<Placed> taken = takeJobs(rows);
    for (Placed& each : taken) {
        // One of them may be the caller.
        ConversionJob* job = each.job.release();
        job->remove();
        job->deleteLater();
    }
}

QList<qsizetype> JobQueue::queuedRows() const {
    QList<qsizetype> rows;
    for (qsizetype row = 0; row < count(); ++row) {
        if (job(row)->state() == JobState::Queued) rows.append(row);
    }
    return rows;
}

void JobQueue::move(const QList<ConversionJob*>& jobs, qsizetype row) {
    const QSet<ConversionJob*> chosen(jobs.cbegin(), jobs.cend());
    QList<qsizetype> above;
    QList<qsizetype> moved;
    QList<qsizetype> below;
    for (const qsizetype queued : queuedRows())
        (chosen.contains(job(queued)) ? moved : queued < row ? above : below).append(queued);
    reorder(above + moved + below);
}

void JobQueue::moveUp(const QList<ConversionJob*>& jobs) {
    const QSet<ConversionJob*> chosen(jobs.cbegin(), jobs.cend());
    QList<qsizetype> rows = queuedRows();
    for (qsizetype i = 1; i < rows.size(); ++i) {
        if (chosen.contains(job(rows[i])) && !chosen.contains(job(rows[i - 1]))) rows.swapItemsAt(i, i - 1);
    }
    reorder(rows);
}

void JobQueue::moveDown(const QList<ConversionJob*>& jobs) {
    const QSet<ConversionJob*> chosen(jobs.cbegin(), jobs.cend());
    QList<qsizetype> rows = queuedRows();
    for (qsizetype i = rows.size() - 1; i > 0; --i) {
        if (chosen.contains(job(rows[i - 1])) && !chosen.contains(job(rows[i]))) rows.swapItemsAt(i, i - 1);
    }
    reorder(rows);
}

/// `rows` are those of the queued jobs, in their new order.
void JobQueue::reorder(const QList<qsizetype>& rows) {
    QList<qsizetype> places = rows;
    std::ranges::sort(places);
    if (places == rows) return;
    const qsizetype first = *std::ranges::mismatch(places, rows).in1;
    QList<qsizetype> origins(places.last() + 1 - first);
    std::iota(origins.begin(), origins.end(), first);
    for (qsizetype i = 0; i < rows.size(); ++i) {
        if (places[i] >= first) origins[places[i] - first] = rows[i];
    }
    while (origins.last() == first + origins.size() - 1)
        origins.removeLast();

    Q_EMIT jobsAboutToBeMoved();
    std::vector<std::unique_ptr<ConversionJob>> moved;
    for (const qsizetype origin : origins)
        moved.push_back(std::move(m_taskArray[static_cast<size_t>(origin)]));
    std::ranges::move(moved, m_taskArray.begin() + first);
    Q_EMIT jobsMoved(first, origins);
}

void JobQueue::removeAll() {
    m_paused = true;  // Prevents that another job starts.
    QList<qsizetype> rows(count());
    std::iota(rows.begin(), rows.end(), 0);
    endJobs(rows);
}

QString JobQueue::windowTitle() const {
    const QString pause = m_paused ? Texts::tr(" (Paused)") : QStringLiteral(" ");
    const QString numbers =
        m_taskArray.empty()
            ? QString()
            : Texts::tr(" [%1 Job(s), %2 Queued]")
                  .arg(QString::number(count()), QString::number(jobCountWithState(JobState::Queued)));
    return makeString("%@%@%@", ApplicationInfo::name(), pause, numbers);
}

QString JobQueue::pauseHint() const {
    const auto paused = jobCountWithState(JobState::Paused);
    const auto running = jobCountWithState(JobState::Converting);
    if (jobCountWithState(JobState::Queued) > 0 || paused + running != 1 || m_paused != (paused == 1))
        return {};
    const auto found = std::ranges::find_if(m_taskArray, [](const auto& job) {
        return job->state() == JobState::Paused || statusIsRunning(job->state());
    });
    if (found == m_taskArray.end()) return {};
    const QString& name = (*found)->fileInfo().fileName;
    return m_paused ? Texts::tr("Continue “%1”").arg(name) : Texts::tr("Pause “%1”").arg(name);
}

QString JobQueue::addButtonTitle() const {
    return m_paused ? Texts::tr("Add to Queue") : Texts::tr("Start Conversion");
}

int JobQueue::jobCountWithState(JobState state) const {
    return m_stateCounts[static_cast<size_t>(state)];
}

bool JobQueue::isIdle() const {
    return jobCountWithState(JobState::Queued) + jobCountWithState(JobState::Converting) +
               jobCountWithState(JobState::Paused) ==
           0;
}

void JobQueue::countState(JobState state, int change) {
    m_stateCounts[static_cast<size_t>(state)] += change;
}

void JobQueue::noteDamage(const ConversionJob* job) {
    const auto ending = job->state() == JobState::Finished ? job->ending() : std::nullopt;
    if (ending && (ending->isDamaged || ending->isKnownDamaged())) {
        m_damaged.insert(job);
    } else {
        m_damaged.remove(job);
    }
}

void JobQueue::increaseUsages(bool increase, bool allowFeedbackNow) {
    if (m_usageCounter) m_usageCounter(increase, allowFeedbackNow);
}

void JobQueue::setRemoval(std::function<void(const QList<ConversionJob*>&)> removal) {
    m_removal = std::move(removal);
}

void JobQueue::setUsageCounter(std::function<void(bool, bool)> counter) {
    m_usageCounter = std::move(counter);
}

bool JobQueue::willWrite(const QString& path) const {
    return std::ranges::any_of(m_taskArray, [&](const auto& job) {
        return statusNotFinished(job->state()) &&
               (job->queuedDestination() == path ||
                outputname::isSameFile(job->fileInfo().destinationURL.toLocalFile(), path));
    });
}

bool JobQueue::willConvert(const QString& source) const {
    return std::ranges::any_of(m_taskArray, [&](const auto& job) {
        return statusNotFinished(job->state()) && job->fileInfo().fileURL.toLocalFile() == source;
    });
}

bool JobQueue::changeFolder(ConversionJob& job, const QString& folder) {
    const QString name = QFileInfo(job.queuedDestination()).fileName();
    releaseDestination(job.queuedDestination());
    const QString path = uniqueDestination(folder + u'/' + name);
    const bool isWriteable = RunJournal::canWrite(path);
    if (isWriteable) job.setDestination(path);
    ++m_destinations[job.queuedDestination()];
    return isWriteable;
}

void JobQueue::releaseDestination(const QString& path) {
    if (--m_destinations[path] == 0) m_destinations.remove(path);
}

bool JobQueue::isDestinationTaken(const QString& path) const {
    return m_destinations.contains(path);
}

qsizetype JobQueue::indexOf(const ConversionJob* job) const {
    const auto found =
        std::ranges::find_if(m_taskArray, [job](const auto& candidate) { return candidate.get() == job; });
    return found == m_taskArray.end() ? -1 : found - m_taskArray.begin();
}
