#include "support/relocation/MoveWatch.h"

#include "support/base/Log.h"

#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

MoveWatch::MoveWatch(const QString& folder, int latencyMilliseconds, QObject* parent)
    : QObject(parent),
      m_folder(::open(QFile::encodeName(folder).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC)),
      m_inotify(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    if (m_folder < 0 || m_inotify < 0) {
        logError("Error: a move of the folder %@ will not be noticed: %@", folder, qt_error_string(errno));
        return;
    }
    m_latency.setSingleShot(true);
    m_latency.setInterval(latencyMilliseconds);
    connect(&m_latency, &QTimer::timeout, this, &MoveWatch::report);
    const auto* notifier = new QSocketNotifier(m_inotify, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &MoveWatch::read);
    watchParentFolders();
}

MoveWatch::~MoveWatch() {
    if (m_inotify >= 0) ::close(m_inotify);
    if (m_folder >= 0) ::close(m_folder);
}

void MoveWatch::watchParentFolders() {
    // A folder that is already watched keeps its watch.
    for (QString path = currentPath(); !path.isEmpty(); path = QFileInfo(path).path()) {
        ::inotify_add_watch(m_inotify, QFile::encodeName(path).constData(), IN_MOVE_SELF | IN_ONLYDIR);
        if (path == u"/") return;
    }
}

QString MoveWatch::currentPath() const {
    std::array<char, PATH_MAX> path{};
    const QByteArray link = "/proc/self/fd/" + QByteArray::number(m_folder);
    if (m_folder < 0 || ::readlink(link.constData(), path.data(), path.size() - 1) <= 0) return {};
    // The kernel also returns a path for a folder that was deleted or whose volume was unmounted.
    struct stat there = {};
    struct stat folder = {};
    const bool isThere = ::stat(path.data(), &there) == 0 && ::fstat(m_folder, &folder) == 0 &&
                         there.st_dev == folder.st_dev && there.st_ino == folder.st_ino;
    return isThere ? QFile::decodeName(path.data()) : QString();
}

quint32 MoveWatch::flagsOf(uint32_t mask) {
    quint32 flags = 0;
    if (mask & IN_MOVE_SELF) flags |= kRootChanged;
    if (mask & IN_UNMOUNT) flags |= kUnmounted;
    if (mask & IN_Q_OVERFLOW) flags |= kEventsDropped;
    return flags;
}

void MoveWatch::read() {
    constexpr size_t kBufferSize = 4096;
    alignas(inotify_event) std::array<char, kBufferSize> buffer;
    quint32 flags = 0;
    while (true) {
        const ssize_t size = ::read(m_inotify, buffer.data(), buffer.size());
        if (size < 0 && errno == EINTR) continue;
        if (size <= 0) break;
        for (const char* at = buffer.data(); at < buffer.data() + size;) {
            inotify_event event;
            std::memcpy(&event, at, sizeof event);
            at += sizeof event + event.len;
            flags |= flagsOf(event.mask);
        }
    }
    if (flags == 0) return;
    m_flags |= flags;
    if (!m_latency.isActive()) m_latency.start();
    Q_EMIT mayHaveMoved();
}

void MoveWatch::report() {
    watchParentFolders();  // Its parent folders may have changed.
    Q_EMIT reported(std::exchange(m_flags, 0));
}
