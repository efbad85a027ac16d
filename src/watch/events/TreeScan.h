#pragma once

#include "watch/events/EventBatch.h"
#include "watch/events/FolderReader.h"
#include "watch/events/TreeWatch.h"

#include <QDeadlineTimer>

#include <ctime>
#include <optional>
#include <string>
#include <vector>

/// Reads folders of the tree, slice by slice, to watch those below and to report what no event told of.
class TreeScan {
public:
    enum class Report {
        Arrivals,   ///< What came since the scan was made, while its folder was not watched yet.
        New,        ///< Everything, as created.
        MovedHere,  ///< Everything, as renamed.
        Missed,     ///< What changed since the scan was made, as modified, and folders not known yet.
    };

    TreeScan(TreeWatch& watch, EventBatch& batch);

    /// Looks at a folder's place. One that was not known is read; with `again`, a known one, too.
    TreeWatch::Found enter(int parent, const std::string& name, Report report, bool again = false);

    void readTree(Report report) { m_waiting.push_back({m_watch.root(), report}); }

    bool hasWork() const { return m_reader || !m_known.empty() || !m_waiting.empty(); }
    /// Goes on until time is over or the batch is full.
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
    timespec m_made = {};
    std::vector<Task> m_waiting;
    /// The folder at hand: it may move, and its path with it, between two slices.
    Task m_task = {};
    std::string m_path;
    std::optional<FolderReader> m_reader;
    bool m_changed = false;
    /// Names that were known in the folder at hand, to see which of them are left.
    std::vector<std::string> m_known;
};
