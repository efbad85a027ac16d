#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <cstdint>

/// Notices when a folder gets another path: it or a folder above it is moved or renamed. What happens in
/// these folders wakes nobody up, and no timer runs until something moved. Main thread only.
class MoveWatch : public QObject {
    Q_OBJECT

public:
    // What happened to the folder, as bits.
    static constexpr quint32 kEventsDropped = 4;  ///< More than the kernel keeps; nobody knows of what.
    static constexpr quint32 kRootChanged = 32;   ///< It is found at another path, or was for a moment.
    static constexpr quint32 kUnmounted = 128;

    /// `folder` is absolute. What comes within `latencyMilliseconds` of a first event is reported as one. A
    /// folder that cannot be watched is logged; one above that may not be read is passed over.
    MoveWatch(const QString& folder, int latencyMilliseconds, QObject* parent = nullptr);
    ~MoveWatch() override;

    /// The folder, held open (O_PATH) from the start; -1: it could not be.
    int descriptor() const { return m_folder; }
    /// Where the folder is now. Empty: nowhere that it can be reached, such as deleted.
    QString currentPath() const;

    /// The bits for what inotify(7) tells; 0: nothing of interest.
    static quint32 flagsOf(uint32_t mask);

Q_SIGNALS:
    /// At once: something moved, perhaps not for good.
    void stirred();
    /// After the latency: all that happened since the first event.
    void reported(quint32 flags);

private:
    void watchFoldersAbove();
    void read();
    void report();

    int m_folder;
    int m_inotify;
    quint32 m_flags = 0;
    QTimer m_latency;
};
