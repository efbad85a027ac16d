#pragma once

#include "support/processes/CollectedOutput.h"
#include "tool/ToolExit.h"
#include "tool/cage/Room.h"

#include <QObject>
#include <QProcess>
#include <QStringList>
#include <QTimer>

/// One asynchronous run of the bundled tool. Destroying it while it runs kills the tool immediately. Main
/// thread only.
class ToolProcess : public QObject {
    Q_OBJECT

public:
    explicit ToolProcess(QObject* parent = nullptr);
    ~ToolProcess() override;

    /// May be called once. ended() can follow immediately.
    void start(const QStringList& arguments, const Room& room);
    bool isRunning() const;
    /// 0 before the start and after the end.
    qint64 processId() const { return m_process.processId(); }

    /// Stops and continues the tool and all its child processes.
    void suspend();
    void resume();

    /// Asks the tool to end, also a suspended one; kills it if it still runs after 3 s. ended() follows.
    void terminate();

Q_SIGNALS:
    /// Standard output and standard error, within 0.2 s.
    void outputReceived(const QByteArray& bytes);
    /// Emitted exactly once, after the last outputReceived().
    void ended(const ToolExit& exit);

private:
    void readOutput();
    void finish(const ToolExit& exit);

    QProcess m_process;
    CollectedOutput m_output;
    QTimer m_outputTimer;
    QTimer m_killTimer;
    bool m_ended = false;
};
