#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

class QIODevice;

/// Runs a program and returns its output. A command is the full path of the program followed by its
/// arguments: no shell, no quoting, no search path. Callable from any thread; every function blocks until the
/// child has exited and needs no event loop.

/// On: the wait polls every 0.05 s, so that limits and interruptions work. Off: one blocking wait.
enum class Polling { Off, On };

/// Standard output and standard error as "output error", each decoded by text::fromData. Null if the child
/// could not be started, which is logged. `terminationStatus` may be null; for a child killed by a signal it
/// is the signal's number. With polling, a child that runs longer than `limitMilliseconds` is killed; 0: no
/// limit. `configure` changes the process before its start; null: nothing.
std::optional<QString> runAsTaskWithTerminationStatus(
    const QStringList& command, int* terminationStatus, Polling polling, int limitMilliseconds = 0,
    const std::function<void(QProcess&)>& configure = nullptr);

/// The same without status and polling.
std::optional<QString> runAsTask(const QStringList& command);

/// Both outputs in one text. `progress` receives each piece as it arrives, on the caller's thread. Throws
/// std::system_error if the child cannot be started.
QString runAsTaskWithProgressBlock(const QStringList& command,
                                   const std::function<void(const QString&)>& progress,
                                   int* terminationStatus = nullptr);

/// Waits for a started process. Returns true if the limit passed and the process was sent a terminate signal.
bool waitUntilExitWithTimeout(QProcess& process, double seconds);

/// The next four bytes in the machine's byte order; null if there are fewer.
std::optional<quint32> readInt(QIODevice& device);
std::optional<float> readFloat(QIODevice& device);
