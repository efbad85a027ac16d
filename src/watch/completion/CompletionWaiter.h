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

/// Waits for files to be complete: nobody has them open for writing, and they stand still. Any number of
/// files with one timer, which rests while only an event can change anything; one descriptor at a time. Lives
/// in one thread and needs its event loop; every signal comes from there, never from within a call. A
/// receiver may call anything, also delete the waiter.
class CompletionWaiter : public QObject {
    Q_OBJECT

public:
    using Known = completion::Known;
    using Times = completion::Times;

    explicit CompletionWaiter(QObject* parent = nullptr) : CompletionWaiter(Times(), {}, parent) {}
    CompletionWaiter(const Times& times, FileLook::Sources sources, QObject* parent = nullptr);

    /// `known`: the last event of the name; it replaces what was known of it before, so that after lost
    /// events Unknown is right. Again for a path that is waited for it is the same wait. `path` is absolute.
    void wait(const QString& path, Known known);
    /// Something else happened to the name, such as its removal: looks again, if it is waited for.
    void lookAgain(const QString& path);
    /// Ends the wait without a signal of its own.
    void cancel(const QString& path);
    void cancelAll();

    QStringList waiting() const { return m_entries.keys(); }
    qsizetype waitingCount() const { return m_entries.size(); }
    /// How often a file was looked at, since the beginning.
    quint64 looks() const { return m_looks; }

Q_SIGNALS:
    /// The wait for `path` ended: the file can be taken.
    void complete(const QString& path);
    /// The wait for `path` ended: it is gone, out of reach, or no regular file.
    void droppedOut(const QString& path);
    /// waiting() changed. Once for many changes.
    void waitingChanged();

private:
    using Clock = std::chrono::steady_clock;
    enum class Outcome { Waits, Complete, DroppedOut };

    struct Entry {
        Known known = Known::Unknown;
        FileLook::Shape shape;
        Clock::time_point sameSince;  // `shape` is so at least since then.
        std::chrono::milliseconds interval{0};
        std::optional<Clock::time_point> due;  // None: waits for an event.
    };

    void turn();
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
    std::set<std::pair<Clock::time_point, QString>> m_schedule;  // The entries that have a `due`.
    QTimer m_timer{this};
    bool m_waitingChanged = false;
    quint64 m_looks = 0;
};
