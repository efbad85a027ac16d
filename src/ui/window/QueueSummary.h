#pragma once

#include <QString>

class JobQueue;

/// "1 converting, 3 queued, 1 failed": the states that occur, in words. Empty for an empty queue.
QString queueSummary(const JobQueue& queue);
