#pragma once

#include <QByteArray>

class QProcess;

/// Both outputs of one child in the order of arrival. A QProcess that collects them wakes for each line,
/// which takes the processor from a child that prints in small pieces. One thread.
class CollectedOutput {
public:
    static constexpr qsizetype kCapacity = 1 << 20;  ///< Of the pipe, in bytes, at most.
    /// Further bytes of a child that prints without end are dropped until take().
    static constexpr qsizetype kMost = 64 * kCapacity;

    CollectedOutput();
    ~CollectedOutput();
    CollectedOutput(const CollectedOutput&) = delete;
    CollectedOutput& operator=(const CollectedOutput&) = delete;

    /// Call after childprocess::prepare() and before start().
    void takeFrom(QProcess& process);
    /// Call after start(): the child has the only end then that can be written.
    void noteStarted();
    /// Reads what has arrived, at most as much as the pipe holds: a child that has printed more waits for it.
    void collect();
    /// Of the pipe, in bytes. Users get smaller ones when they have many.
    qsizetype capacity() const { return m_capacity; }
    /// Collects, and gives away what was collected.
    QByteArray take();

private:
    int m_readEnd = -1;
    int m_writeEnd = -1;
    qsizetype m_capacity = kCapacity;
    QProcess* m_process = nullptr;  // Collects by itself if there is no pipe.
    QByteArray m_bytes;
};
