#include "watch/events/EventReader.h"

#include "support/base/Texts.h"

#include <sys/inotify.h>
#include <sys/stat.h>

namespace {

/// A hard link or a symbolic link: no write and close will follow.
bool isCreatedWithContents(const std::string& path) {
    struct stat info = {};
    return ::lstat(path.c_str(), &info) == 0 &&
           (S_ISLNK(info.st_mode) || (S_ISREG(info.st_mode) && info.st_size > 0));
}

}  // namespace

EventReader::EventReader(TreeWatch& watch, TreeScan& scan, EventBatch& batch)
    : m_watch(watch), m_scan(scan), m_batch(batch) {}

void EventReader::read(const QDeadlineTimer& deadline) {
    ++m_turn;
    const bool isDrained = m_watch.inotify().read(deadline, [this](const Inotify::Event& event) {
        handleEvent(event);
        return !m_batch.isFull() && m_endReason.isEmpty();
    });
    if (isDrained) resolveDepartures();
}

void EventReader::handleEvent(const Inotify::Event& event) {
    if (!m_endReason.isEmpty() || handleFolderEvent(event)) return;
    const bool isFolder = (event.mask & IN_ISDIR) != 0;
    const quint32 kind = isFolder ? kEventItemIsFolder : kEventItemIsFile;
    const std::string folder = m_watch.tree().path(event.watch);
    const std::string name(event.name);
    if ((event.mask & (IN_MOVED_FROM | IN_MOVED_TO)) != 0) {
        handleMove(event, folder, name);
    } else if ((event.mask & IN_CREATE) != 0) {
        const bool whole = !isFolder && isCreatedWithContents(joinedPath(folder, name));
        m_batch.add(folder, name, kind | kEventItemCreated | (whole ? kEventItemModified : 0U),
                    EventContents::Unfinished);
        if (isFolder) m_scan.enter(event.watch, name, TreeScan::Report::New);
    } else if ((event.mask & IN_DELETE) != 0) {
        m_batch.add(folder, name, kind | kEventItemRemoved, EventContents::Unfinished);
    } else if ((event.mask & IN_CLOSE_WRITE) != 0) {
        m_batch.add(folder, name, kind | kEventItemModified, EventContents::Whole);
    } else if ((event.mask & IN_MODIFY) != 0) {
        m_batch.add(folder, name, kind | kEventItemModified, EventContents::Unfinished);
    } else if ((event.mask & IN_ATTRIB) != 0 && isFolder &&
               m_watch.tree().child(event.watch, name) == PathTree::kNone) {
        m_scan.enter(event.watch, name, TreeScan::Report::New);
    }
}

bool EventReader::handleFolderEvent(const Inotify::Event& event) {
    if ((event.mask & IN_Q_OVERFLOW) != 0) {
        m_overflowed = true;
        return true;
    }
    if (!m_watch.tree().contains(event.watch)) return true;
    if (event.watch == m_watch.root()) {
        const QString path = QString::fromStdString(m_watch.rootPath());
        if ((event.mask & IN_UNMOUNT) != 0)
            m_endReason = Texts::tr("The volume of the watched folder “%1” was unmounted.").arg(path);
        else if ((event.mask & IN_MOVE_SELF) != 0)
            m_endReason = Texts::tr("The watched folder “%1” was moved.").arg(path);
        else if ((event.mask & (IN_DELETE_SELF | IN_IGNORED)) != 0)
            m_endReason = Texts::tr("The watched folder “%1” was removed.").arg(path);
    } else if ((event.mask & IN_UNMOUNT) != 0) {
        // The folder that the mount hid is visible again; it is not new.
        const int parent = m_watch.tree().parent(event.watch);
        const std::string name = m_watch.tree().name(event.watch);
        m_watch.forgetRemoved(event.watch);
        m_scan.enter(parent, name, TreeScan::Report::Arrivals);
    } else if ((event.mask & IN_IGNORED) != 0) {
        m_watch.forgetRemoved(event.watch);
    }
    return event.name.empty();
}

void EventReader::handleMove(const Inotify::Event& event, const std::string& folder,
                             const std::string& name) {
    const bool isFolder = (event.mask & IN_ISDIR) != 0;
    const quint32 flags = kEventItemRenamed | (isFolder ? kEventItemIsFolder : kEventItemIsFile);
    if ((event.mask & IN_MOVED_FROM) != 0) {
        m_batch.add(folder, name, flags, EventContents::Unfinished);
        m_departures[event.cookie] = {event.watch, name, joinedPath(folder, name), isFolder, m_turn};
        return;
    }
    const auto departure = m_departures.find(event.cookie);
    const bool isFromOutside = departure == m_departures.end();
    m_batch.add(folder, name, flags, isFolder ? EventContents::Unfinished : EventContents::Whole,
                isFromOutside ? std::string() : departure->second.path);
    if (isFolder) m_scan.enter(event.watch, name, TreeScan::Report::MovedHere, isFromOutside);
    // If another item is at this place or the old one by now, resolveDepartures() checks the old one.
    if (!isFromOutside &&
        m_watch.tree().child(departure->second.parent, departure->second.name) == PathTree::kNone)
        m_departures.erase(departure);
}

/// An item that did not arrive elsewhere by the next turn has left the tree, unless it is back in its place.
/// A folder that arrives even later is treated as new, so nothing is lost.
void EventReader::resolveDepartures() {
    for (auto at = m_departures.begin(); at != m_departures.end();) {
        const Departure& departure = at->second;
        if (departure.turn == m_turn) {
            ++at;
            continue;
        }
        if (departure.isFolder && m_watch.tree().child(departure.parent, departure.name) != PathTree::kNone)
            m_scan.enter(departure.parent, departure.name, TreeScan::Report::MovedHere);
        at = m_departures.erase(at);
    }
}
