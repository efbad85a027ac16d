#include "watch/events/TreeWatch.h"

#include "support/base/Log.h"
#include "support/base/Texts.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <sys/inotify.h>

namespace {

/// IN_ATTRIB: a folder may become readable. IN_EXCL_UNLINK: ignore writes to removed files. IN_MASK_ADD: a
/// folder found again through a mount keeps its mask.
constexpr uint32_t kFolder = IN_CREATE | IN_MODIFY | IN_CLOSE_WRITE | IN_DELETE | IN_MOVED_FROM |
                             IN_MOVED_TO | IN_ATTRIB | IN_ONLYDIR | IN_EXCL_UNLINK | IN_MASK_ADD;

QString shown(const std::string& path) {
    return QString::fromStdString(path);
}

}  // namespace

QString TreeWatch::start() {
    if (m_inotify.descriptor() < 0) return m_inotify.problem();
    const QString path = shown(m_rootPath);
    const int watch = m_inotify.watch(m_rootPath, kFolder | IN_DELETE_SELF | IN_MOVE_SELF);
    struct stat info = {};
    if (watch == -ENOSPC) return Inotify::limitOfWatches(path);
    if (watch == -ENOENT) return Texts::tr("The folder “%1” does not exist.").arg(path);
    if (watch == -ENOTDIR) return Texts::tr("“%1” is not a folder.").arg(path);
    if (watch == -EACCES) return Texts::tr("The folder “%1” may not be read.").arg(path);
    if (watch < 0 || ::stat(m_rootPath.c_str(), &info) != 0)
        return Texts::tr("The folder “%1” cannot be watched: %2.")
            .arg(path, QString::fromLocal8Bit(std::strerror(watch < 0 ? -watch : errno)));
    m_root = watch;
    m_rootDevice = info.st_dev;
    m_rootNode = info.st_ino;
    m_tree.setRoot(watch, m_rootPath);
    return {};
}

bool TreeWatch::isRootInPlace() const {
    struct stat info = {};
    if (::stat(m_rootPath.c_str(), &info) != 0) return errno != ENOENT && errno != ENOTDIR;
    return info.st_dev == m_rootDevice && info.st_ino == m_rootNode;
}

TreeWatch::Folder TreeWatch::lookAt(int parent, const std::string& name) {
    const std::string path = joinedPath(m_tree.path(parent), name);
    const int there = m_tree.child(parent, name);
    const int watch = m_inotify.watch(path, kFolder | IN_DONT_FOLLOW);
    if (watch == -ENOENT || watch == -ENOTDIR || watch == -ELOOP) {
        if (there != PathTree::kNone) forget(there);
        return {};
    }
    if (watch < 0) {
        noteFailure(path, -watch);
        return {};
    }
    if (watch == there) return {Found::Same, watch};
    if (m_tree.isWithin(parent, watch)) return {};
    if (there != PathTree::kNone) forget(there);
    m_pendingRemovals.erase(watch);
    const std::string before = m_tree.path(watch);
    m_tree.place(watch, parent, name);
    return {before.empty() ? Found::New : Found::Moved, watch, before};
}

void TreeWatch::forget(int watch) {
    const std::vector<int> gone = m_tree.remove(watch);
    m_pendingRemovals.insert(gone.begin(), gone.end());
}

void TreeWatch::forgetRemoved(int watch) {
    forget(watch);
    m_pendingRemovals.erase(watch);
}

void TreeWatch::removeSome() {
    constexpr int kAtOnce = 500;
    for (int i = 0; i < kAtOnce && !m_pendingRemovals.empty(); ++i)
        m_inotify.remove(m_pendingRemovals.extract(m_pendingRemovals.begin()).value());
}

void TreeWatch::noteFailure(const std::string& path, int error) {
    if (error == ENOSPC) {
        if (!std::exchange(m_isLimitReported, true))
            m_problems.append(Inotify::limitOfWatches(shown(m_rootPath)));
    } else if (m_unreadable.insert(path).second) {
        logError("Error: the folder %@ is not watched: %@", shown(path),
                 QString::fromLocal8Bit(std::strerror(error)));
    }
}
