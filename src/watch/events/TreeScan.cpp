#include "watch/events/TreeScan.h"

TreeScan::TreeScan(TreeWatch& watch, EventBatch& batch) : m_watch(watch), m_batch(batch) {
    ::clock_gettime(CLOCK_REALTIME_COARSE, &m_createdAt);  // The clock of file systems' times.
}

TreeWatch::Found TreeScan::enter(int parent, const std::string& name, Report report, bool again) {
    const TreeWatch::Folder folder = m_watch.lookAt(parent, name);
    using Found = TreeWatch::Found;
    if (folder.found == Found::Nothing) return folder.found;
    bool isNew = folder.found == Found::New;
    if (folder.found == Found::Moved &&
        !m_batch.folderMoved(folder.before, m_watch.tree().path(folder.watch)))
        isNew = true;
    if (report == Report::Missed) {
        again = true;
        if (isNew) report = Report::New;
    }
    if (isNew || again) m_pending.push_back({folder.watch, report});
    return folder.found;
}

void TreeScan::work(const QDeadlineTimer& deadline) {
    m_path = m_watch.tree().path(m_task.watch);
    while (hasWork() && !deadline.hasExpired() && !m_batch.isFull()) {
        if (m_reader) {
            if (const auto entry = m_watch.tree().contains(m_task.watch) ? m_reader->next() : std::nullopt)
                addEntry(*entry);
            else
                m_reader.reset();
        } else if (!m_known.empty()) {
            const std::string name = std::move(m_known.back());
            m_known.pop_back();
            if (m_watch.tree().child(m_task.watch, name) != PathTree::kNone)
                m_watch.lookAt(m_task.watch, name);
        } else {
            const Task task = m_pending.back();
            m_pending.pop_back();
            if (m_watch.tree().contains(task.watch)) open(task);
        }
    }
    if (m_pending.empty()) m_pending.shrink_to_fit();
}

void TreeScan::open(Task task) {
    m_task = task;
    m_path = m_watch.tree().path(task.watch);
    const bool isRoot = task.watch == m_watch.root();
    m_reader.emplace(m_path, isRoot);
    // The root is watched from the start: arrivals in it are reported by events.
    m_changed = task.report == Report::Arrivals && !isRoot && m_reader->changedSince(m_createdAt);
    if (task.report == Report::Missed) m_known = m_watch.tree().childNames(task.watch);
}

void TreeScan::addEntry(const FolderReader::Entry& entry) {
    if (entry.kind == FolderReader::Kind::Other) return;
    const bool isFolder = entry.kind == FolderReader::Kind::Folder;
    const std::string name(entry.name);
    Report below = m_task.report;
    quint32 flags = 0;
    switch (m_task.report) {
        case Report::New:
            flags = kEventItemCreated | (isFolder ? 0U : kEventItemModified);
            break;
        case Report::MovedHere:
            flags = kEventItemRenamed;
            break;
        case Report::Missed:
            if (!isFolder && m_reader->arrival(entry, m_createdAt) != FolderReader::Arrival::Before)
                flags = kEventItemModified;
            break;
        case Report::Arrivals:
            if (m_changed) flags = arrivalFlags(entry, below);
            break;
    }
    if (isFolder) {
        const bool isNew = enter(m_task.watch, name, below) == TreeWatch::Found::New;
        if (isNew && m_task.report == Report::Missed) flags = kEventItemCreated;
    }
    if (flags != 0) m_batch.add(m_path, name, flags | (isFolder ? kEventItemIsFolder : kEventItemIsFile));
}

quint32 TreeScan::arrivalFlags(const FolderReader::Entry& entry, Report& below) const {
    using Arrival = FolderReader::Arrival;
    const Arrival arrival = m_reader->arrival(entry, m_createdAt);
    if (entry.kind != FolderReader::Kind::Folder)
        return arrival == Arrival::Before ? 0U : kEventItemCreated | kEventItemModified;
    // A folder with new times may be an old one in which a file was created.
    if (arrival != Arrival::MovedHere) return 0;
    below = Report::MovedHere;
    return kEventItemRenamed;
}
