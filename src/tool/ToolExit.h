#pragma once

#include <QString>

/// How a run of the tool ended. A value; any thread.
struct ToolExit {
    enum class Reason { Exited, Signalled, NotStarted };
    Reason reason = Reason::Exited;
    int status = 0;      ///< Exit status, or the signal's number; -1 when it was not started.
    QString startError;  ///< Why the tool was not started.

    bool succeeded() const { return reason == Reason::Exited && status == 0; }
};
