#pragma once

#include <QProcess>

#include <atomic>

/// What every child of the application has in common, whoever starts it.
namespace childprocess {

/// To be called before the start. The child reads nothing (the null device), speaks English in UTF-8, leads a
/// process group of its own, so that a Ctrl-C in the terminal is the application's to handle, and is killed
/// by the kernel when the application dies. The kernel watches the thread that starts the child: that thread
/// has to live as long as the child.
void prepare(QProcess& process);

/// Sends `signal` to the child and all that it started. Nothing when it is not running.
void signalGroup(const QProcess& process, int signal);

/// Blocks until the started child has ended and its output is read. Looks every 0.05 s whether the
/// application was interrupted, and then ends the child. A limit of 0: none. True when the child ended by
/// itself in time. `isCancelled` becoming true ends it, too; may be null.
bool waitForEnd(QProcess& process, int limitMilliseconds = 0, const std::atomic<bool>* isCancelled = nullptr);

/// Ends every wait of waitForEnd(), now and from now on. May be called from a signal handler.
void interruptWaits();
bool waitsAreInterrupted();

}  // namespace childprocess
