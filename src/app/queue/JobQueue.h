#pragma once

#include "convert/ConversionJob.h"
#include "convert/JobController.h"

#include <QHash>
#include <QObject>

#include <array>
#include <functional>
#include <memory>
#include <vector>

class WaitingFiles;

/// The one queue of conversions: which run, which comes next, and the pause over all. Owns its jobs; index 0
/// is the top. Main thread only.
class JobQueue : public QObject, public JobController {
    Q_OBJECT

public:
    /// `waiting` outlives the queue: while files wait to be probed, an added job is not started.
    explicit JobQueue(WaitingFiles& waiting, QObject* parent = nullptr);
    ~JobQueue() override;

    /// What the user is told of a job that addJob() refused.
    static const char* const kNotWriteable;

    /// Queues a job whose destination is set, at the top or, by the setting, at the bottom, and goes on to
    /// the next waiting file. False: the destination cannot be written; the job is dropped, the file is still
    /// at hand, and the user is to be told. Adding costs the same however long the queue is.
    [[nodiscard]] bool addJob(std::unique_ptr<ConversionJob> job);

    qsizetype count() const { return static_cast<qsizetype>(m_taskArray.size()); }
    ConversionJob* job(qsizetype index) const { return m_taskArray[static_cast<size_t>(index)].get(); }
    bool isPaused() const { return m_paused; }

    /// How many jobs may convert at a time, by the settings.
    static qint64 conversionLimit();

    /// A free name for an output: nothing exists there and no other job of the queue is going to write it.
    QString uniqueDestination(const QString& path) const;
    /// Whether an unfinished job writes or is going to write this file.
    bool willWrite(const QString& path) const;
    /// The movies that are not converted, also those that failed, with their subtitle files: in the order in
    /// which FileIntake::openFiles() leads to the same queue.
    QStringList unfinishedFiles() const;

    /// Starts what was added while files waited in front of the queue. Jobs that the user paused since stay
    /// so.
    void startPostponed();
    /// Finished jobs leave the list; failed ones stay.
    void cleanClicked();
    /// Ends every job and empties the list.
    void removeAll();

    /// Name, pause and the numbers of jobs.
    QString windowTitle() const;
    /// What the add button does to a job: start it, or put it into the paused queue.
    QString addButtonTitle() const;

    // JobController
    void startNextJobInQueue() override;
    void removeJob(ConversionJob* job) override;
    void pauseContinueClicked(bool byUser) override;
    int jobCountWithState(JobState state) const override;
    void increaseUsages(bool increase, bool allowFeedbackNow) override;

    /// Who counts usages; may be null.
    void setUsageCounter(std::function<void(bool increase, bool allowFeedbackNow)> counter);

Q_SIGNALS:
    void jobAboutToBeAdded(qsizetype index);
    void jobAdded(ConversionJob* job);
    void jobAboutToBeRemoved(qsizetype index);
    void jobRemoved(ConversionJob* job);
    void jobStateChanged(ConversionJob* job, JobState before, JobState now);
    void pausedChanged(bool paused);
    /// Anything that windowTitle() shows may have changed.
    void titleChanged();
    void quitRequested();

private:
    void countState(JobState state, int change);
    bool isDestinationTaken(const QString& path) const;
    qsizetype indexOf(const ConversionJob* job) const;

    WaitingFiles& m_waiting;
    std::vector<std::unique_ptr<ConversionJob>> m_taskArray;
    std::array<int, 5> m_stateCounts{};
    QHash<QString, int> m_destinations;  ///< Outputs that the jobs are going to write, and how many jobs.
    bool m_startIsDue = false;           ///< A job was added while files waited.
    bool m_paused = false;
    std::function<void(bool, bool)> m_usageCounter;
};
