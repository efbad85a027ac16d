#pragma once

#include "convert/JobState.h"

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
    virtual void increaseUsages(bool increase, bool allowFeedbackNow) = 0;
};
