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

/// The watched folders of a tree. A folder's watch is its identity: what a path leads to is asked of the
/// kernel each time, because events tell of a past that later events have changed already.
class TreeWatch {
public:
    explicit TreeWatch(std::string root) : m_rootPath(std::move(root)) {}

    /// Watches the root; empty, or why it cannot be.
    QString start();
    int root() const { return m_root; }
    const std::string& rootPath() const { return m_rootPath; }
    /// False: nothing or another folder is at the root's path now.
    bool isRootInPlace() const;

    enum class Found {
        Nothing,  ///< No folder, one that cannot be watched, or the tree in itself by way of a mount.
        Same,     ///< The folder that was known at this place.
        Moved,    ///< A folder that was known at another place.
        New,
    };
    struct Folder {
        Found found = Found::Nothing;
        int watch = PathTree::kNone;
        std::string before = {};  ///< Of a moved one: its path until now.
    };
    /// Sees what is at a place, watches it, and forgets what was there and is not any more.
    Folder lookAt(int parent, const std::string& name);

    /// The folder and those below it belong to the tree no longer. Their watches go in removeSome().
    void forget(int watch);
    /// The kernel has removed the watch itself.
    void forgetRemoved(int watch);
    bool hasToRemove() const { return !m_leaving.empty(); }
    /// Each removal makes an event: done in one go for a large folder they would flood the kernel's queue.
    void removeSome();

    Inotify& inotify() { return m_inotify; }
    const PathTree& tree() const { return m_tree; }
    /// What the user should know, since the last call. Each is told once.
    QStringList takeProblems() { return std::exchange(m_problems, {}); }

private:
    void noteFailure(const std::string& path, int error);

    std::string m_rootPath;
    Inotify m_inotify;
    PathTree m_tree;
    int m_root = PathTree::kNone;
    dev_t m_rootDevice = 0;
    ino_t m_rootNode = 0;
    std::unordered_set<int> m_leaving;
    std::set<std::string> m_unreadable;
    bool m_limitTold = false;
    QStringList m_problems;
};
