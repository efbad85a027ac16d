#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <cstdint>

/// Detects when a folder gets another path: it or a folder above it is moved or renamed. Changes inside these
/// folders cause no wake-ups, and no timer runs until a move. Main thread only.
class MoveWatch : public QObject {
    Q_OBJECT

public:
    // Flags of what happened to the folder.
    static constexpr quint32 kEventsDropped = 4;  ///< The kernel's queue overflowed; events were lost.
    static constexpr quint32 kRootChanged = 32;   ///< It is, or was for a moment, at another path.
    static constexpr quint32 kUnmounted = 128;

    /// `folder` is absolute. Events within `latencyMilliseconds` after the first one are reported together.
    /// If the folder cannot be watched, that is logged; parent folders without read access are skipped.
    MoveWatch(const QString& folder, int latencyMilliseconds, QObject* parent = nullptr);
    ~MoveWatch() override;

    /// A descriptor (O_PATH) of the folder, open while this object lives; -1 if opening failed.
    int descriptor() const { return m_folder; }
    /// The folder's current path; empty if it was deleted or cannot be reached.
    QString currentPath() const;

    /// The flags for an event mask of inotify(7); 0: not relevant.
    static quint32 flagsOf(uint32_t mask);

Q_SIGNALS:
    /// Emitted at once on a move, which may be temporary.
    void mayHaveMoved();
    /// Emitted after the latency with all flags since the first event.
    void reported(quint32 flags);

private:
    void watchParentFolders();
    void read();
    void report();

    int m_folder;
    int m_inotify;
    quint32 m_flags = 0;
    QTimer m_latency;
};
