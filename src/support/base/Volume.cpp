#include "support/base/Volume.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>

#include <algorithm>
#include <array>
#include <filesystem>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>

namespace volume {

std::optional<quint64> freeBytes(const QString& folder) {
    std::error_code error;
    const auto space = std::filesystem::space(QFile::encodeName(folder).toStdString(), error);
    // Some network disks say of everything that it is 0.
    if (error || space.capacity == 0) return std::nullopt;
    return space.available;
}

std::optional<quint64> maximumFileSize(const QString& folder) {
    struct statfs information = {};
    if (::statfs(QFile::encodeName(folder).constData(), &information) != 0) return std::nullopt;
    return maximumFileSizeOfType(static_cast<long>(information.f_type));
}

std::optional<quint64> maximumFileSizeOfType(long magic) {
    constexpr quint64 kFat = 0xFFFFFFFF;  // The directory entry has 32 bits for the size.
    if (magic == MSDOS_SUPER_MAGIC) return kFat;
    return std::nullopt;
}

bool isShared(const QString& folder) {
    struct statfs information = {};
    if (::statfs(QFile::encodeName(folder).constData(), &information) != 0) return false;
    const auto magic = static_cast<long>(information.f_type);
    return magic == FUSE_SUPER_MAGIC || isNetworkType(magic);
}

bool isNetworkType(long magic) {
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
    // Some kernels sign-extend it.
    return std::ranges::find(kNetwork, static_cast<quint32>(magic)) != kNetwork.end();
}

QString mountPoint(const QString& folder) {
    QString existing = folder;
    while (!QFileInfo::exists(existing) && existing.contains(u'/') && existing != u"/")
        existing = QFileInfo(existing).path();
    // The list of mounts is long, and every job asks for the folder of the one before.
    struct Known {
        QString folder;
        dev_t device = 0;
        ino_t inode = 0;
        QString mountPoint;
    };
    thread_local Known known;
    struct stat status = {};
    const bool isThere = ::stat(QFile::encodeName(existing).constData(), &status) == 0;
    const bool isSame =
        known.folder == existing && known.device == status.st_dev && known.inode == status.st_ino;
    if (!isThere || !isSame)
        known = {existing, status.st_dev, status.st_ino, QStorageInfo(existing).rootPath()};
    return known.mountPoint;
}

bool isInDocumentsPortal(const QString& path) {
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return path.startsWith(u"/run/flatpak/doc/") ||
           (!runtime.isEmpty() && path.startsWith(QDir::cleanPath(runtime) + "/doc/"));
}

}  // namespace volume
