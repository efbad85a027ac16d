#pragma once

#include "convert/ConversionJob.h"
#include "convert/JobController.h"

#include <QHash>
#include <QObject>
#include <QSet>

#include <array>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

class WaitingFiles;

/// The queue of conversions: decides which jobs run and which comes next, and can pause all of them. Owns its
/// jobs; index 0 is the top. Main thread only.
class JobQueue : public QObject, public JobController, private JobListener {
    Q_OBJECT

public:
    /// `waiting` must outlive the queue. While files wait to be probed, an added job is not started.
    explicit JobQueue(WaitingFiles& waiting, QObject* parent = nullptr);
    ~JobQueue() override;

    /// The message for the user when addJob() refused a job.
    static const char* const kNotWriteable;

    /// Queues a job, whose destination must be set, at the top or, depending on the setting, at the bottom,
    /// and starts the probe of the next waiting file. Returns false if the destination cannot be written: the
    /// job is then deleted, the file remains the current one, and the caller has to inform the user. The cost
    /// does not depend on the length of the queue.
    /// With `above`, a job at the top follows that job instead, if it is still queued; that one is looked for
    /// from the top.
    [[nodiscard]] bool addJob(std::unique_ptr<ConversionJob> job, const ConversionJob* above = nullptr);

    /// Queues a job of an earlier session at `index`, in the state that it has, and starts nothing. Its
    /// destination is taken as it is.
    void insertJob(std::unique_ptr<ConversionJob> job, qsizetype index);

    /// A job and its row.
    struct Placed {
        qsizetype row = 0;
        std::unique_ptr<ConversionJob> job;
    };
    /// Takes the jobs of these rows, which are in ascending order, off the list and hands them over in the
    /// state that they have. Does not start another one. Their listener is still the queue.
    std::vector<Placed> takeJobs(const QList<qsizetype>& rows);
    /// Queues jobs that were taken off the list, at their rows in ascending order; those behind the end
    /// follow at the end. A job that waits gets a free name for its output if another one has got its name
    /// meanwhile.
    void insertJobs(std::vector<Placed> jobs);

    qsizetype count() const { return static_cast<qsizetype>(m_taskArray.size()); }
    /// Where the job is; -1: it is not queued.
    qsizetype indexOf(const ConversionJob* job) const;
    ConversionJob* job(qsizetype index) const { return m_taskArray[static_cast<size_t>(index)].get(); }
    bool isPaused() const { return m_paused; }
    /// Whether no job is queued, converting or paused.
    bool isIdle() const;

    /// How many jobs may convert at a time, according to the settings.
    static qint64 conversionLimit();

    /// A free name for an output: no file exists there and no other job of the queue will write it.
    QString uniqueDestination(const QString& path) const;
    /// Whether an unfinished job writes or will write this file.
    bool willWrite(const QString& path) const;
    /// Whether an unfinished job converts this movie. The cost depends on the length of the queue.
    bool willConvert(const QString& source) const;
    /// Has the output of a job that does not run written into `folder`, under a free name. Returns false and
    /// changes nothing if no file can be written there.
    [[nodiscard]] bool changeFolder(ConversionJob& job, const QString& folder);
    /// Starts the jobs that were added while files waited to be probed. Jobs that the user has paused since
    /// then stay paused.
    void startPostponed();
    /// Removes the finished jobs from the list; failed ones stay.
    void cleanClicked();
    /// Takes these jobs off the list for the user and ends them, unless someone else does that; no other job
    /// starts before all are gone. Jobs that are not queued are ignored.
    void removeJobs(const QList<ConversionJob*>& jobs);
    /// Called by removeJobs() instead; may be null.
    void setRemoval(std::function<void(const QList<ConversionJob*>& jobs)> removal);

    // The order of the jobs that wait, which is the order in which they start. They take each other's rows:
    // jobs in other states keep theirs. Those of `jobs` that are in another state are ignored, and the others
    // keep their order among themselves.

    /// Puts the jobs behind those that wait above `row`, and in front of all others.
    void move(const QList<ConversionJob*>& jobs, qsizetype row);
    /// Moves each job past the next one that is not moved itself.
    void moveUp(const QList<ConversionJob*>& jobs);
    void moveDown(const QList<ConversionJob*>& jobs);
    /// Ends every job and empties the list.
    void removeAll();

    /// The application's name, the pause state and the numbers of jobs.
    QString windowTitle() const;
    /// What a pause or its end concerns, where that is a single movie; else empty.
    QString pauseHint() const;
    /// Title of the add button: starts the job, or adds it to the paused queue.
    QString addButtonTitle() const;

    // JobController
    void startNextJobInQueue() override;
    void removeJob(ConversionJob* job) override;
    void pauseContinueClicked(bool byUser) override;
    int jobCountWithState(JobState state) const override;
    bool isDestinationTaken(const QString& path) const override;
    void increaseUsages(bool increase, bool allowFeedbackNow) override;

    /// How many of the finished jobs have outputs in which something is missing.
    int damagedCount() const { return static_cast<int>(m_damaged.size()); }

    /// Called by increaseUsages(); may be null.
    void setUsageCounter(std::function<void(bool increase, bool allowFeedbackNow)> counter);

Q_SIGNALS:
    /// Adjacent jobs come and go together, framed by these signals, each with a jobAdded() or jobRemoved() of
    /// its own in between, when the list has changed.
    void jobsAboutToBeAdded(qsizetype first, qsizetype count);
    void jobAdded(ConversionJob* job);
    void jobsAdded();
    void jobsAboutToBeRemoved(qsizetype first, qsizetype count);
    void jobRemoved(ConversionJob* job);
    void jobsRemoved();
    void jobsAboutToBeMoved();
    /// The jobs from the row `first` on are in another order: `origins` has the row where each of them was.
    void jobsMoved(qsizetype first, const QList<qsizetype>& origins);
    void jobStateChanged(ConversionJob* job, JobState before, JobState now);
    /// The percentage of the job was updated.
    void jobProgressed(ConversionJob* job);
    /// The job is finished or failed; its ending() is set.
    void jobEnded(ConversionJob* job);
    void pausedChanged(bool paused);
    /// The result of windowTitle() may have changed.
    void titleChanged();
    void quitRequested();

private:
    void place(std::vector<Placed> jobs);
    void endJobs(const QList<qsizetype>& rows);
    QList<qsizetype> queuedRows() const;
    void reorder(const QList<qsizetype>& rows);
    void countState(JobState state, int change);
    void noteDamage(const ConversionJob* job);
    void releaseDestination(const QString& path);

    // JobListener
    void onStateChanged(ConversionJob& job, JobState before, JobState now) override;
    void onProgressed(ConversionJob& job) override;
    void onEnded(ConversionJob& job) override;
    void onQuitRequested() override;

    WaitingFiles& m_waiting;
    std::deque<std::unique_ptr<ConversionJob>> m_taskArray;
    std::array<int, 5> m_stateCounts{};
    /// Planned outputs, each with the number of jobs that will write it.
    QHash<QString, int> m_destinations;
    QSet<const ConversionJob*> m_damaged;
    bool m_startIsDue = false;  ///< A job was added while files waited.
    bool m_paused = false;
    std::function<void(bool, bool)> m_usageCounter;
    std::function<void(const QList<ConversionJob*>&)> m_removal;
};
