#pragma once

#include "watch/events/Inotify.h"
#include "watch/events/PathTree.h"

#include <QString>
#include <QStringList>

#include <set>
#include <string>
#include <sys/stat.h>
#include <unordered_set>
#include <utility>

/// The watched folders of a tree. A folder is identified by its watch: paths are resolved by the kernel each
/// time, because later events may already have changed what an earlier event describes. For the observer's
/// thread only.
class TreeWatch {
public:
    explicit TreeWatch(std::string root) : m_rootPath(std::move(root)) {}

    /// Watches the root; returns the reason of a failure, for the user, or an empty text.
    QString start();
    int root() const { return m_root; }
    const std::string& rootPath() const { return m_rootPath; }
    /// False if the root's path is missing or is another folder now.
    bool isRootInPlace() const;

    enum class Found {
        Nothing,  ///< No folder, one that cannot be watched, or a mount of the tree inside itself.
        Same,     ///< The folder already known at this place.
        Moved,    ///< A folder known at another place.
        New,
    };
    struct Folder {
        Found found = Found::Nothing;
        int watch = PathTree::kNone;
        std::string before = {};  ///< The previous path of a moved folder.
    };
    /// Checks which folder is at a place, watches it, and forgets a folder that is no longer there.
    Folder lookAt(int parent, const std::string& name);

    /// Removes the folder and those below it from the tree; removeSome() removes their watches.
    void forget(int watch);
    /// Handles the kernel's removal of a watch.
    void forgetRemoved(int watch);
    bool hasToRemove() const { return !m_pendingRemovals.empty(); }
    /// Removes some of the pending watches. Each removal causes an event: all at once they would overflow the
    /// kernel's queue.
    void removeSome();

    Inotify& inotify() { return m_inotify; }
    const PathTree& tree() const { return m_tree; }
    /// Problems for the user since the last call. Each is reported once.
    QStringList takeProblems() { return std::exchange(m_problems, {}); }

private:
    void noteFailure(const std::string& path, int error);

    std::string m_rootPath;
    Inotify m_inotify;
    PathTree m_tree;
    int m_root = PathTree::kNone;
    dev_t m_rootDevice = 0;
    ino_t m_rootNode = 0;
    std::unordered_set<int> m_pendingRemovals;
    std::set<std::string> m_unreadable;
    bool m_isLimitReported = false;
    QStringList m_problems;
};
