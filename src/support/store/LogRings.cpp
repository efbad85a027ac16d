#include "support/store/LogRings.h"

#include "support/base/Format.h"
#include "support/base/Log.h"
#include "support/store/Defaults.h"

#include <QDateTime>
#include <QMutexLocker>
#include <QRecursiveMutex>

#include <array>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr int kRingSlots = 10;
constexpr int kTraceSlots = 43;

QString dated(const QString& message) {
    return makeString("date: %@ message: %@", QDateTime::currentDateTime(), message);
}

/// Each launch starts at position 0 and overwrites those slots first.
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

}  // namespace

void logrings::install() {
    qn_log_setsink([](int level, const QString& message) {
        writeToPreferenceRing(level, message);
        // An error may precede a crash.
        if (level <= kLogError) standardUserDefaults().askToSaveSoon();
    });
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
