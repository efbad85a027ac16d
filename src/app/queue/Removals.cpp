#include "app/queue/Removals.h"

#include "support/base/Texts.h"

#include <QSet>

#include <algorithm>
#include <iterator>
#include <utility>

/// Thousands of jobs take longer than the window may stand still: each step of the work ends after this time.
static constexpr std::chrono::milliseconds kStep(10);

Removals::Removals(JobQueue& queue, FileIntake& intake, QObject* parent)
    : QObject(parent), m_queue(queue), m_intake(intake) {
    m_timer.setSingleShot(true);
    m_timer.setInterval(kMilliseconds);
    connect(&m_timer, &QTimer::timeout, this, &Removals::settle);
    queue.setRemoval([this](const QList<ConversionJob*>& jobs) { remove(jobs); });
}

Removals::~Removals() {
    m_queue.setRemoval({});
}

void Removals::remove(const QList<ConversionJob*>& jobs) {
    const QSet<ConversionJob*> chosen(jobs.cbegin(), jobs.cend());
    QList<qsizetype> rows;
    Entry entry;
    for (qsizetype row = 0; row < m_queue.count(); ++row) {
        ConversionJob* job = m_queue.job(row);
        if (!chosen.contains(job)) continue;
        rows.append(row);
        if (job->state() == JobState::Converting) entry.interrupted.append(job);
    }
    if (rows.empty()) return;
    for (const auto& job : std::as_const(entry.interrupted))
        job->pause();
    entry.jobs = m_queue.takeJobs(rows);
    for (const JobQueue::Placed& removed : entry.jobs)
        removed.job->setListener(nullptr);
    add(std::move(entry));
    m_queue.startNextJobInQueue();
}

void Removals::cancelAll() {
    Entry entry;
    entry.movies = m_intake.cancelAll();
    if (!entry.movies.files.isEmpty()) add(std::move(entry));
}

void Removals::add(Entry entry) {
    m_entries.push_back(std::move(entry));
    m_timer.start();
    Q_EMIT changed();
}

QString Removals::text() const {
    if (m_entries.empty()) return {};
    const Entry& last = m_entries.back();
    if (last.jobs.size() == 1)
        return Texts::tr("Removed “%1” from the list").arg(last.jobs.front().job->fileInfo().fileName);
    if (!last.jobs.empty())
        return Texts::tr("Removed %n movie(s) from the list", nullptr, static_cast<int>(last.jobs.size()));
    return Texts::tr("Left %n movie(s) out", nullptr, last.movies.count);
}

void Removals::undo() {
    if (m_entries.empty()) return;
    completeUndo();
    m_returning = std::move(m_entries.back());
    m_entries.pop_back();
    m_entries.empty() ? m_timer.stop() : m_timer.start();
    putBack(kStep);
    Q_EMIT changed();
}

void Removals::completeUndo() {
    putBack(QDeadlineTimer::Forever);
}

void Removals::putBack(QDeadlineTimer deadline) {
    if (!m_returning) return;
    constexpr std::ptrdiff_t kAtOnce = 100;
    std::vector<JobQueue::Placed>& jobs = m_returning->jobs;
    auto next = jobs.begin();
    while (next != jobs.end() && !deadline.hasExpired()) {
        const auto end = next + std::min(kAtOnce, jobs.end() - next);
        m_queue.insertJobs({std::move_iterator(next), std::move_iterator(end)});
        next = end;
    }
    jobs.erase(jobs.begin(), next);
    if (!jobs.empty()) {
        QTimer::singleShot(0, this, [this] { putBack(kStep); });
        return;
    }
    const Entry entry = *std::exchange(m_returning, std::nullopt);
    for (const auto& job : entry.interrupted) {
        const bool isFree = m_queue.jobCountWithState(JobState::Converting) < JobQueue::conversionLimit();
        if (job && m_queue.indexOf(job) >= 0 && isFree && !m_queue.isPaused()) job->continueJob();
    }
    if (entry.movies.files.isEmpty()) {
        m_queue.startNextJobInQueue();
    } else {
        m_intake.openFiles(entry.movies.files, entry.movies.folders);
    }
}

void Removals::settle() {
    m_timer.stop();
    if (m_entries.empty()) return;
    for (Entry& entry : std::exchange(m_entries, {})) {
        for (JobQueue::Placed& removed : entry.jobs)
            m_settled.push_back(std::move(removed.job));
        // These end their tools and delete their incomplete outputs, which must not wait.
        std::erase_if(m_settled, [](const auto& job) { return job->state() == JobState::Paused; });
    }
    deleteSettled();
    Q_EMIT changed();
}

void Removals::deleteSettled() {
    const QDeadlineTimer deadline(kStep);
    while (!m_settled.empty() && !deadline.hasExpired())
        m_settled.pop_back();
    if (!m_settled.empty()) QTimer::singleShot(0, this, &Removals::deleteSettled);
}
