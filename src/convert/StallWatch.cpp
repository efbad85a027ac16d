#include "convert/StallWatch.h"

#include "support/base/Format.h"

#include <QFile>

#include <unistd.h>

namespace {

// A tool that waits for data in vain tries again now and then, which is no progress.
constexpr double kNoticeableShare = 0.01;  // Of the time.
constexpr double kNoticeableBytesPerSecond = 16384;

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}  // namespace

void StallWatch::restart(double now) {
    m_last = {};
    m_since = now;
}

double StallWatch::idleSeconds(const Activity& activity, double now) {
    const double idle = now - m_since;
    const double transferred =
        static_cast<double>(activity.transferredBytes) - static_cast<double>(m_last.transferredBytes);
    const bool isActive = activity.outputBytes != m_last.outputBytes || activity.seconds > m_last.seconds ||
                          activity.processorSeconds - m_last.processorSeconds > kNoticeableShare * idle ||
                          transferred > kNoticeableBytesPerSecond * idle;
    if (!isActive) return idle;
    m_last = activity;
    m_since = now;
    return 0;
}

StallWatch::Activity activityOfProcess(qint64 processId) {
    const QString folder = makeString("/proc/%li/", static_cast<long>(processId));
    StallWatch::Activity activity;
    // The name of the program, in brackets, may contain anything.
    const QByteArray status = contents(folder + "stat");
    const QList<QByteArray> fields = status.mid(status.lastIndexOf(')') + 2).split(' ');
    constexpr qsizetype kUserTime = 11;  // Behind the name.
    if (fields.size() > kUserTime + 1) {
        static const auto ticks = static_cast<double>(::sysconf(_SC_CLK_TCK));
        activity.processorSeconds = (fields[kUserTime].toDouble() + fields[kUserTime + 1].toDouble()) / ticks;
    }
    const QList<QByteArray> counters = contents(folder + "io").split('\n');
    for (const QByteArray& counter : counters) {
        if (counter.startsWith("rchar: ") || counter.startsWith("wchar: "))
            activity.transferredBytes += counter.mid(7).toULongLong();
    }
    return activity;
}
