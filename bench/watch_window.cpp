// Linked into a program with windows: measures when its first window is painted, its memory, and how long the
// event loop is blocked. BENCH_BEGIN is the start time in nanoseconds of the monotonic clock, BENCH_SECONDS
// the duration of the measurement. Prints one JSON object and ends the program.
#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTimer>
#include <QWidget>

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace {

double millisecondsSinceBegin() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const qint64 nanoseconds = now.tv_sec * Q_INT64_C(1'000'000'000) + now.tv_nsec;
    return static_cast<double>(nanoseconds - qEnvironmentVariable("BENCH_BEGIN").toLongLong()) / 1e6;
}

int pssKibibytes() {
    QFile rollup("/proc/self/smaps_rollup");
    if (!rollup.open(QIODevice::ReadOnly)) return 0;
    const QByteArrayList lines = rollup.readAll().split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith("Pss:")) return line.mid(4).trimmed().split(' ').first().toInt();
    }
    return 0;
}

class Watcher : public QObject {
public:
    explicit Watcher(QObject* application) : QObject(application) { application->installEventFilter(this); }

    bool eventFilter(QObject* watched, QEvent* event) override {
        const auto* widget = qobject_cast<QWidget*>(watched);
        if (event->type() != QEvent::Paint || !widget || !widget->isWindow() || m_paintedAt > 0) return false;
        // Measured after the paint was sent to the display server.
        m_paintedAt = -1;
        QTimer::singleShot(0, this, [this] {
            m_paintedAt = millisecondsSinceBegin();
            begin();
        });
        qApp->removeEventFilter(this);
        return false;
    }

private:
    void begin() {
        m_sinceTick.start();
        connect(&m_tick, &QTimer::timeout, this,
                [this] { m_longestGap = std::max(m_longestGap, m_sinceTick.restart()); });
        m_tick.start(1);
        const double seconds = qEnvironmentVariable("BENCH_SECONDS").toDouble();
        QTimer::singleShot(static_cast<int>(seconds * 1000), this, [this] {
            std::printf("{\"painted\": %.1f, \"pss\": %d, \"gap\": %lld}\n", m_paintedAt, pssKibibytes(),
                        m_longestGap);
            std::fflush(stdout);
            std::_Exit(0);
        });
    }

    double m_paintedAt = 0;
    QTimer m_tick;
    QElapsedTimer m_sinceTick;
    qint64 m_longestGap = 0;
};

void watch() {
    if (qobject_cast<QApplication*>(qApp)) new Watcher(qApp);
}
Q_COREAPP_STARTUP_FUNCTION(watch)

}  // namespace
