#include "support/base/FileLock.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QThread>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

FileLock::FileLock(const QString& path)
    : m_file(::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)),
      m_error(m_file < 0 ? errno : 0) {}

FileLock::~FileLock() {
    if (m_file >= 0) ::close(m_file);
}

bool FileLock::lock(int limitMilliseconds) {
    constexpr unsigned long kStepMilliseconds = 5;
    const QDeadlineTimer deadline(limitMilliseconds);
    while (m_file >= 0) {
        if (::flock(m_file, LOCK_EX | LOCK_NB) == 0) return true;
        if (errno != EWOULDBLOCK || deadline.hasExpired()) return false;
        QThread::msleep(kStepMilliseconds);
    }
    return false;
}
