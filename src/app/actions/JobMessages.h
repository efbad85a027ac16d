#pragma once

#include "app/queue/QueueOutcome.h"

class ConversionJob;

/// What the user is told when a job ends. Main thread only.
namespace jobmessages {

/// From now on, while the job lives: an urgent message as soon as it fails for a reason that concerns other
/// jobs, too (the source is gone, the volume is full), and a notification at the end of each run of the tool.
void follow(ConversionJob& job);

/// A notification at the end of the queue, in the place of the last one about a converted movie.
void notifyOfEnd(const QueueOutcome::Sum& sum);

}  // namespace jobmessages
