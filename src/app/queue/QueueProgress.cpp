#include "app/queue/QueueProgress.h"

#include "app/queue/JobQueue.h"

QueueProgress::QueueProgress(JobQueue& queue, QObject* parent) : QObject(parent) {
    connect(&queue, &JobQueue::jobAdded, this, &QueueProgress::add);
    connect(&queue, &JobQueue::jobRemoved, this, &QueueProgress::forget);
    connect(&queue, &JobQueue::jobStateChanged, this,
            [this](const ConversionJob* job, JobState, JobState now) { onStateChanged(job, now); });
}

std::optional<double> QueueProgress::fraction() const {
    constexpr double kPercent = 100;
    if (m_unfinished == 0) return std::nullopt;
    return m_sum / (kPercent * static_cast<double>(m_shares.size()));
}

void QueueProgress::add(ConversionJob* job) {
    connect(job, &ConversionJob::progressed, this, [this, job] { note(job, job->progress()); });
    if (!statusNotFinished(job->state())) return;
    m_shares.insert(job, {});
    ++m_unfinished;
    Q_EMIT changed();
}

void QueueProgress::note(const ConversionJob* job, double percent) {
    const auto share = m_shares.find(job);
    if (share == m_shares.end()) return;
    m_sum += percent - share->percent;
    share->percent = percent;
    Q_EMIT changed();
}

void QueueProgress::onStateChanged(const ConversionJob* job, JobState now) {
    auto share = m_shares.find(job);
    if (share == m_shares.end()) {
        if (now != JobState::Queued) return;
        // It is converted again after the queue was idle.
        share = m_shares.insert(job, {.percent = 0, .isOver = true});
    }
    if (statusNotFinished(now) != share->isOver) return;
    share->isOver = !statusNotFinished(now);
    m_unfinished += share->isOver ? -1 : 1;
    constexpr double kWhole = 100;
    m_sum += (share->isOver ? kWhole : 0) - share->percent;
    share->percent = share->isOver ? kWhole : 0;
    resetIfIdle();
    Q_EMIT changed();
}

void QueueProgress::forget(const ConversionJob* job) {
    const auto share = m_shares.constFind(job);
    if (share == m_shares.cend()) return;
    m_sum -= share->percent;
    if (!share->isOver) --m_unfinished;
    m_shares.erase(share);
    resetIfIdle();
    Q_EMIT changed();
}

void QueueProgress::resetIfIdle() {
    if (m_unfinished > 0) return;
    m_shares.clear();
    m_sum = 0;
}
