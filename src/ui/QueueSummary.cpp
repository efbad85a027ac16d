#include "ui/QueueSummary.h"

#include "app/JobQueue.h"
#include "support/Format.h"

QString queueSummary(const JobQueue& queue) {
    QStringList parts;
    const auto add = [&](JobState state) {
        const int count = queue.jobCountWithState(state);
        if (count > 0) parts.append(makeString("%i %@", count, nameOfState(state).toLower()));
    };
    for (const JobState state :
         {JobState::Converting, JobState::Paused, JobState::Queued, JobState::Finished, JobState::Failed})
        add(state);
    return parts.join(", ");
}
