#include "watch/events/Inotify.h"

#include "support/base/Texts.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

/// Twice the current limit, but at least `least`, a common default of systems with more memory.
QString sufficientLimit(const QString& limit, long least) {
    return QString::number(std::max(2 * limit.toLong(), least));
}

/// EMFILE can mean either limit.
bool isOutOfFiles() {
    const int file = ::open("/", O_PATH | O_CLOEXEC);
    if (file < 0) return true;
    ::close(file);
    return false;
}

}  // namespace

QString Inotify::systemLimit(const char* name) {
    QFile file(QString("/proc/sys/fs/inotify/") + name);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll().trimmed()) : QString("?");
}

Inotify::Inotify() : m_file(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)), m_error(m_file < 0 ? errno : 0) {}

Inotify::~Inotify() {
    if (m_file >= 0) ::close(m_file);
}

QString Inotify::problem() const {
    if (m_file >= 0) return {};
    if (m_error != EMFILE || isOutOfFiles())
        return Texts::tr("Folders cannot be watched: %1.")
            .arg(QString::fromLocal8Bit(std::strerror(m_error)));
    const QString limit = systemLimit("max_user_instances");
    return Texts::
        tr("Folders cannot be watched: this system allows %1 watching programs per user, and there are as many. An administrator can allow more: sysctl fs.inotify.max_user_instances=%2")
            .arg(limit, sufficientLimit(limit, 1024));
}

QString Inotify::limitOfWatches(const QString& folder) {
    const QString limit = systemLimit("max_user_watches");
    return Texts::
        tr("Not every folder in “%1” can be watched: this system allows %2 watched folders per user, and there are more. What arrives in the others is not noticed. An administrator can allow more: sysctl fs.inotify.max_user_watches=%3")
            .arg(folder, limit, sufficientLimit(limit, 524'288));
}

int Inotify::watch(const std::string& path, uint32_t mask) {
    const int watch = ::inotify_add_watch(m_file, path.c_str(), mask);
    return watch < 0 ? -errno : watch;
}

void Inotify::remove(int watch) {
    ::inotify_rm_watch(m_file, watch);
}

bool Inotify::read(const QDeadlineTimer& deadline, const std::function<bool(const Event&)>& handle) {
    constexpr size_t kBufferSize = 16 * 1024;
    alignas(inotify_event) std::array<char, kBufferSize> buffer;
    bool isContinuing = true;
    while (isContinuing && !deadline.hasExpired()) {
        const ssize_t size = ::read(m_file, buffer.data(), buffer.size());
        if (size < 0 && errno == EINTR) continue;
        if (size <= 0) return true;
        // Events that were read have left the kernel's queue, so handle all of them.
        for (const char* at = buffer.data(); at < buffer.data() + size;) {
            inotify_event event;
            std::memcpy(&event, at, sizeof event);
            at += sizeof event;
            isContinuing =
                handle({event.wd, event.mask, event.cookie, {at, ::strnlen(at, event.len)}}) && isContinuing;
            at += event.len;
        }
    }
    return false;
}
