#pragma once

#include <QProcess>

#include <atomic>
#include <functional>

class CollectedOutput;

/// Common set-up and control of all child processes. Call each function on the thread that owns the QProcess.
namespace childprocess {

/// Call before start(). The child reads from the null device, prints English in UTF-8, leads its own process
/// group, so that Ctrl-C in the terminal reaches only the application, and is killed by the kernel when the
/// application dies. The kernel ties this to the thread that starts the child: that thread must live as long
/// as the child.
void prepare(QProcess& process);

/// Adds a step to the start of the child, between fork and exec: it may make system calls only. Call it after
/// prepare() and before start().
void runInChild(QProcess& process, const std::function<void()>& step);

/// Sends `signal` to the child and its descendants. Does nothing if the child is not running.
void signalGroup(const QProcess& process, int signal);

/// Blocks until the started child has exited and its output is read. Every 0.05 s it checks for an
/// interruption of the application or `isCancelled` (may be null), and then terminates the child. A limit of
/// 0: none. `output`: collects every 0.05 s, too. Returns true if the child exited by itself in time.
bool waitForEnd(QProcess& process, int limitMilliseconds = 0, const std::atomic<bool>* isCancelled = nullptr,
                CollectedOutput* output = nullptr);

/// Ends all current and future calls of waitForEnd(). Callable from any thread and from signal handlers.
void interruptWaits();
bool waitsAreInterrupted();

}  // namespace childprocess
