#include "watch/completion/WriterCheck.h"

#include "support/base/Volume.h"

#include <QFile>

#include <algorithm>
#include <array>
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
    constexpr std::array<quint32, 18> kNetwork = {
        NFS_SUPER_MAGIC,  SMB_SUPER_MAGIC, CIFS_SUPER_MAGIC,  SMB2_SUPER_MAGIC,
        V9FS_MAGIC,       AFS_SUPER_MAGIC, AFS_FS_MAGIC,      CODA_SUPER_MAGIC,
        CEPH_SUPER_MAGIC, NCP_SUPER_MAGIC, OCFS2_SUPER_MAGIC,
        0x0BD00BD0,  // Lustre
        0x01161970,  // GFS2
        0x47504653,  // GPFS
        0x19830326,  // BeeGFS
        0x20030528,  // OrangeFS
        0x786F4256,  // Folders of a virtual machine's host
        0xBACBACBC,  // The same
    };
    const auto type = static_cast<quint32>(magic);  // Some kernels sign-extend it.
    if (std::find(kNetwork.begin(), kNetwork.end(), type) != kNetwork.end()) return Sight::None;
    return type == FUSE_SUPER_MAGIC ? Sight::Local : Sight::All;
}

}  // namespace writercheck
