#pragma once

#include "convert/JobController.h"

#include <QMap>
#include <QStringList>

/// Records the calls of a job.
class FakeController : public JobController {
public:
    void startNextJobInQueue() override { calls.append("next"); }
    void removeJob(ConversionJob*) override { calls.append("remove"); }
    void pauseContinueClicked(bool byUser) override { calls.append(byUser ? "clicked" : "unpause"); }
    int jobCountWithState(JobState state) const override { return counts.value(static_cast<int>(state)); }
    bool isDestinationTaken(const QString&) const override { return false; }
    void increaseUsages(bool increase, bool allow) override {
        calls.append(increase && allow ? "count" : "wrong count");
    }

    QStringList calls;
    QMap<int, int> counts;
};
