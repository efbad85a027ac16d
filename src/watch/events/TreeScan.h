#pragma once

#include "watch/events/EventBatch.h"
#include "watch/events/FolderReader.h"
#include "watch/events/TreeWatch.h"

#include <QDeadlineTimer>

#include <ctime>
#include <optional>
#include <string>
#include <vector>

/// Reads folders of the tree in time slices, to watch the folders below and to report changes without events.
/// For the observer's thread only.
class TreeScan {
public:
    enum class Report {
        Arrivals,  ///< Items that arrived after the scan object was created, before their folder was watched.
        New,       ///< All items, as created.
        MovedHere,  ///< All items, as renamed.
        Missed,     ///< Items changed since the scan object was created, as modified, and unknown folders.
    };

    TreeScan(TreeWatch& watch, EventBatch& batch);

    /// Checks a folder. Schedules reading it if it was unknown or `again` is set.
    TreeWatch::Found enter(int parent, const std::string& name, Report report, bool again = false);

    void readTree(Report report) { m_pending.push_back({m_watch.root(), report}); }

    bool hasWork() const { return m_reader || !m_known.empty() || !m_pending.empty(); }
    /// Continues until the deadline has passed or the batch is full.
    void work(const QDeadlineTimer& deadline);

private:
    struct Task {
        int watch;
        Report report;
    };

    void open(Task task);
    void addEntry(const FolderReader::Entry& entry);
    quint32 arrivalFlags(const FolderReader::Entry& entry, Report& below) const;

    TreeWatch& m_watch;
    EventBatch& m_batch;
    timespec m_createdAt = {};
    std::vector<Task> m_pending;
    /// The folder being read; its path may change between two slices.
    Task m_task = {};
    std::string m_path;
    std::optional<FolderReader> m_reader;
    bool m_changed = false;
    /// Known subfolders of the folder being read that were not found in it yet.
    std::vector<std::string> m_known;
};
