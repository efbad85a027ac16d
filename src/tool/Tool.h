#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <atomic>

/// The carried media tool: where it is, and the two short runs whose end is waited for.
namespace tool {

/// `ffmpeg` in the resource folder; never searched for elsewhere.
QString path();

/// Why the tool cannot be started, in a sentence for the user; empty: it can, as far as can be seen.
QString problem();

struct Report {
    bool started = false;
    QString startError;  ///< Why not; empty when it was started.
    QByteArray output;   ///< Standard output and standard error, in the order in which they came.
};

/// Has the tool describe one file ("-i" and the path) and waits for its end; the exit status says nothing and
/// is not looked at. Call it off the main thread.
Report report(const QString& moviePath, const std::atomic<bool>* isCancelled = nullptr);

/// Runs the tool with `arguments` and returns what it printed. Blocks until it has ended, one minute at the
/// most.
QString trialRun(const QStringList& arguments);

}  // namespace tool
