#pragma once

#include <QFile>
#include <QFileSystemWatcher>
#include <QObject>
#include <QStringList>
#include <QTimer>

class QSocketNotifier;

/// Detects when missing folders may exist again: a volume was mounted, or the nearest existing parent folder
/// changed. Watches nothing and causes no wake-ups while the list of folders is empty. Main thread only.
class ReturnWatch : public QObject {
    Q_OBJECT

public:
    explicit ReturnWatch(QObject* parent = nullptr);

    /// Replaces the list of missing folders; absolute paths.
    void setFolders(const QStringList& folders);

Q_SIGNALS:
    /// A folder may exist again: check them; often none does. Emitted shortly after a change, and once after
    /// setFolders() with other folders, for changes that happened just before.
    void mayHaveReturned();

private:
    void checkFolders();
    QStringList existingParentFolders() const;
    void watchParentFolders();

    QStringList m_folders;
    QFileSystemWatcher m_watcher;
    QFile m_mounts;
    QSocketNotifier* m_mountNotifier = nullptr;
    QTimer m_latency;
};
