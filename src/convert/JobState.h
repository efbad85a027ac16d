#pragma once

#include <QString>

/// A job's state; the numbers are used for display and counting. Pure functions, any thread.
enum class JobState : int {
    Queued = 0,
    Converting = 1,
    Paused = 2,
    Finished = 3,
    Failed = 4,
};

/// "Queued", "Converting", "Paused", "Finished" or "Failed".
QString nameOfState(JobState state);

// What the interface enables and shows depending on a job's state.
constexpr bool statusIsRunning(JobState state) {
    return state == JobState::Converting;
}
constexpr bool statusIsQueued(JobState state) {
    return state == JobState::Queued;
}
constexpr bool statusNotRunning(JobState state) {
    return state != JobState::Converting;
}
constexpr bool statusNotQueuedAndPaused(JobState state) {
    return state != JobState::Queued && state != JobState::Paused;
}
constexpr bool statusNotFinished(JobState state) {
    return state != JobState::Finished && state != JobState::Failed;
}
