#include "watch/completion/WriterCheck.h"

#include "support/base/Volume.h"

#include <QFile>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>

namespace writercheck {

Writers writersOf(int file) {
    // A process that opens the file for writing while we hold the lease blocks until we release it,
    // microseconds later, and the kernel sends us a signal: by default SIGIO, which would end the process.
    // SIGURG is ignored by default, so no signal handler is needed; and unlike a real-time signal, it never
    // fails to be queued, in which case the kernel would send SIGIO.
    if (::fcntl(file, F_SETSIG, SIGURG) != 0) return Writers::NotKnown;
    if (::fcntl(file, F_SETLEASE, F_RDLCK) != 0) return errno == EAGAIN ? Writers::Some : Writers::NotKnown;
    ::fcntl(file, F_SETLEASE, F_UNLCK);
    return Writers::None;
}

Sight sightOf(const QString& path) {
    if (volume::isInDocumentsPortal(path)) return Sight::None;
    struct statfs information = {};
    if (::statfs(QFile::encodeName(path).constData(), &information) != 0) return Sight::All;
    return sightOfType(static_cast<long>(information.f_type));
}

Sight sightOfType(long magic) {
    if (volume::isNetworkType(magic)) return Sight::None;
    return static_cast<quint32>(magic) == FUSE_SUPER_MAGIC ? Sight::Local : Sight::All;
}

}  // namespace writercheck
