#pragma once

#include <QFile>
#include <QFileSystemWatcher>
#include <QObject>
#include <QStringList>
#include <QTimer>

class QSocketNotifier;

/// Notices when folders that are not there may be there again: a volume was mounted, or something changed in
/// the nearest folder above that exists. While no folder is looked for, nothing is watched and nothing wakes
/// up. Main thread only.
class ReturnWatch : public QObject {
    Q_OBJECT

public:
    explicit ReturnWatch(QObject* parent = nullptr);

    /// The absolute paths to look for, in place of those before.
    void setFolders(const QStringList& folders);

Q_SIGNALS:
    /// Look whether a folder is there; often none is. Comes a moment after the change, and once after
    /// setFolders() with other folders, for what happened just before.
    void stirred();

private:
    void look();
    QStringList foldersAbove() const;
    void watchFoldersAbove();

    QStringList m_folders;
    QFileSystemWatcher m_watcher;
    QFile m_mounts;
    QSocketNotifier* m_mountNotifier = nullptr;
    QTimer m_latency;
};
