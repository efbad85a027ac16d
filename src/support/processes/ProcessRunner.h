#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

class QIODevice;

/// Runs another program and hands back what it printed. A command is the full path of the program followed by
/// its arguments: no shell, no quoting, no search path. Every operation blocks its thread until the child has
/// ended; none needs an event loop.

/// Whether the wait for the child's end asks anew every 0.05 s at the latest (for threads that must not sit
/// in one long wait) or blocks until it has ended.
enum class Polling { Off, On };

/// Standard output and standard error as "output error", each as text (text::fromData). Nothing when the
/// child could not be started, which is logged. `terminationStatus` may be null; a child that a signal ended
/// has the signal's number as its status. With polling, a child that has not ended after `limitMilliseconds`
/// is killed; 0: no limit.
std::optional<QString> runAsTaskWithTerminationStatus(const QStringList& command, int* terminationStatus,
                                                      Polling polling, int limitMilliseconds = 0);

/// The same without status and polling.
std::optional<QString> runAsTask(const QStringList& command);

/// Both outputs in one text. `progress` gets each piece as it comes, in the caller's thread. Throws
/// std::system_error when the child cannot be started.
QString runAsTaskWithProgressBlock(const QStringList& command,
                                   const std::function<void(const QString&)>& progress,
                                   int* terminationStatus = nullptr);

/// Waits for a started process. True when the limit passed and the process had to be told to terminate.
bool waitUntilExitWithTimeout(QProcess& process, double seconds);

/// The next four bytes in the machine's byte order; nothing when there are fewer.
std::optional<quint32> readInt(QIODevice& device);
std::optional<float> readFloat(QIODevice& device);
