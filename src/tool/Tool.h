#pragma once

#include "tool/cage/Room.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <atomic>

class CollectedOutput;
class QProcess;

/// The bundled media tool: its path, its start, and the short runs that block until it has ended.
namespace tool {

/// `ffmpeg` in the resource folder; no other folder is searched. Any thread.
QString path();

/// Why the tool cannot be started, in a sentence for the user; empty: it can, as far as can be checked. Any
/// thread.
QString problem();

/// The version in the tool's own words, "5.1.9-0+deb12u1"; empty if it has none to say. Starts the tool and
/// blocks until it has ended. Any thread.
QString version();
/// Whether that is the version of a tool that scripts/tool built, not of one that the system brings along.
bool isOurs(const QString& version);

/// How a run shares the machine with the others.
enum class Effort {
    Usual,
    Background,  ///< At the lowest priority of processor and disk, and for at most kBackgroundSeconds.
};

/// Of processor time: the time on the clock depends on what else runs.
inline constexpr int kBackgroundSeconds = 5;

/// Sets up a start of the tool that can reach nothing but `room`, depending on the setting `CageTool`.
/// Returns why it must not be started, for the user; empty: `process.start()` may follow. Any thread.
/// `output`: takes what it prints; null: nobody but the process does.
QString prepare(QProcess& process, const QStringList& arguments, const Room& room,
                Effort effort = Effort::Usual, CollectedOutput* output = nullptr);

/// Longer than a slow network disk needs.
inline constexpr int kReportLimitMinutes = 5;

struct Report {
    bool started = false;
    QString startError;   ///< Why it was not started; empty if it was.
    bool isLate = false;  ///< It was ended because it took longer than kReportLimitMinutes.
    QByteArray output;    ///< Standard output and standard error, in the order of arrival.
    QString trouble;      ///< Why the output says nothing about the file, for the user; empty: it may.
};

/// Lets the tool describe one file ("-i" and the path) and waits for its end; the exit status is meaningless
/// and ignored. Call it outside the main thread. Ends early when `*isCancelled` becomes true; `isCancelled`
/// may be null.
Report report(const QString& moviePath, const std::atomic<bool>* isCancelled = nullptr);

/// Runs the tool with `arguments` and returns what it printed. Blocks until it has ended, for at most one
/// minute. Any thread.
QString trialRun(const QStringList& arguments, const Room& room);

/// Runs the tool in the background and returns what it wrote to its standard output if that is exactly
/// `byteCount` bytes, however it ended; else nothing. What it prints as messages is dropped. It is killed
/// when it writes more, after `limitMilliseconds`, and when `*isCancelled` becomes true. Blocks, for as long
/// as a disk that does not answer: call it in a thread that nobody waits for.
QByteArray pipedOutput(const QStringList& arguments, const Room& room, qsizetype byteCount,
                       int limitMilliseconds, const std::atomic<bool>& isCancelled);

}  // namespace tool
