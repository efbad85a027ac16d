#include "support/base/Log.h"

#include "support/base/LastLines.h"
#include "support/base/LogCapture.h"

#include <array>
#include <atomic>
#include <syslog.h>

namespace {

std::atomic<LogSink> theSink = nullptr;

void writeToSystemLog(int level, const QString& message) {
    constexpr std::array kPriorities = {LOG_CRIT,   LOG_CRIT,   LOG_CRIT,  LOG_ERR,
                                        LOG_NOTICE, LOG_NOTICE, LOG_DEBUG, LOG_DEBUG};
    const auto type = static_cast<unsigned char>(level);
    if (type >= kPriorities.size()) return;
    const int priority = kPriorities[type];
    const bool enabled = (::setlogmask(0) & LOG_MASK(priority)) != 0;
    if (enabled) ::syslog(LOG_USER | priority, "%s", message.toUtf8().constData());
}

}  // namespace

void qn_log_message(int level, const QString& message) {
    lastlines::add(level, message);
    logcapture::write(level, message);
    if (const LogSink sink = theSink) sink(level, message);
    writeToSystemLog(level, message);
}

void qn_log_enablecapturetofile(const QUrl& file, quint64 maximumSize, int minimumLevel) {
    const QString path = file.toLocalFile();
    if (!logcapture::shrink(path, maximumSize))
        logEmergency("Fatal: your disk is full - please never let that happen again");
    if (!logcapture::open(path, minimumLevel)) logError("could not open file %@ for log file usage", path);
}

void qn_log_setsink(LogSink sink) {
    theSink = sink;
}
