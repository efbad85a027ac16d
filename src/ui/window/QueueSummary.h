#pragma once

#include <QString>

class JobQueue;

/// "1 converting, 3 queued, 2 finished, 1 damaged, 1 failed": the states that occur, with their numbers.
/// Empty for an empty queue. Main thread only.
QString queueSummary(const JobQueue& queue);
