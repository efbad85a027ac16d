#pragma once

#include "support/base/Format.h"

#include <QString>
#include <QUrl>

/// The application's log. A message goes, in this order, to the capture file if one is enabled, to the sink
/// (see support/store/LogRings), and to the system log; crash reports contain the newest lines of any level.
/// Callable from any thread; failures are ignored.

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

/// Logs a formatted message. A level outside 0 to 7 reaches the system log only if its low eight bits are
/// such a level.
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

/// Copies further messages of `minimumLevel` and more severe ones (smaller numbers) to `file`. A file of more
/// than `maximumSize` bytes is first cut to its newest bytes; 0: never cut.
void qn_log_enablecapturetofile(const QUrl& file, quint64 maximumSize, int minimumLevel);

/// Receives each message and its level, on the thread that logs.
using LogSink = void (*)(int level, const QString& message);
/// Replaces the sink; null, the default: none.
void qn_log_setsink(LogSink sink);
