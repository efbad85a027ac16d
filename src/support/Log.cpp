#include "support/Log.h"

#include "support/Defaults.h"
#include "support/LastLines.h"
#include "support/LogCapture.h"

#include <QDateTime>
#include <QMutex>
#include <QMutexLocker>
#include <QRecursiveMutex>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <syslog.h>

namespace {

constexpr int kRingSlots = 10;
constexpr int kTraceSlots = 43;

QString dated(const QString& message) {
    return makeString("date: %@ message: %@", QDateTime::currentDateTime(), message);
}

/// The positions start anew with every launch; so do the slots that are overwritten first.
void writeToPreferenceRing(int level, const QString& message) {
    static auto& lock = *new QRecursiveMutex;
    static std::array<quint32, 8> positions{};
    const QMutexLocker guard(&lock);
    static quint32 unknownLevelPosition = 0;
    const bool known = level >= 0 && level < static_cast<int>(positions.size());
    quint32& position = known ? positions[static_cast<size_t>(level)] : unknownLevelPosition;
    setDefaultString(makeString("quillonlib_asl_lev%i_pos%u", level, position), dated(message));
    position = (position + 1) % kRingSlots;
}

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
    writeToPreferenceRing(level, message);
    // What went wrong may be what the program crashes of next.
    if (level <= kLogError) standardUserDefaults().askToSaveSoon();
    writeToSystemLog(level, message);
}

void qn_log_enablecapturetofile(const QUrl& file, quint64 maximumSize, int minimumLevel) {
    logcapture::enable(file, maximumSize, minimumLevel);
}

void log_to_prefs(const QString& message) {
    static int position = 0;
    setDefaultString(makeString("quillonlib_logtoprefs_pos%i", position), dated(message));
    position = (position + 1) % kTraceSlots;
}

void fatal(const QString& message) {
    std::fputs(message.toUtf8().constData(), stdout);
    std::fflush(stdout);
    standardUserDefaults().synchronise();
    std::exit(1);
}
