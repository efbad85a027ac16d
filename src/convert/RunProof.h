#pragma once

#include "convert/RunEnding.h"

#include <QObject>

/// A check of a run's output, made in the background between the end of the tool and the end of the run,
/// which waits for it. Main thread only; the work is done in other threads. Destroying it cancels it:
/// finished() is not emitted any more, and the output may be deleted at once.
class RunProof : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// Called once. `soFar` is the ending without the proof; `output` is the path of the complete file, which
    /// still may be discarded.
    virtual void start(const RunEnding& soFar, const QString& output) = 0;
    /// The user pauses or continues the job. finished() may be emitted all the same.
    virtual void setPaused(bool /*paused*/) {}

Q_SIGNALS:
    /// Emitted once, also from start(): how the run ends. The output is kept only if that is a success.
    void finished(const RunEnding& ending);
};
