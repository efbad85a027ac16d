#pragma once

#include "watch/completion/CompletionWaiter.h"

#include <QDeadlineTimer>
#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>

#include <chrono>
#include <memory>

class DirectoryObserver;
struct EventRecord;

/// Delays of the watch. Tests use shorter ones.
struct WatchTimes {
    std::chrono::milliseconds latency{2000};  ///< From an event in the folder to its record.
    completion::Times completion;
};

/// Reports movies that arrive in a folder or below it: each name once, when the file is complete. Main thread
/// only.
class MovieArrivals : public QObject {
    Q_OBJECT

public:
    /// File names, without folders, that were already reported. A movie that arrives again under its name is
    /// not converted a second time.
    using Names = QSet<QString>;

    /// What the record of a movie file says of its completeness.
    static CompletionWaiter::Known whatIsKnown(const EventRecord& record);

    /// `processedNames` may be shared by several watches: each name is then reported by one of them only.
    explicit MovieArrivals(std::shared_ptr<Names> processedNames = std::make_shared<Names>(),
                           QObject* parent = nullptr, const WatchTimes& times = {});
    ~MovieArrivals() override;

    /// Starts watching `folder`. Files that already exist in it are not reported. Returns an empty text, or
    /// the reason if the folder cannot be watched.
    QString start(const QString& folder);
    void stop();
    bool isRunning() const { return m_observer != nullptr; }

    /// Files that have arrived and are not complete yet.
    QStringList waiting() const { return m_waiter.waiting(); }

Q_SIGNALS:
    void arrived(const QString& path);
    /// The folder itself is gone: the watch has ended.
    void ended(const QString& reason);
    /// A part of the folder is not watched, for example because of the kernel's limit of watches; the rest
    /// still is.
    void problem(const QString& message);
    void waitingChanged();

private:
    void handleEvents(const QList<EventRecord>& records);
    void followMove(const EventRecord& record);
    void noteMissing(const QString& path);
    void report(const QString& path);

    const std::chrono::milliseconds m_latency;
    std::unique_ptr<DirectoryObserver> m_observer;
    CompletionWaiter m_waiter;
    std::shared_ptr<Names> m_processedNames;
    /// Incomplete files that have disappeared, and the time. The record that their folder was moved may still
    /// follow.
    QHash<QString, QDeadlineTimer> m_missing;
};
