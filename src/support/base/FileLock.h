#pragma once

#include <QString>

/// A lock between processes on a file of its own, which is made when it is missing and stays. The kernel
/// releases it with the process, at whatever moment that dies.
class FileLock {
public:
    explicit FileLock(const QString& path);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    /// Waits for the lock. False: another process held it all the time, or the file cannot be made.
    bool lock(int limitMilliseconds);

private:
    int m_file = -1;
};
