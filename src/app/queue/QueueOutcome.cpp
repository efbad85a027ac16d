#include "app/queue/QueueOutcome.h"

#include "app/queue/JobQueue.h"

namespace {

/// With fewer, the messages about each job are enough.
constexpr int kFewest = 4;

int QueueOutcome::Sum::*outcomeOf(const ConversionJob& job) {
    if (job.state() == JobState::Failed) return &QueueOutcome::Sum::failed;
    const auto ending = job.ending();
    return ending && ending->isKnownDamaged() ? &QueueOutcome::Sum::damaged : &QueueOutcome::Sum::converted;
}

}  // namespace

QueueOutcome::QueueOutcome(JobQueue& queue, QObject* parent) : QObject(parent), m_queue(queue) {
    connect(&queue, &JobQueue::jobStateChanged, this,
            [this](const ConversionJob* job, JobState, JobState now) { onStateChanged(job, now); });
    connect(&queue, &JobQueue::jobRemoved, this, &QueueOutcome::onRemoved);
}

void QueueOutcome::onStateChanged(const ConversionJob* job, JobState now) {
    if (statusNotFinished(now)) {
        m_outcomes.remove(job);
        return;
    }
    m_outcomes.insert(job, outcomeOf(*job));
    if (!m_queue.isIdle()) return;
    Sum sum = m_removed;
    for (const auto outcome : std::as_const(m_outcomes))
        ++(sum.*outcome);
    startAnew();
    if (sum.converted + sum.damaged + sum.failed < kFewest) return;
    QMetaObject::invokeMethod(
        this, [this, sum] { Q_EMIT summedUp(sum); }, Qt::QueuedConnection);
}

void QueueOutcome::onRemoved(const ConversionJob* job) {
    if (const auto outcome = m_outcomes.constFind(job); outcome != m_outcomes.cend()) {
        ++(m_removed.**outcome);
        m_outcomes.erase(outcome);
    }
    if (m_queue.isIdle()) startAnew();
}

void QueueOutcome::startAnew() {
    m_outcomes.clear();
    m_removed = {};
}
