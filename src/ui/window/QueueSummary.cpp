#include "ui/window/QueueSummary.h"

#include "app/queue/JobQueue.h"
#include "support/base/Format.h"

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
