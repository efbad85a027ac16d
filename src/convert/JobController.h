#pragma once

#include "convert/JobState.h"

#include <QString>

class ConversionJob;

/// The interface of a job to its owner, the queue. Main thread only.
class JobController {
public:
    virtual ~JobController() = default;

    virtual void startNextJobInQueue() = 0;
    /// Removes the job from the list. The job stays alive until control returns to the event loop.
    virtual void removeJob(ConversionJob* job) = 0;
    /// Ends the pause when a job was started or continued by itself (`byUser` false); toggles it when the
    /// user chose the command.
    virtual void pauseContinueClicked(bool byUser) = 0;
    virtual int jobCountWithState(JobState state) const = 0;
    /// Whether a job will write that path.
    virtual bool isDestinationTaken(const QString& path) const = 0;
    virtual void increaseUsages(bool increase, bool allowFeedbackNow) = 0;
};

/// What happens to the jobs of a list, as their signals of the same names report it for a single one:
/// connections would take as much memory as the rest of a job that waits. Must not delete the job. Main
/// thread only.
class JobListener {
public:
    virtual ~JobListener() = default;

    virtual void onStateChanged(ConversionJob& job, JobState before, JobState now) = 0;
    virtual void onProgressed(ConversionJob& job) = 0;
    virtual void onEnded(ConversionJob& job) = 0;
    virtual void onQuitRequested() = 0;
};
