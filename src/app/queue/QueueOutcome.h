#pragma once

#include "convert/JobState.h"

#include <QHash>
#include <QObject>

class ConversionJob;
class JobQueue;

/// How the jobs ended since the queue was last idle, in numbers. A job that was queued again after it failed
/// counts as it ended last; one that left the list stays counted. Main thread only.
class QueueOutcome : public QObject {
    Q_OBJECT

public:
    struct Sum {
        int converted = 0;  ///< Without the damaged ones.
        int damaged = 0;
        int failed = 0;
        bool operator==(const Sum&) const = default;
    };

    /// `queue` must outlive this object and must be empty now.
    explicit QueueOutcome(JobQueue& queue, QObject* parent = nullptr);

Q_SIGNALS:
    /// The last job has ended, and with it more than three. Comes from the event loop, after what is posted
    /// at the end of that job. Not emitted when the user removed the last job before its end.
    void summedUp(const QueueOutcome::Sum& sum);

private:
    void onStateChanged(const ConversionJob* job, JobState now);
    void onRemoved(const ConversionJob* job);
    void startAnew();

    const JobQueue& m_queue;
    QHash<const ConversionJob*, int Sum::*> m_outcomes;  ///< Of the jobs in the list.
    Sum m_removed;                                       ///< Of those that left it.
};
