// Takes the movies of a folder through the window, offscreen: opens all, adds all, has progress painted,
// converts those that are asked for, and cleans the list up. Usage: bench_queue FOLDER CONVERTED. The first
// movie in the order of the names is to be one whose conversion lasts. Prints one JSON object with the
// figures of each step: "gap" is the longest time between two iterations of the event loop in ms, "cpu" the
// same in processor time of the main thread, which does not depend on what else the machine does; "pss" is in
// KiB, as are the bytes on the heap that are in use ("heap") and those that are free ("free").
#include "app/AppDelegate.h"
#include "support/alerts/Alert.h"
#include "support/base/ApplicationInfo.h"
#include "ui/WindowDesktop.h"
#include "ui/dialogs/DialogPanels.h"
#include "ui/dialogs/DialogPresenter.h"
#include "ui/window/MainWindow.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <malloc.h>
#include <utility>
#include <vector>

namespace {

double processorMilliseconds() {
    timespec now = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

/// The number behind `key` in a file of /proc.
int numberIn(const char* path, const QByteArray& key) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return 0;
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith(key)) return line.mid(key.size()).trimmed().split(' ').first().toInt();
    }
    return 0;
}

class Steps : public QObject {
public:
    Steps() {
        connect(&m_tick, &QTimer::timeout, this, [this] {
            m_gap = std::max(m_gap, m_sinceTick.restart());
            const double now = processorMilliseconds();
            m_cpu = std::max(m_cpu, now - std::exchange(m_processor, now));
        });
    }

    /// Begins a step and waits until it is over.
    void run(const QString& name, const std::function<void()>& begin, const std::function<bool()>& isOver) {
        QElapsedTimer whole;
        whole.start();
        restart();
        m_tick.start(1);
        QTimer::singleShot(0, this, begin);
        do {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        } while (!isOver());
        settle();
        m_tick.stop();
        const struct mallinfo2 heap = mallinfo2();
        const auto kibibytes = [](size_t bytes) { return static_cast<qint64>(bytes / 1024); };
        m_figures[name] = QJsonObject{{"heap", kibibytes(heap.uordblks + heap.hblkhd)},
                                      {"free", kibibytes(heap.fordblks)},
                                      {"gap", m_gap},
                                      {"cpu", m_cpu},
                                      {"ms", whole.elapsed()},
                                      {"pss", numberIn("/proc/self/smaps_rollup", "Pss:")}};
    }

    /// Processor time of one step in microseconds: of many the lower tenth, as other processes only add to
    /// it.
    void repeat(const QString& name, const std::function<void()>& step) {
        constexpr int kTimes = 400;
        std::vector<double> times;
        for (int i = 0; i < kTimes; ++i) {
            const double begin = processorMilliseconds();
            step();
            times.push_back(processorMilliseconds() - begin);
        }
        std::ranges::nth_element(times, times.begin() + kTimes / 10);
        m_figures[name] = times[kTimes / 10] * 1000;
    }

    /// How often the process wakes up in that time.
    void idle(const QString& name, int milliseconds) {
        const int before = numberIn("/proc/self/status", "voluntary_ctxt_switches:");
        bool isOver = false;
        QTimer::singleShot(milliseconds, this, [&] { isOver = true; });
        while (!isOver)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        m_figures[name] = numberIn("/proc/self/status", "voluntary_ctxt_switches:") - before;
    }

    void print() const { std::puts(QJsonDocument(m_figures).toJson(QJsonDocument::Compact).constData()); }

private:
    void restart() {
        m_gap = 0;
        m_cpu = 0;
        m_sinceTick.start();
        m_processor = processorMilliseconds();
    }

    /// The store writes half a second later.
    void settle() {
        constexpr int kMilliseconds = 1500;
        bool isOver = false;
        QTimer::singleShot(kMilliseconds, this, [&] { isOver = true; });
        while (!isOver)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    QTimer m_tick;
    QElapsedTimer m_sinceTick;
    double m_processor = 0;
    qint64 m_gap = 0;
    double m_cpu = 0;
    QJsonObject m_figures;
};

void measure(AppDelegate& delegate, MainWindow& window, QStringList paths, int converted) {
    const qsizetype total = paths.size();
    constexpr int kIdle = 10000;
    JobQueue& queue = delegate.queue();
    Steps steps;
    steps.run(
        "empty", [] {}, [] { return true; });
    steps.run(
        "open", [&] { delegate.openFiles(std::exchange(paths, {})); },
        [&] { return !delegate.addSheet().informationString().isEmpty(); });
    steps.run(
        "add", [&] { delegate.addSheet().addAll(); },
        [&] { return queue.count() == total && !delegate.addSheet().isShown(); });

    ConversionJob* endless = queue.job(0);
    steps.repeat("tick", [&] {
        Q_EMIT queue.jobProgressed(endless);
        QCoreApplication::processEvents();
    });
    steps.repeat("paint", [&] { window.grab(); });

    QList<ConversionJob*> waiting;
    for (qsizetype row = 1; row < queue.count(); ++row)
        waiting.append(queue.job(row));
    steps.run(
        "remove", [&] { queue.removeJobs(waiting); }, [&] { return queue.count() == 1; });
    steps.run(
        "putBack", [&] { delegate.removals().undo(); }, [&] { return queue.count() == total; });

    const int count = std::min(converted, static_cast<int>(total) - 1);
    int ended = 0;
    QObject::connect(
        &queue, &JobQueue::jobStateChanged, &steps,
        [&](const ConversionJob*, JobState, JobState now) { ended += now == JobState::Finished; });
    steps.run(
        "convert", [&] { queue.removeJobs({endless}); }, [&] { return ended >= count; });
    // The tool of a job may have ended just before it is paused: such a job is finished a moment later.
    steps.run(
        "pause",
        [&] {
            if (!queue.isIdle()) queue.pauseContinueClicked(true);
        },
        [] { return true; });
    delegate.removals().settle();
    const qsizetype all = queue.count();
    steps.run(
        "clean", [&] { queue.cleanClicked(); },
        [&] { return queue.jobCountWithState(JobState::Finished) == 0; });
    steps.run(
        "undo", [&] { delegate.removals().undo(); }, [&] { return queue.count() == all; });
    steps.idle("idleFinished", kIdle);
    steps.run(
        "cleanAgain", [&] { queue.cleanClicked(); },
        [&] { return queue.jobCountWithState(JobState::Finished) == 0; });
    steps.run(
        "settle", [&] { delegate.removals().settle(); }, [&] { return !delegate.removals().isOffered(); });
    steps.idle("idleSettled", kIdle);
    steps.print();
}

}  // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const QDir folder(application.arguments().at(1));
    const int converted = application.arguments().at(2).toInt();
    QStringList paths = folder.entryList(QDir::Files, QDir::Unsorted);
    for (QString& path : paths)
        path = folder.filePath(path);

    DialogPresenter presenter;
    setAlertPresenter(&presenter);
    AppDelegate::initialize();
    WindowDesktop desktop(ApplicationInfo::name(), ApplicationInfo::bundleIdentifier());
    setSharedDesktop(&desktop);
    DialogPanels panels;
    AppDelegate delegate(panels);
    MainWindow window(delegate);
    presenter.setMainWindow(&window);
    delegate.applicationWillFinishLaunching();
    window.show();
    delegate.openFirstFiles({});
    measure(delegate, window, std::move(paths), converted);
    std::fflush(stdout);
    std::_Exit(0);
}
