#pragma once

#include "convert/JobState.h"

#include <QHash>
#include <QObject>

#include <optional>

class ConversionJob;
class JobQueue;

/// Progress of the whole queue: of the jobs that were queued since it was last idle. The cost of an update
/// does not depend on the length of the queue. Main thread only.
class QueueProgress : public QObject {
    Q_OBJECT

public:
    /// `queue` must outlive this object and must be empty now.
    explicit QueueProgress(JobQueue& queue, QObject* parent = nullptr);

    /// 0 to 1; empty while no job is left to convert.
    std::optional<double> fraction() const;

Q_SIGNALS:
    void changed();

private:
    void add(ConversionJob* job);
    void forget(const ConversionJob* job);
    void note(const ConversionJob* job, double percent);
    void onStateChanged(const ConversionJob* job, JobState now);
    void resetIfIdle();

    struct Share {
        double percent = 0;
        bool isOver = false;
    };
    QHash<const ConversionJob*, Share> m_shares;
    double m_sum = 0;  ///< Sum of the percentages of all jobs.
    qsizetype m_unfinished = 0;
};
