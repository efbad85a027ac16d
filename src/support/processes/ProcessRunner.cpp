#include "support/processes/ProcessRunner.h"

#include "support/base/Collections.h"
#include "support/base/Log.h"
#include "support/base/Text.h"
#include "support/processes/ChildProcess.h"

#include <QDeadlineTimer>
#include <QIODevice>

#include <cerrno>
#include <cstring>
#include <system_error>

namespace {

constexpr qint64 kArgumentLengthLimit = 200000;  // characters
constexpr int kStepMilliseconds = 50;

void start(QProcess& process, const QStringList& command,
           const std::function<void(QProcess&)>& configure = nullptr) {
    process.setProgram(command.first());
    process.setArguments(command.sliced(1));
    childprocess::prepare(process);
    if (configure) configure(process);
    process.start(QIODevice::ReadOnly);
}

int statusOf(const QProcess& process) {
    return process.exitCode();
}

template <typename T>
std::optional<T> readValue(QIODevice& device) {
    const QByteArray bytes = device.read(sizeof(T));
    if (bytes.size() < static_cast<qsizetype>(sizeof(T))) return std::nullopt;
    T value;
    std::memcpy(&value, bytes.constData(), sizeof(T));
    return value;
}

}  // namespace

std::optional<QString> runAsTaskWithTerminationStatus(const QStringList& command, int* terminationStatus,
                                                      Polling polling, int limitMilliseconds,
                                                      const std::function<void(QProcess&)>& configure) {
    const qint64 length =
        collections::reduce(command.sliced(1), [](const QString& argument) { return argument.size(); });
    if (length > kArgumentLengthLimit)
        logError("Error: task argument size approaching or above limit, spawn will fail");

    QProcess process;
    start(process, command, configure);
    if (!process.waitForStarted(-1)) {
        logError("Error: got exception %@ while trying to perform task %@", process.errorString(),
                 command.join(u' '));
        return std::nullopt;
    }
    // The waits read both outputs continuously, so that a full pipe never blocks the child.
    if (polling == Polling::On) {
        childprocess::waitForEnd(process, limitMilliseconds);
    } else {
        process.waitForFinished(-1);
    }
    const QString output = text::fromData(process.readAllStandardOutput());
    const QString error = text::fromData(process.readAllStandardError());
    if (terminationStatus) *terminationStatus = statusOf(process);
    return makeString("%@ %@", output, error);
}

std::optional<QString> runAsTask(const QStringList& command) {
    return runAsTaskWithTerminationStatus(command, nullptr, Polling::Off);
}

QString runAsTaskWithProgressBlock(const QStringList& command,
                                   const std::function<void(const QString&)>& progress,
                                   int* terminationStatus) {
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    start(process, command);
    if (!process.waitForStarted(-1)) {
        throw std::system_error(ENOENT, std::generic_category(), process.errorString().toStdString());
    }
    QString all;
    const auto readOutput = [&] {
        const QByteArray piece = process.readAllStandardOutput();
        if (piece.isEmpty()) return;
        const QString text = text::fromData(piece);
        all += text;
        progress(text);
    };
    while (process.waitForReadyRead(-1))
        readOutput();
    process.waitForFinished(-1);
    readOutput();
    if (terminationStatus) *terminationStatus = statusOf(process);
    return all;
}

bool waitUntilExitWithTimeout(QProcess& process, double seconds) {
    const QDeadlineTimer deadline(static_cast<qint64>(seconds * 1000), Qt::PreciseTimer);
    bool wasTerminated = false;
    while (process.state() != QProcess::NotRunning) {
        if (deadline.hasExpired()) {
            process.terminate();
            wasTerminated = true;
        }
        process.waitForFinished(kStepMilliseconds);
    }
    return wasTerminated;
}

std::optional<quint32> readInt(QIODevice& device) {
    return readValue<quint32>(device);
}

std::optional<float> readFloat(QIODevice& device) {
    return readValue<float>(device);
}
