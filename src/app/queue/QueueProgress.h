#pragma once

#include "convert/JobState.h"

#include <QHash>
#include <QObject>

#include <optional>

class ConversionJob;
class JobQueue;

/// How far the queue is as a whole: over the jobs that were queued since it was last idle. A job's tick costs
/// the same however long the queue is. Main thread only.
class QueueProgress : public QObject {
    Q_OBJECT

public:
    /// `queue` outlives this and is still empty.
    explicit QueueProgress(JobQueue& queue, QObject* parent = nullptr);

    /// 0 to 1; nothing while no job is left to convert.
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
    double m_sum = 0;  ///< Of all percentages.
    qsizetype m_unfinished = 0;
};
