#pragma once

#include "watch/events/TreeScan.h"

#include <QDeadlineTimer>
#include <QString>

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>

/// Converts the kernel's events to records and updates the watched tree. For the observer's thread only.
class EventReader {
public:
    EventReader(TreeWatch& watch, TreeScan& scan, EventBatch& batch);

    /// Reads until no event is pending, the deadline has passed or the batch is full.
    void read(const QDeadlineTimer& deadline);

    /// Whether an item was moved away and its destination is not known yet; the next read() resolves this.
    bool awaitsMoves() const { return !m_departures.empty(); }
    /// Whether events were lost since the last call.
    bool takeOverflow() { return std::exchange(m_overflowed, false); }
    void overflow() { m_overflowed = true; }
    /// Why the root is no longer watched; empty while it is.
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
    /// Handles events about watched folders themselves. Returns true if that completes the event.
    bool handleFolderEvent(const Inotify::Event& event);
    void handleMove(const Inotify::Event& event, const std::string& folder, const std::string& name);
    void resolveDepartures();

    TreeWatch& m_watch;
    TreeScan& m_scan;
    EventBatch& m_batch;
    std::unordered_map<uint32_t, Departure> m_departures;  ///< By the cookie of the move.
    unsigned m_turn = 0;
    bool m_overflowed = false;
    QString m_endReason;
};
