#pragma once

#include <QObject>

#include <functional>
#include <memory>

class ToolProcess;

/// Ends runs that are no longer needed: a run is terminated, its end is awaited without blocking the event
/// loop, and its files are deleted only then, since a running tool could create them again. Main thread only.
class ToolReaper : public QObject {
    Q_OBJECT

public:
    /// The only instance; lives until the process ends.
    static ToolReaper& shared();

    /// Takes ownership of the run and calls `cleanUp` when it has ended; immediately if it already has.
    void adopt(std::unique_ptr<ToolProcess> process, std::function<void()> cleanUp);

    bool isIdle() const { return m_endingCount == 0; }

Q_SIGNALS:
    void becameIdle();

private:
    int m_endingCount = 0;
};
