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
    ++m_endingCount;
    ToolProcess* ending = process.release();
    connect(ending, &ToolProcess::ended, this, [this, ending, cleanUp = std::move(cleanUp)] {
        cleanUp();
        ending->deleteLater();
        if (--m_endingCount == 0) Q_EMIT becameIdle();
    });
    ending->terminate();
}
