#pragma once

#include "watch/completion/CompletionRule.h"
#include "watch/completion/FileLook.h"

#include <QHash>
#include <QObject>
#include <QStringList>
#include <QTimer>

#include <chrono>
#include <optional>
#include <set>
#include <utility>

/// Waits until files are complete: no process has them open for writing, and they no longer change. Handles
/// any number of files with one timer, which stops while all files wait for events, and one descriptor at a
/// time. Use it on one thread with an event loop; signals are emitted from the event loop, never during a
/// call. A slot may call any function and delete the waiter.
class CompletionWaiter : public QObject {
    Q_OBJECT

public:
    using Known = completion::Known;
    using Times = completion::Times;

    explicit CompletionWaiter(QObject* parent = nullptr) : CompletionWaiter(Times(), {}, parent) {}
    CompletionWaiter(const Times& times, FileLook::Sources sources, QObject* parent = nullptr);

    /// Starts to wait for a file, or continues with the new `known`. `known` is the file's last event and
    /// replaces the previous one; pass Unknown after lost events. `path` is absolute.
    void wait(const QString& path, Known known);
    /// Reports another event of the file, such as its removal: checks it again if it is waited for.
    void lookAgain(const QString& path);
    /// Ends the wait without complete() or abandoned().
    void cancel(const QString& path);
    void cancelAll();

    QStringList waiting() const { return m_entries.keys(); }
    qsizetype waitingCount() const { return m_entries.size(); }
    /// The total number of file checks.
    quint64 looks() const { return m_looks; }

Q_SIGNALS:
    /// The wait for `path` ended: the file is complete.
    void complete(const QString& path);
    /// The wait for `path` ended: the file was removed, is inaccessible, or is no regular file.
    void abandoned(const QString& path);
    /// waiting() changed; emitted once for many changes.
    void waitingChanged();

private:
    using Clock = std::chrono::steady_clock;
    enum class Outcome { Waits, Complete, DroppedOut };

    struct Entry {
        Known known = Known::Unknown;
        FileLook::Shape shape;
        Clock::time_point sameSince;  // `shape` is unchanged at least since then.
        std::chrono::milliseconds interval{0};
        std::optional<Clock::time_point> due;  // Null: waits for an event.
    };

    void checkDueFiles();
    Outcome look(const QString& path, Entry& entry);
    Outcome lookWhenStill(const QString& path, Entry& entry, const FileLook& found,
                          const completion::Rule& rule);
    void lookLater(const QString& path, Entry& entry, std::chrono::milliseconds interval);
    void schedule(const QString& path, Entry& entry, std::optional<Clock::time_point> due);
    void remove(const QString& path);
    void arm();

    const Times m_times;
    const FileLook::Sources m_sources;
    QHash<QString, Entry> m_entries;
    std::set<std::pair<Clock::time_point, QString>> m_schedule;  // The entries with a `due`, sorted by it.
    QTimer m_timer{this};
    bool m_waitingChanged = false;
    quint64 m_looks = 0;
};
