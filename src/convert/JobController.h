#pragma once

#include "convert/JobState.h"

class ConversionJob;

/// What a job asks of whoever owns it: the five calls by which it keeps the queue moving.
class JobController {
public:
    virtual ~JobController() = default;

    virtual void startNextJobInQueue() = 0;
    /// Takes the job off the list. The job stays alive until control returns to the event loop.
    virtual void removeJob(ConversionJob* job) = 0;
    /// A job was started or continued on its own (`byUser` false), or the user chose the command.
    virtual void pauseContinueClicked(bool byUser) = 0;
    virtual int jobCountWithState(JobState state) const = 0;
    virtual void increaseUsages(bool increase, bool allowFeedbackNow) = 0;
};
