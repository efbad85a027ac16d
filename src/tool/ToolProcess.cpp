#include "tool/ToolProcess.h"

#include "support/processes/ChildProcess.h"
#include "tool/Tool.h"

#include <csignal>

namespace {

constexpr int kPatienceMilliseconds = 3000;
constexpr int kOutputMilliseconds = 200;
constexpr int kMuchOutputMilliseconds = 10;

}  // namespace

ToolProcess::ToolProcess(QObject* parent) : QObject(parent) {
    m_outputTimer.setInterval(kOutputMilliseconds);
    connect(&m_outputTimer, &QTimer::timeout, this, &ToolProcess::readOutput);
    m_killTimer.setSingleShot(true);
    connect(&m_killTimer, &QTimer::timeout, this, [this] { childprocess::signalGroup(m_process, SIGKILL); });
    connect(&m_process, &QProcess::finished, this, [this](int status, QProcess::ExitStatus how) {
        readOutput();
        finish({how == QProcess::NormalExit ? ToolExit::Reason::Exited : ToolExit::Reason::Signalled,
                status,
                {}});
    });
    connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            finish({ToolExit::Reason::NotStarted, -1, m_process.errorString()});
    });
}

ToolProcess::~ToolProcess() {
    disconnect(&m_process, nullptr, this, nullptr);
    if (!isRunning()) return;
    childprocess::signalGroup(m_process, SIGKILL);
    m_process.waitForFinished(-1);
}

void ToolProcess::start(const QStringList& arguments, const Room& room) {
    const QString refusal = tool::prepare(m_process, arguments, room, tool::Effort::Usual, &m_output);
    if (refusal.isEmpty()) {
        m_outputTimer.start();
        m_process.start(QIODevice::ReadOnly);
        m_output.noteStarted();
    } else {
        finish({ToolExit::Reason::NotStarted, -1, refusal});
    }
}

bool ToolProcess::isRunning() const {
    return m_process.state() != QProcess::NotRunning;
}

void ToolProcess::suspend() {
    childprocess::signalGroup(m_process, SIGSTOP);
}

void ToolProcess::resume() {
    childprocess::signalGroup(m_process, SIGCONT);
}

void ToolProcess::terminate() {
    if (!isRunning()) return;
    childprocess::signalGroup(m_process, SIGTERM);
    // A stopped process handles the signal only after it is continued.
    childprocess::signalGroup(m_process, SIGCONT);
    m_killTimer.start(kPatienceMilliseconds);
}

void ToolProcess::readOutput() {
    const QByteArray bytes = m_output.take();
    // A tool that complains of each packet must not wait for the pipe.
    const bool isMuch = bytes.size() > m_output.capacity() / 8;
    m_outputTimer.setInterval(isMuch ? kMuchOutputMilliseconds : kOutputMilliseconds);
    if (!bytes.isEmpty()) Q_EMIT outputReceived(bytes);
}

void ToolProcess::finish(const ToolExit& exit) {
    if (std::exchange(m_ended, true)) return;
    m_outputTimer.stop();
    m_killTimer.stop();
    Q_EMIT ended(exit);
}
