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

/// How long the watch takes over what it does; other than these in tests.
struct WatchTimes {
    std::chrono::milliseconds latency{2000};  ///< From what happens in the folder to its record.
    completion::Times completion;
};

/// Movies that arrive in a folder or below it: each is told once by name, when it is complete. Main thread
/// only.
class MovieArrivals : public QObject {
    Q_OBJECT

public:
    /// Names without folders that were told already. A movie that comes again under its name is not converted
    /// a second time.
    using Names = QSet<QString>;

    /// `processedNames` may be shared by several watches: a name is told by one of them.
    explicit MovieArrivals(std::shared_ptr<Names> processedNames = std::make_shared<Names>(),
                           QObject* parent = nullptr, const WatchTimes& times = {});
    ~MovieArrivals() override;

    /// Watches `folder` from now on. What is in it already is not told. Nothing is watched, and the reason
    /// comes back, when the folder cannot be watched; else the empty text.
    QString start(const QString& folder);
    void stop();
    bool isRunning() const { return m_observer != nullptr; }

    /// Files that arrived and are not complete yet.
    QStringList waiting() const { return m_waiter.waiting(); }

Q_SIGNALS:
    void arrived(const QString& path);
    /// The folder itself is gone: nothing is watched any more.
    void ended(const QString& reason);
    /// Something is not seen, such as a folder beyond the kernel's limit; the watch goes on.
    void problem(const QString& message);
    void waitingChanged();

private:
    void handleEvents(const QList<EventRecord>& records);
    void followMove(const EventRecord& record);
    void noteGone(const QString& path);
    void tell(const QString& path);

    const std::chrono::milliseconds m_latency;
    std::unique_ptr<DirectoryObserver> m_observer;
    CompletionWaiter m_waiter;
    std::shared_ptr<Names> m_processedNames;
    /// Files that were waited for and are gone, and since when. The record that their folder moved may be on
    /// its way.
    QHash<QString, QDeadlineTimer> m_gone;
};
