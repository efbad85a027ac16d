#pragma once

#include "app/queue/RemainingTime.h"
#include "convert/JobState.h"

#include <QHash>
#include <QObject>
#include <QString>

#include <functional>
#include <optional>

class ConversionJob;
class JobQueue;

/// Progress of the whole queue: of the jobs that were queued since it was last idle, by the sizes of their
/// movies. Ended jobs count even if they were removed from the list. The cost of an update does not depend on
/// the length of the queue. Main thread only.
class QueueProgress : public QObject {
    Q_OBJECT

public:
    /// Milliseconds of a clock that never goes back.
    using Clock = std::function<qint64()>;

    /// `queue` must outlive this object and must be empty now.
    explicit QueueProgress(JobQueue& queue, QObject* parent = nullptr);
    QueueProgress(JobQueue& queue, Clock clock, QObject* parent = nullptr);

    /// How many movies will be queued without the user. Until then the queue is not idle.
    void setComing(qsizetype count);

    /// 0 to 1; empty while no job is left to convert.
    std::optional<double> fraction() const;
    qsizetype endedCount() const { return m_ended; }
    qsizetype totalCount() const { return m_total + m_coming; }
    /// Seconds, without those in which nothing converts; empty: unknown yet.
    std::optional<double> secondsLeft() const;
    /// Nothing is left to read: the tool completes the last outputs.
    bool isFinishing() const;
    /// "94 of 200, about 1 h left" and the like; empty for less than two jobs.
    QString text() const;

Q_SIGNALS:
    void changed();

private:
    struct Share {
        double bytes = 1;
        double done = 0;  ///< Bytes.
        bool isOver = false;
        bool isConverting = false;
    };

    void add(const ConversionJob* job);
    Share& follow(const ConversionJob* job);
    void forget(const ConversionJob* job);
    void note(const ConversionJob* job);
    void onStateChanged(const ConversionJob* job, JobState before, JobState now);
    void setDone(Share& share, double bytes);
    void setOver(Share& share, bool isOver);
    void setConverting(Share& share, bool isConverting);
    void countTime(double bytes);
    void resetIfIdle();
    /// Of all jobs; movies to come count as much as the others on average.
    double totalBytes() const;

    Clock m_clock;
    qint64 m_lastTime = 0;
    RemainingTime m_remaining;
    QHash<const ConversionJob*, Share> m_shares;
    double m_bytes = 0;
    double m_doneBytes = 0;
    qsizetype m_total = 0;
    qsizetype m_coming = 0;
    qsizetype m_ended = 0;
    qsizetype m_converting = 0;
};
