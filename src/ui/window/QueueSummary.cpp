#include "ui/window/QueueSummary.h"

#include "app/queue/JobQueue.h"
#include "support/base/Format.h"
#include "support/base/Texts.h"

QString queueSummary(const JobQueue& queue) {
    QStringList parts;
    const auto addCount = [&](int count, const QString& name) {
        if (count > 0) parts.append(makeString("%i %@", count, name));
    };
    const auto add = [&](JobState state) {
        const bool isFinished = state == JobState::Finished;
        addCount(queue.jobCountWithState(state) - (isFinished ? queue.damagedCount() : 0),
                 nameOfState(state).toLower());
        if (isFinished) addCount(queue.damagedCount(), Texts::tr("damaged"));
    };
    for (const JobState state :
         {JobState::Converting, JobState::Paused, JobState::Queued, JobState::Finished, JobState::Failed})
        add(state);
    return parts.join(", ");
}
