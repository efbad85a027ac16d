#pragma once

#include <QObject>

#include <functional>
#include <memory>

class ToolProcess;

/// Sees to the end of runs that nobody wants any more: a run is terminated, waited for without holding the
/// event loop up, and only then cleaned up after, since a tool that still runs could write its files anew.
/// Main thread only.
class ToolReaper : public QObject {
    Q_OBJECT

public:
    /// The one reaper of the application; lives to the end of the process.
    static ToolReaper& shared();

    /// Takes the run over and calls `cleanUp` when it has ended, at once if it has already.
    void adopt(std::unique_ptr<ToolProcess> process, std::function<void()> cleanUp);

    bool isIdle() const { return m_dying == 0; }

Q_SIGNALS:
    void becameIdle();

private:
    int m_dying = 0;
};
