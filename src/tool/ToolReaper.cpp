#include "tool/ToolReaper.h"

#include "tool/ToolProcess.h"

ToolReaper& ToolReaper::shared() {
    static auto& reaper = *new ToolReaper;
    return reaper;
}

void ToolReaper::adopt(std::unique_ptr<ToolProcess> process, std::function<void()> cleanUp) {
    if (!process || !process->isRunning()) {
        cleanUp();
        if (process) process.release()->deleteLater();
        return;
    }
    ++m_dying;
    ToolProcess* dying = process.release();
    connect(dying, &ToolProcess::ended, this, [this, dying, cleanUp = std::move(cleanUp)] {
        cleanUp();
        dying->deleteLater();
        if (--m_dying == 0) Q_EMIT becameIdle();
    });
    dying->terminate();
}
