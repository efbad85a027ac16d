#include "app/queue/QueueProgress.h"

#include "app/queue/JobQueue.h"
#include "support/base/Texts.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr double kPercent = 100;

QueueProgress::Clock monotonicClock() {
    QElapsedTimer timer;
    timer.start();
    return [timer] { return timer.elapsed(); };
}

/// "about 2 h 10 min", in steps as rough as the estimate.
QString aboutText(double seconds) {
    constexpr qint64 kMinute = 60;
    constexpr qint64 kHour = 60 * kMinute;
    constexpr qint64 kFewSeconds = 5;
    constexpr qint64 kFewMinutes = 10;
    const auto inSteps = [seconds](qint64 step) {
        return std::max(std::llround(seconds / static_cast<double>(step)), 1LL) * step;
    };
    if (inSteps(kFewSeconds) < kMinute) return Texts::tr("about %1 s left").arg(inSteps(kFewSeconds));
    if (inSteps(kMinute) < kHour) return Texts::tr("about %1 min left").arg(inSteps(kMinute) / kMinute);
    const qint64 rounded = inSteps(kFewMinutes * kMinute);
    const qint64 minutes = rounded % kHour / kMinute;
    if (minutes == 0) return Texts::tr("about %1 h left").arg(rounded / kHour);
    return Texts::tr("about %1 h %2 min left").arg(rounded / kHour).arg(minutes);
}

}  // namespace

QueueProgress::QueueProgress(JobQueue& queue, QObject* parent)
    : QueueProgress(queue, monotonicClock(), parent) {}

QueueProgress::QueueProgress(JobQueue& queue, Clock clock, QObject* parent)
    : QObject(parent), m_clock(std::move(clock)) {
    connect(&queue, &JobQueue::jobAdded, this, &QueueProgress::add);
    connect(&queue, &JobQueue::jobsAdded, this, &QueueProgress::changed);
    connect(&queue, &JobQueue::jobRemoved, this, &QueueProgress::forget);
    connect(&queue, &JobQueue::jobsRemoved, this, [this] {
        resetIfIdle();
        Q_EMIT changed();
    });
    connect(&queue, &JobQueue::jobProgressed, this, &QueueProgress::note);
    connect(&queue, &JobQueue::jobStateChanged, this, &QueueProgress::onStateChanged);
    connect(&queue, &JobQueue::pausedChanged, this, &QueueProgress::changed);
}

std::optional<double> QueueProgress::fraction() const {
    if (m_ended == totalCount()) return std::nullopt;
    return m_total == 0 ? 0 : m_doneBytes / totalBytes();
}

double QueueProgress::totalBytes() const {
    return m_bytes * static_cast<double>(totalCount()) / static_cast<double>(qMax(m_total, qsizetype{1}));
}

void QueueProgress::setComing(qsizetype count) {
    if (count == std::exchange(m_coming, count)) return;
    resetIfIdle();
    Q_EMIT changed();
}

std::optional<double> QueueProgress::secondsLeft() const {
    return m_remaining.secondsFor(totalBytes() - m_doneBytes);
}

bool QueueProgress::isFinishing() const {
    // The tool reports its position once a second, so the last one may be before the end.
    constexpr double kNearlyAll = 0.995;
    return m_converting > 0 && m_converting == totalCount() - m_ended && fraction().value_or(0) > kNearlyAll;
}

QString QueueProgress::text() const {
    if (totalCount() < 2 || m_ended == totalCount()) return {};
    const QString count = Texts::tr("%1 of %2").arg(m_ended).arg(totalCount());
    if (isFinishing()) return Texts::tr("%1, finishing").arg(count);
    if (m_converting == 0) return count;
    const auto seconds = secondsLeft();
    return seconds ? Texts::tr("%1, %2").arg(count, aboutText(*seconds)) : count;
}

void QueueProgress::add(const ConversionJob* job) {
    if (statusNotFinished(job->state())) follow(job);
}

QueueProgress::Share& QueueProgress::follow(const ConversionJob* job) {
    Share share;
    share.bytes = std::max(static_cast<double>(job->fileInfo().fileSize), 1.0);
    m_bytes += share.bytes;
    ++m_total;
    Share& added = *m_shares.insert(job, share);
    setDone(added, share.bytes * job->progress() / kPercent);
    return added;
}

void QueueProgress::note(const ConversionJob* job) {
    const auto share = m_shares.find(job);
    if (share == m_shares.end()) return;
    const double before = share->done;
    setDone(*share, share->bytes * job->progress() / kPercent);
    countTime(share->done - before);
    Q_EMIT changed();
}

void QueueProgress::onStateChanged(const ConversionJob* job, JobState, JobState now) {
    const auto known = m_shares.find(job);
    // A job may be converted again after the queue was idle.
    if (known == m_shares.end() && now != JobState::Queued) return;
    Share& share = known == m_shares.end() ? follow(job) : *known;
    const bool wasRead = share.isConverting && now == JobState::Finished;
    countTime(wasRead ? share.bytes - share.done : 0);
    setConverting(share, now == JobState::Converting);
    setOver(share, !statusNotFinished(now));
    if (now == JobState::Queued) setDone(share, 0);
    resetIfIdle();
    Q_EMIT changed();
}

void QueueProgress::setDone(Share& share, double bytes) {
    m_doneBytes += bytes - share.done;
    share.done = bytes;
}

void QueueProgress::setOver(Share& share, bool isOver) {
    if (isOver == std::exchange(share.isOver, isOver)) return;
    m_ended += isOver ? 1 : -1;
    setDone(share, isOver ? share.bytes : 0);
}

void QueueProgress::setConverting(Share& share, bool isConverting) {
    if (isConverting == std::exchange(share.isConverting, isConverting)) return;
    m_converting += isConverting ? 1 : -1;
}

/// `bytes` were converted since the last call. Call it before m_converting changes.
void QueueProgress::countTime(double bytes) {
    constexpr double kMilliseconds = 1000;
    const qint64 now = m_clock();
    const qint64 before = std::exchange(m_lastTime, now);
    if (m_converting > 0) m_remaining.add(bytes, static_cast<double>(now - before) / kMilliseconds);
}

void QueueProgress::forget(const ConversionJob* job) {
    const auto share = m_shares.find(job);
    if (share == m_shares.end()) return;
    countTime(0);
    setConverting(*share, false);
    if (!share->isOver) {
        setDone(*share, 0);
        m_bytes -= share->bytes;
        --m_total;
    }
    m_shares.erase(share);
}

void QueueProgress::resetIfIdle() {
    if (m_ended < totalCount()) return;
    m_shares.clear();
    m_remaining = {};
    m_bytes = m_doneBytes = 0;
    m_total = m_ended = m_converting = 0;
}
