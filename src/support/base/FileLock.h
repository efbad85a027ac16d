#pragma once

#include <QString>

/// A lock between processes, on a lock file that is created if it is missing and never removed. The kernel
/// releases it when the process dies. Each instance is for one thread; lock() blocks.
class FileLock {
public:
    explicit FileLock(const QString& path);
    ~FileLock();
    /// Why the lock file cannot be opened, an errno; 0: it can.
    int error() const { return m_error; }
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    /// Waits for the lock. Returns false if another process held it for the whole time, or if the file cannot
    /// be created.
    bool lock(int limitMilliseconds);

private:
    int m_file = -1;
    int m_error = 0;
};
