#pragma once

#include "watch/events/DirectoryObserver.h"

#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QSet>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <utility>

namespace fs = std::filesystem;

inline fs::path native(const QString& path) {
    return QFile::encodeName(path).toStdString();
}

/// File times have the resolution of the kernel's ticks: files created after this are newer than files
/// created before.
inline void waitForNextTick() {
    const auto now = [] {
        timespec time = {};
        ::clock_gettime(CLOCK_REALTIME_COARSE, &time);
        return std::pair(time.tv_sec, time.tv_nsec);
    };
    const auto before = now();
    if (!QTest::qWaitFor([&] { return now() != before; })) qFatal("the clock stands still");
}

/// A folder that is watched with a short latency, and the reported records by path below it.
class Scene {
public:
    explicit Scene(bool withFileLevelEvents = true) : m_fileLevel(withFileLevelEvents) {
        act({"/../outside", "/"});
    }

    QString path(const QString& name = {}) const {
        return m_home.filePath(name.isEmpty() ? "root" : "root/" + name);
    }
    /// Each step is "+file" to write to one, "/folder", "-item" to remove it with everything below, "a > b"
    /// to move or "a = b" to link. Paths are relative to the watched folder; "../outside" exists, too.
    void act(const QStringList& steps) const {
        for (const QString& step : steps) {
            const QStringList ends = step.split(QRegularExpression(" [>=] "));
            const fs::path from = native(path(step.mid(1)));
            if (ends.size() == 2 && step.contains('>'))
                fs::rename(native(path(ends[0])), native(path(ends[1])));
            else if (ends.size() == 2)
                fs::create_hard_link(native(path(ends[0])), native(path(ends[1])));
            else if (step.startsWith('-'))
                fs::remove_all(from);
            else
                fs::create_directories(step.startsWith('/') ? from : from.parent_path());
            if (step.startsWith('+')) std::ofstream(from, std::ios::app) << 'x';
        }
    }

    enum class Wait { No, Yes };

    /// With Wait::Yes, waits until the folders below are watched, too.
    void start(Wait wait = Wait::Yes, std::chrono::milliseconds latency = std::chrono::milliseconds(20)) {
        waitForNextTick();
        QString error;
        observer = DirectoryObserver::startObserving(
            path(), m_fileLevel, [this](const QList<EventRecord>& batch) { handleEvents(batch); }, &error,
            latency);
        if (!observer) qFatal("%s", qPrintable(error));
        QSignalSpy watching(observer.get(), &DirectoryObserver::watching);
        if (wait == Wait::Yes && !watching.wait()) qFatal("never watching");
    }

    /// Waits until all events so far are reported: those of a last item are.
    bool settle() {
        const QString last = QString("settled %1").arg(++m_settled);
        act({'+' + last});
        const QString reported = m_fileLevel ? last : QString();
        if (!m_fileLevel) records.remove(reported);
        const bool known = QTest::qWaitFor([&] { return records.contains(reported); });
        records.remove(last);
        return known;
    }

    bool has(const QString& name) const { return records.contains(name); }
    quint32 flags(const QString& name) const { return records.value(name).flags; }
    bool isWhole(const QString& name) const { return records.value(name).contents == EventContents::Whole; }

    std::unique_ptr<DirectoryObserver> observer;
    QMap<QString, EventRecord> records;
    int batches = 0;
    bool twice = false;  ///< Whether a batch contained a path twice.

private:
    void handleEvents(const QList<EventRecord>& batch) {
        ++batches;
        QSet<QString> seen;
        for (const EventRecord& record : batch) {
            twice = twice || seen.contains(record.path);
            seen.insert(record.path);
            const QString name = record.path.mid(path().size() + 1);
            const quint32 before = flags(name);
            records[name] = record;
            records[name].flags |= before;
        }
    }

    QTemporaryDir m_home;
    bool m_fileLevel;
    int m_settled = 0;
};
