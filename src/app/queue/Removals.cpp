#include "app/queue/Removals.h"

#include "app/queue/JobQueue.h"
#include "support/base/Texts.h"

#include <algorithm>
#include <ranges>
#include <utility>

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
    std::vector<std::pair<qsizetype, ConversionJob*>> rows;
    for (ConversionJob* job : jobs) {
        if (const qsizetype row = m_queue.indexOf(job); row >= 0) rows.emplace_back(row, job);
    }
    if (rows.empty()) return;
    std::ranges::sort(rows);
    Entry entry;
    // From the end, so that the rows of the others stay.
    for (const auto& [row, job] : rows | std::views::reverse) {
        const bool wasConverting = job->state() == JobState::Converting;
        job->pause();
        entry.jobs.push_back({m_queue.takeJob(row), row, wasConverting});
        job->disconnect();
    }
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
    Entry entry = std::move(m_entries.back());
    m_entries.pop_back();
    m_entries.empty() ? m_timer.stop() : m_timer.start();
    QList<ConversionJob*> interrupted;
    for (Removed& removed : entry.jobs | std::views::reverse) {
        if (removed.wasConverting) interrupted.append(removed.job.get());
        putBack(std::move(removed));
    }
    for (ConversionJob* job : interrupted) {
        const bool isFree = m_queue.jobCountWithState(JobState::Converting) < JobQueue::conversionLimit();
        if (isFree && !m_queue.isPaused()) job->continueJob();
    }
    if (!entry.movies.files.isEmpty()) m_intake.openFiles(entry.movies.files, entry.movies.folders);
    Q_EMIT changed();
    if (!entry.jobs.empty()) m_queue.startNextJobInQueue();
}

void Removals::putBack(Removed removed) {
    ConversionJob& job = *removed.job;
    // Another job may have got the name meanwhile; that of a paused job is its own file.
    const QString destination = job.queuedDestination();
    if (job.state() == JobState::Queued && m_queue.willWrite(destination))
        job.setDestination(m_queue.uniqueDestination(destination));
    m_queue.insertJob(std::move(removed.job), std::min(removed.row, m_queue.count()));
}

void Removals::settle() {
    m_timer.stop();
    if (m_entries.empty()) return;
    m_entries.clear();  // A job ends its tool and deletes its incomplete output.
    Q_EMIT changed();
}
