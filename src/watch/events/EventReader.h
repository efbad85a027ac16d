#pragma once

#include "watch/events/TreeScan.h"

#include <QDeadlineTimer>
#include <QString>

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>

/// Turns the kernel's events into records and keeps the watched tree in step with them.
class EventReader {
public:
    EventReader(TreeWatch& watch, TreeScan& scan, EventBatch& batch);

    /// Until nothing waits, time is over or the batch is full.
    void read(const QDeadlineTimer& deadline);

    /// Something was moved away and it is not known yet whether its new place is in the tree; the next read()
    /// knows.
    bool awaitsMoves() const { return !m_departures.empty(); }
    /// Events were lost since the last call.
    bool takeOverflow() { return std::exchange(m_overflowed, false); }
    void overflow() { m_overflowed = true; }
    /// Why the root is watched no longer; empty while it is.
    QString endReason() const { return m_endReason; }

private:
    struct Departure {
        int parent;
        std::string name;
        std::string path;
        bool isFolder;
        unsigned turn;
    };

    void handleEvent(const Inotify::Event& event);
    /// True: the event is no more than that.
    bool takeAboutFolder(const Inotify::Event& event);
    void takeMove(const Inotify::Event& event, const std::string& folder, const std::string& name);
    void settleDepartures();

    TreeWatch& m_watch;
    TreeScan& m_scan;
    EventBatch& m_batch;
    std::unordered_map<uint32_t, Departure> m_departures;  ///< By the cookie that both ends of a move have.
    unsigned m_turn = 0;
    bool m_overflowed = false;
    QString m_endReason;
};
