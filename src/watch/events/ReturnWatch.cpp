#include "watch/events/ReturnWatch.h"

#include <QFileInfo>
#include <QSocketNotifier>

ReturnWatch::ReturnWatch(QObject* parent) : QObject(parent), m_mounts("/proc/self/mountinfo") {
    constexpr int kLatencyMilliseconds = 100;  // Limits the checks caused by a busy parent folder.
    m_latency.setSingleShot(true);
    m_latency.setInterval(kLatencyMilliseconds);
    connect(&m_latency, &QTimer::timeout, this, &ReturnWatch::checkFolders);
    const auto wait = [this] {
        if (!m_latency.isActive()) m_latency.start();
    };
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, wait);
    if (!m_mounts.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) return;
    m_mountNotifier = new QSocketNotifier(m_mounts.handle(), QSocketNotifier::Exception, this);
    m_mountNotifier->setEnabled(false);
    connect(m_mountNotifier, &QSocketNotifier::activated, this, wait);
}

void ReturnWatch::setFolders(const QStringList& folders) {
    if (folders == m_folders) return;
    m_folders = folders;
    if (m_mountNotifier) m_mountNotifier->setEnabled(!folders.isEmpty());
    watchParentFolders();
    if (folders.isEmpty())
        m_latency.stop();
    else
        m_latency.start();
}

void ReturnWatch::checkFolders() {
    watchParentFolders();
    Q_EMIT mayHaveReturned();
}

QStringList ReturnWatch::existingParentFolders() const {
    QStringList result;
    for (const QString& folder : m_folders) {
        QString above = QFileInfo(folder).path();
        while (above.size() > 1 && !QFileInfo(above).isDir())
            above = QFileInfo(above).path();
        if (!result.contains(above)) result.append(above);
    }
    return result;
}

void ReturnWatch::watchParentFolders() {
    const auto without = [](QStringList list, const QStringList& others) {
        list.removeIf([&](const QString& path) { return others.contains(path); });
        return list;
    };
    // A folder created between the check and the watch would be missed: repeat until nothing changes.
    QStringList before;
    for (QStringList wanted = existingParentFolders(); wanted != before; wanted = existingParentFolders()) {
        const QStringList watched = m_watcher.directories();
        if (const QStringList old = without(watched, wanted); !old.isEmpty()) m_watcher.removePaths(old);
        if (const QStringList added = without(wanted, watched); !added.isEmpty()) m_watcher.addPaths(added);
        before = wanted;
    }
}
