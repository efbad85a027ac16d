#pragma once

#include "convert/RunEnding.h"

#include <QObject>

/// A check of a run's output, made in the background between the end of the tool and the end of the run,
/// which waits for it. It lives as long as the run and is started again after another run of the tool. Main
/// thread only; the work is done in other threads. Destroying it cancels it: finished() is not emitted any
/// more, and the output may be deleted at once.
class RunProof : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// The tool begins to read the source.
    virtual void toolStarted(qint64 /*processId*/) {}
    /// The tool has ended and has printed `said`. `soFar` is the ending without the proof; `output` is the
    /// path of the complete file, which still may be discarded.
    virtual void start(const RunEnding& soFar, const QString& output, const QString& said) = 0;

Q_SIGNALS:
    /// Emitted once for each start(), also from it: how the run ends. The output is kept only if that is a
    /// success.
    void finished(const RunEnding& ending);
};
