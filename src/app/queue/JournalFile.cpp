#include "app/queue/JournalFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace {

/// A file descriptor; errors are in errno.
class Descriptor {
public:
    Descriptor(const QString& path, int flags)
        : m_number(::open(QFile::encodeName(path).constData(), flags | O_CLOEXEC, 0600)) {}
    ~Descriptor() {
        const int error = errno;
        if (m_number >= 0) ::close(m_number);
        errno = error;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool isOpen() const { return m_number >= 0; }
    bool writeAt(qint64 offset, QByteArrayView bytes) const {
        while (!bytes.isEmpty()) {
            const ssize_t count = ::pwrite(m_number, bytes.data(), static_cast<size_t>(bytes.size()), offset);
            if (count < 0 && errno == EINTR) continue;
            if (count <= 0) return false;
            offset += count;
            bytes = bytes.sliced(count);
        }
        return true;
    }
    bool truncate(qint64 size) const { return ::ftruncate(m_number, size) == 0; }
    bool synchroniseData() const { return ::fdatasync(m_number) == 0; }
    bool synchronise() const { return ::fsync(m_number) == 0; }

private:
    int m_number;
};

}  // namespace

JournalFile::JournalFile(QString path, qint64 size) : m_path(std::move(path)), m_size(size) {
    m_thread.setMaxThreadCount(1);
}

JournalFile::~JournalFile() {
    wait();
}

void JournalFile::append(const QByteArray& bytes) {
    {
        const std::lock_guard lock(m_mutex);
        m_added += bytes;
    }
    start();
}

void JournalFile::replace(const QByteArray& bytes) {
    {
        const std::lock_guard lock(m_mutex);
        m_newContents = bytes;
        m_added.clear();
    }
    start();
}

void JournalFile::start() {
    m_thread.start([this] { write(); });
}

void JournalFile::write() {
    std::optional<QByteArray> newContents;
    QByteArray added;
    {
        const std::lock_guard lock(m_mutex);
        newContents = std::exchange(m_newContents, std::nullopt);
        added = std::exchange(m_added, {});
    }
    if (!newContents && added.isEmpty()) return;
    if (newContents ? replaceFile(*newContents + added) : appendToFile(added)) {
        Q_EMIT written();
    } else {
        Q_EMIT failed(QString::fromLocal8Bit(std::strerror(errno)));
    }
}

bool JournalFile::replaceFile(const QByteArray& bytes) {
    const QString folder = QFileInfo(m_path).path();
    const QString temporary = m_path + ".new";
    QDir().mkpath(folder);
    QFile::remove(temporary);  // A crash may have left it.
    {
        const Descriptor file(temporary, O_WRONLY | O_CREAT | O_EXCL);
        if (!file.isOpen() || !file.writeAt(0, bytes) || !file.synchronise()) return false;
    }
    if (::rename(QFile::encodeName(temporary).constData(), QFile::encodeName(m_path).constData()) != 0)
        return false;
    m_size = bytes.size();
    const Descriptor parent(folder, O_RDONLY | O_DIRECTORY);
    // File systems that cannot do it keep the order of renames by themselves.
    if (parent.isOpen()) parent.synchronise();
    return true;
}

bool JournalFile::appendToFile(const QByteArray& bytes) {
    const Descriptor file(m_path, O_WRONLY);
    if (!file.isOpen()) return false;
    if (!file.writeAt(m_size, bytes) || !file.synchroniseData()) {
        // Half a line must not stand in front of the next attempt.
        const int error = errno;
        file.truncate(m_size);
        errno = error;
        return false;
    }
    m_size += bytes.size();
    return true;
}
