#pragma once

#include <QtGlobal>

/// Notices that the tool does nothing: its output does not grow, it reports no progress, and it uses neither
/// the processor nor files to speak of. A value; any thread.
class StallWatch {
public:
    /// What a run has done up to now.
    struct Activity {
        qint64 outputBytes = 0;
        double seconds = 0;            ///< Of the movie, as reported by the tool.
        double processorSeconds = 0;   ///< Used by the tool.
        quint64 transferredBytes = 0;  ///< Read and written by the tool.
    };

    /// The run starts or continues at `now`, in seconds of a steady clock.
    void restart(double now);
    /// Returns the seconds since something was done.
    double idleSeconds(const Activity& activity, double now);

private:
    Activity m_last;
    double m_since = 0;
};

/// The processor time and the transferred bytes of a process, from /proc; zeros for one that is gone.
StallWatch::Activity activityOfProcess(qint64 processId);
