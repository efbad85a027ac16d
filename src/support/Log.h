#pragma once

#include "support/Format.h"

#include <QString>
#include <QUrl>

/// Every diagnostic line goes through qn_log_level(). A message goes, in this order, to the capture file if
/// one is enabled, to its level's ring of ten slots in the settings (so that the last messages travel with a
/// problem report), and to the system log. The settings reach the disk soon after a message of level 3 and
/// below, so that it survives a crash; a crash report has the newest lines of any level. Callable from any
/// thread; no failure reaches the caller.

enum LogLevel : int {
    kLogEmergency = 0,
    kLogAlert = 1,
    kLogCritical = 2,
    kLogError = 3,
    kLogWarning = 4,
    kLogNotice = 5,
    kLogInfo = 6,
    kLogDebug = 7,
};

/// Hands a finished message to the sinks. A level outside 0 to 7 reaches the system log only if its low eight
/// bits are such a level.
void qn_log_message(int level, const QString& message);

template <typename... Args>
void qn_log_level(int level, Format<Args...> format, const Args&... arguments) {
    qn_log_message(level, makeString<Args...>(format, arguments...));
}

template <typename... Args>
void logInformation(Format<Args...> format, const Args&... arguments) {
    qn_log_message(kLogNotice, makeString<Args...>(format, arguments...));
}

template <typename... Args>
void logError(Format<Args...> format, const Args&... arguments) {
    qn_log_message(kLogError, makeString<Args...>(format, arguments...));
}

template <typename... Args>
void logEmergency(Format<Args...> format, const Args&... arguments) {
    qn_log_message(kLogEmergency, makeString<Args...>(format, arguments...));
}

/// Copies messages of `minimumLevel` and more severe ones (smaller numbers) into `file`, from now on. A file
/// of more than `maximumSize` bytes is first cut to its newest ones; 0: never cut.
void qn_log_enablecapturetofile(const QUrl& file, quint64 maximumSize, int minimumLevel);

/// Keeps `message` in the settings' trace ring of 43 slots. Not guarded against concurrent callers.
void log_to_prefs(const QString& message);

/// Prints `message` to standard output, saves the settings and ends the process with status 1.
[[noreturn]] void fatal(const QString& message);
