#pragma once

#include "watch/CompletionWaiter.h"

#include <QObject>
#include <QSet>
#include <QString>

#include <memory>

class DirectoryObserver;
struct EventRecord;

/// Movies that arrive in a folder or below it: each is told once by name, when it is complete. Main thread
/// only.
class FolderWatch : public QObject {
    Q_OBJECT

public:
    explicit FolderWatch(QObject* parent = nullptr);
    ~FolderWatch() override;

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
    void take(const QList<EventRecord>& records);
    void followMove(const EventRecord& record);
    void tell(const QString& path);

    std::unique_ptr<DirectoryObserver> m_observer;
    CompletionWaiter m_waiter;
    /// Names without folders. A movie that comes again under its name is not converted a second time.
    QSet<QString> m_processedNames;
};
